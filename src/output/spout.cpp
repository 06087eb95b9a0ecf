#include "output/spout.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "kernel/loop/brk.h"

namespace korvu {

uint8_t c_outlev = 0, s_outlev = 0, ls_outlev = 0, entertainflg = 0;
int32_t moretime = 0;
int32_t korvu_linewidth = 79, korvu_pagesize = 23;
Ptl* ptl_reswin = nullptr;
Ptl* ptl_cur = nullptr;
char outbuf[512];

static char status_text[512];

static inline bool passes() {
    return c_outlev >= s_outlev;
}

void spout_setcoloroflev() {
    if (!passes() || c_outlev >= 5 || !ptl_cur) return;
    static constexpr int colour_of_level[5] = {COL_RESULT, COL_TEXT, COL_TEXT, COL_ERROR,
                                               COL_INPUT};
    ptlcolorset(ptl_cur, colour_of_level[c_outlev]);
}

// The common sender: mode 0 plain with the level's colour, 1 markup, 2 plain
// in the current colour.
static int send(const char* text, int mode) {
    if (!passes()) {
        if (++poll_counter > 4) search_event_now();
        return stopflag;
    }
    if (mode == 0) spout_setcoloroflev();
    size_t n = strlen(text);
    if (n && ptl_cur) {
        if (mode == 1)
            ptlsend(ptl_cur, text, static_cast<int>(n));
        else
            ptlsendraw(ptl_cur, text, static_cast<int>(n));
    }
    return stopflag;
}

int spout21(const char* text) {
    return send(text, 0);
}
int spoutptl(const char* text) {
    return send(text, 1);
}
int spoutnoptl(const char* text) {
    return send(text, 2);
}
int spout21o() {
    return spout21(outbuf);
}

int spoutch(char c) {
    char s[2] = {c, 0};
    return (c == '\n' || c == ' ') ? spoutptl(s) : spout21(s);
}

int spoutvbar() {
    spout_setcoloroflev();
    return spoutptl("{c |}");
}

int spoutdiv(int kind) {
    spout_setcoloroflev();
    return spoutptl(kind == 1 ? ".-\n" : "{.-}\n");
}

int spouthi(int level, const char* text) {
    if (level > 1) {
        spoutptl("{hilite:");
        spoutptl(text);
        return spoutptl("}");
    }
    spoutptl("^");
    spout21(text);
    return spoutptl("^");
}

int spouterr(const char* text) {
    c_outlev = 3;
    spoutsetptagweak();
    return spout21(text);
}

void spoutsetptagweak() {
    if (passes() && ptl_cur) ptlptagsetweak(ptl_cur);
}

void spoutflush() {
    if (passes() && ptl_cur) ptlflush(ptl_cur);
}

int dupstr(const char* text, int count) {
    for (int i = 0; i < count; i++) spout21(text);
    return stopflag;
}

int dupch(char c, int count) {
    if (count <= 0) return stopflag;
    if (count > 509) {
        char s[2] = {c, 0};
        return dupstr(s, count);
    }
    char buf[510];
    memset(buf, c, count);
    buf[count] = 0;
    return c == ' ' ? spoutptl(buf) : spout21(buf);
}

int dupblnk(int count) {
    return dupch(' ', count);
}
int blnk() {
    return spout21(" ");
}
int spoutblnk(const char* text, int count) {
    spout21(text);
    return dupblnk(count);
}
int newline() {
    return spoutch('\n');
}

int spout20(const char* text) {
    if (!passes()) return 0;
    if (ptl_cur) ptlzero_pagelines(ptl_cur);
    spout21(text);
    if (ptl_cur) ptlzero_pagelines(ptl_cur);
    return stopflag;
}

int spoutfordo(const char* text) {
    uint8_t old = c_outlev;
    c_outlev = 4;
    int rc = spout20(text);
    c_outlev = old;
    return rc;
}

// The console edition has no status bar; the text is kept for entertaincont.
static void drawstatus(const char* text) {
    if (snprintf(status_text, sizeof status_text, "%s", text ? text : "") < 0) status_text[0] = 0;
}

static void entertain_echo(const char* text, bool nl) {
    if (s_outlev > 2 || !entertainflg) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    spout21(text);
    if (nl) newline();
    spoutflush();
    c_outlev = old;
}

void entertain(const char* text) {
    if (!text || !*text) {
        drawstatus(nullptr);
        return;
    }
    drawstatus(text);
    entertain_echo(text, true);
}

void entertainbegin(const char* text) {
    if (!text || !*text) {
        drawstatus(nullptr);
        return;
    }
    drawstatus(text);
    entertain_echo(text, false);
}

void entertaincont(const char* text) {
    if (!text) {
        drawstatus(nullptr);
        return;
    }
    if (!*text) return;
    char buf[1024];
    snprintf(buf, sizeof buf, "%s%s", status_text, text);
    drawstatus(buf);
    entertain_echo(text, false);
}

void entertainend() {
    drawstatus(nullptr);
    if (s_outlev > 2 || !entertainflg) return;
    uint8_t old = c_outlev;
    c_outlev = 1;
    newline();
    spoutflush();
    c_outlev = old;
}

int sysmore() {
    return ptl_cur ? ptlmore(ptl_cur) : 0;
}

int spoutf(const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(outbuf, sizeof outbuf, fmt, ap);
    va_end(ap);
    return spout21(outbuf);
}

int spoutptlf(const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(outbuf, sizeof outbuf, fmt, ap);
    va_end(ap);
    return spoutptl(outbuf);
}

} // namespace korvu

namespace korvu {

std::string plainmarkup(const char* text) {
    std::string out;
    for (const char* c = text; *c; c++) {
        if (*c == '{')
            out += "{c -(}";
        else if (*c == '}')
            out += "{c )-}";
        else
            out += *c;
    }
    return out;
}

int spoutlev(int level, const char* text) {
    uint8_t old = c_outlev;
    c_outlev = static_cast<uint8_t>(level);
    int rc = spout21(text);
    c_outlev = old;
    return rc;
}

int spoutlevf(int level, const char* fmt, ...) {
    va_list ap, ap2;
    va_start(ap, fmt);
    va_copy(ap2, ap);
    int n = vsnprintf(nullptr, 0, fmt, ap);
    va_end(ap);
    std::string text(n > 0 ? static_cast<size_t>(n) : 0, '\0');
    if (n > 0) vsnprintf(text.data(), text.size() + 1, fmt, ap2);
    va_end(ap2);
    return spoutlev(level, text.c_str());
}

} // namespace korvu
