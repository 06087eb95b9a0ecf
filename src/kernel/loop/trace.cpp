// Program trace: each line of a program as read ("-") and, where expansion
// changed it, as run ("="), indented by the depth of nesting.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/flow/flow.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

uint8_t korvu_trace_code = 1, korvu_trace_exp = 1, korvu_trace_sep = 1, korvu_trace_indent = 1,
        korvu_trace_number = 0;
int32_t korvu_trace_l0 = 1, korvu_trace_l1 = 32000, korvu_trace_depth = 32000;
char korvu_trace_hilite[81] = "";
uint8_t korvu_trace_hiword = 0;

// A loop typed outside a program runs as a program one level down.
static int32_t tracelevel() {
    return korvu_level + (loopsrc ? 1 : 0);
}

bool trace_shown() {
    int32_t lev = tracelevel();
    return korvu_trace_flg && korvu_trace_code && lev >= korvu_trace_l0 && lev <= korvu_trace_l1;
}

static void lead() {
    int32_t lev = tracelevel();
    if (korvu_trace_number) spoutf("%02d ", lev);
    if (korvu_trace_indent && lev > 1) dupblnk(2 * lev - 2);
}

static bool namechar(char c) {
    return isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// The text, with each occurrence of the hilite string marked.
static void showtext(const char* p) {
    size_t hl = strlen(korvu_trace_hilite);
    if (!hl) {
        spout21(p);
        return;
    }
    const char* from = p;
    for (const char* q = strstr(p, korvu_trace_hilite); q; q = strstr(q + 1, korvu_trace_hilite)) {
        if (korvu_trace_hiword && ((q > p && namechar(q[-1])) || namechar(q[hl]))) continue;
        char keep = *q;
        *const_cast<char*>(q) = 0;
        spout21(from);
        *const_cast<char*>(q) = keep;
        spoutptl("{cmd:");
        keep = q[hl];
        const_cast<char*>(q)[hl] = 0;
        spout21(q);
        const_cast<char*>(q)[hl] = keep;
        spoutptl("}");
        from = q + hl;
        q += hl - 1;
    }
    spout21(from);
}

void tracepgm(int phase) {
    if (!trace_shown()) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    lead();
    spout21(!procflg ? " " : phase ? "=" : "-");
    spout21(" ");
    const char* p = console;
    while (*p == ' ') p++;
    showtext(p);
    newline();
    c_outlev = old;
}

void tracepgmdiv(int phase, const char* owner, const char* name) {
    if (!korvu_trace_sep || !trace_shown()) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    lead();
    spoutptl("{hline 2}");
    spout21(phase ? " end " : " begin ");
    if (owner && owner[0] && strcmp(owner, name) != 0) {
        spout21(owner);
        spout21(".");
    }
    spout21(name);
    spoutptl(" {hline 2}\n");
    c_outlev = old;
}

// ---- set words -----------------------------------------------------------------

static int onoff(uint8_t* flag) {
    gettok(prsestd);
    if (cmdcmp(token, "on", 2))
        *flag = 1;
    else if (cmdcmp(token, "off", 3))
        *flag = 0;
    else
        return error(198);
    gettok(prsestd);
    return token[0] ? error(198) : 0;
}

int set_trace() {
    uint8_t on = 0;
    if (int rc = onoff(&on)) return rc;
    korvu_trace_flg = on;
    // the lines traced are those of the frames below this one
    korvu_trace_l0 = korvu_level + 1;
    korvu_trace_l1 = korvu_trace_l0 + korvu_trace_depth - 1;
    return 0;
}

int set_tracedepth() {
    gettok(prsenum);
    double v;
    if (!token[0] || cnvstoz(token, &v) || v != std::floor(v)) return error(198);
    if (int rc = dchkrange("tracedepth", v, 1, 32000)) return rc;
    gettok(prsestd);
    if (token[0]) return error(198);
    korvu_trace_depth = static_cast<int32_t>(v);
    korvu_trace_l1 = korvu_trace_l0 + korvu_trace_depth - 1;
    return 0;
}

int set_traceexpand() {
    return onoff(&korvu_trace_exp);
}
int set_tracesep() {
    return onoff(&korvu_trace_sep);
}
int set_traceindent() {
    return onoff(&korvu_trace_indent);
}
int set_tracenumber() {
    return onoff(&korvu_trace_number);
}

// `set tracehilite "text" [, word]`
int set_tracehilite() {
    gettok(prsestd);
    char text[81];
    if (snprintf(text, sizeof text, "%s", tokisstr(token) ? token + 1 : token) < 0) text[0] = 0;
    gettok(prsestd);
    uint8_t word = 0;
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        word = static_cast<uint8_t>(findopt("word", 1, 0));
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    memcpy(korvu_trace_hilite, text, sizeof text);
    korvu_trace_hiword = word;
    return 0;
}

} // namespace korvu
