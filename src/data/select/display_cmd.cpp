// display, assert and count: the commands that show or test expressions.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/memfig.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

// ---- display -------------------------------------------------------------------

namespace {

ExpObj dispobj; // display's own compiled expression

// A number as display shows it when no format is given: %9.0g, trimmed.
void shownum(double v, char* buf) {
    fmtnum(buf, "%9.0g", v);
    char* p = buf;
    while (*p == ' ') p++;
    std::memmove(buf, p, std::strlen(p) + 1);
}

// Reads an optional "(#)" behind a directive; dflt when absent.
int dirarg(int dflt, int* out) {
    char* p = peektok_chr();
    if (*p != '(') {
        *out = dflt;
        return 0;
    }
    gettok(prsenum);
    gettok(prsenum);
    double v;
    if (cnvstoz(token, &v) || v != std::floor(v)) return error(198);
    if (gtokis(')')) return error(198);
    *out = static_cast<int>(v);
    return 0;
}

// After a quoted string at the tokenizer: does an operator follow, making
// the string part of an expression?
bool operator_follows() {
    const char* p = peektok_chr();
    return *p && std::strchr("+=<>!~&|", *p);
}

} // namespace

int display(int) {
    uint8_t lev = 0;
    int colour = COL_RESULT;
    int dup = 1;
    bool cont = false;
    char fmt[16] = "";
    auto out = [&](const char* text) {
        c_outlev = lev;
        if (c_outlev < s_outlev) return;
        if (ptl_cur) ptlcolorset(ptl_cur, colour);
        for (int i = 0; i < dup; i++) spoutnoptl(text);
        dup = 1;
    };
    for (;;) {
        TokPos before;
        stattok(&before);
        if (char* p = peektok_chr(); *p == '%') {
            // a format: the text up to the next blank
            char* q = p;
            while (*q && *q != ' ') q++;
            std::string w(p, q);
            TokPos after{q, p};
            resettok(&after);
            FmtDesc d;
            if (w.size() > static_cast<size_t>(kFmtMaxText) || chkfmt(w.c_str(), 10, &d)) {
                return errorf(120, "%s invalid %%format\n", w.c_str());
            }
            snprintf(fmt, sizeof fmt, "%s", w.c_str());
            continue;
        }
        bool expr_now = false;
        if (char* p = peektok_chr(); *p == '"' || (p[0] == '`' && p[1] == '"')) {
            char *s, *e, *nx;
            if (!parse_quoted_string(p, &s, &e, &nx)) {
                TokPos after{nx, p};
                resettok(&after);
                if (!operator_follows()) {
                    std::string text(s, e);
                    FmtDesc d;
                    char buf[kFmtBufSize + 8];
                    if (fmt[0] && !chkfmt(fmt, 10, &d) && d.cls == 's' &&
                        text.size() < static_cast<size_t>(kFmtBufSize)) {
                        fmtrenderstr(buf, d, text.c_str());
                        text = buf;
                    }
                    fmt[0] = 0;
                    cont = false;
                    out(text.c_str());
                    continue;
                }
                resettok(&before);
                expr_now = true;
            }
        }
        if (!expr_now) gettok(prsenum);
        if (!expr_now && !token[0]) break;
        cont = false;
        if (expr_now) {
            cont = false;
        } else if (tokisstr(token)) {
            out(token + 1); // a quote that does not close
            continue;
        } else {
            std::string w = token;
            int n;
            if (cmdcmp(w.c_str(), "_newline", 2)) {
                if (int rc = dirarg(1, &n)) return rc;
                c_outlev = lev;
                for (int i = 0; i < n; i++) newline();
                continue;
            }
            if (cmdcmp(w.c_str(), "_column", 4)) {
                if (int rc = dirarg(1, &n)) return rc;
                char tag[32];
                snprintf(tag, sizeof tag, "{col %d}", n);
                c_outlev = lev;
                spoutptl(tag);
                continue;
            }
            if (cmdcmp(w.c_str(), "_skip", 2)) {
                if (int rc = dirarg(1, &n)) return rc;
                c_outlev = lev;
                dupblnk(n);
                continue;
            }
            if (cmdcmp(w.c_str(), "_continue", 2)) {
                cont = true;
                continue;
            }
            if (cmdcmp(w.c_str(), "_dup", 2)) {
                if (int rc = dirarg(1, &n)) return rc;
                dup = n < 0 ? 0 : n;
                continue;
            }
            if (cmdcmp(w.c_str(), "_char", 4)) {
                if (int rc = dirarg(32, &n)) return rc;
                if (n < 1 || n > 255) return error(198);
                char s[2] = {static_cast<char>(n), 0};
                out(s);
                continue;
            }
            if (w == "as" || w == "in") {
                gettok(prsestd);
                if (cmdcmp(token, "text", 3) || cmdcmp(token, "txt", 3))
                    lev = 2, colour = COL_TEXT;
                else if (cmdcmp(token, "result", 3))
                    lev = 0, colour = COL_RESULT;
                else if (cmdcmp(token, "error", 3))
                    lev = 3, colour = COL_ERROR;
                else if (cmdcmp(token, "input", 3))
                    lev = 0, colour = COL_INPUT;
                else
                    return error(198);
                continue;
            }
            resettok(&before);
        }
        // an expression
        uint8_t savelev = c_outlev;
        int rc = compexp(&dispobj, 3, 0, 0);
        c_outlev = savelev;
        if (rc) return rc;
        dispobj.nobs1 = 1, dispobj.nobs2 = nobs;
        dispobj.nobss1 = 1, dispobj.nobss2 = nobs;
        char buf[kFmtBufSize + EXP_STRMAX];
        if (dispobj.result_kind == 1) {
            char s[EXP_STRMAX + 1];
            int32_t s1 = nobs1, s2 = nobs2, b1 = nobss1, b2 = nobss2;
            nobs1 = nobss1 = 1, nobs2 = nobss2 = nobs;
            sxeq(&dispobj, 1, s);
            nobs1 = s1, nobs2 = s2, nobss1 = b1, nobss2 = b2;
            FmtDesc d;
            if (fmt[0] && !chkfmt(fmt, 10, &d) && d.cls == 's')
                fmtrenderstr(buf, d, s);
            else
                snprintf(buf, sizeof buf, "%s", s);
        } else {
            double v = xeqforby(&dispobj, 1);
            if (fmt[0])
                fmtnum(buf, fmt, v);
            else
                shownum(v, buf);
        }
        fmt[0] = 0;
        out(buf);
    }
    if (!cont) {
        c_outlev = lev;
        newline();
    }
    return 0;
}

// ---- assert and count ----------------------------------------------------------

namespace {

constexpr int CHUNK = 4096;

// Selection flags for observations from..to into sel: `if` true (missing
// counts as true).
void select_chunk(int from, int to, std::vector<double>& buf, std::vector<uint8_t>& sel) {
    int m = to - from + 1;
    if (!ifclause) {
        std::fill(sel.begin(), sel.begin() + m, 1);
        return;
    }
    xeqblock(&ifpgm, from, to, buf.data());
    for (int j = 0; j < m; j++) sel[j] = buf[j] != 0;
}

} // namespace

int countcmd(int) {
    vable = 3;
    opable = 3;
    byable = 0;
    if (int rc = parse()) return rc;
    initialize_xeq();
    int64_t count = 0;
    std::vector<double> buf(CHUNK);
    for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        int i1 = std::min(nobs2, i0 + CHUNK - 1);
        if (kvpollstd()) return 1;
        if (!ifclause) {
            count += i1 - i0 + 1;
            continue;
        }
        // a missing condition is true: only exactly 0 leaves one out
        xeqblock(&ifpgm, i0, i1, buf.data());
        int64_t n = 0;
        for (int j = 0; j <= i1 - i0; j++) n += buf[j] != 0;
        count += n;
    }
    char num[40];
    c_outlev = 0;
    spoutf("  %s\n", commafy(static_cast<uint64_t>(count), num));
    if (dahooks.post_r) dahooks.post_r("N", static_cast<double>(count));
    return 0;
}

int assertcmd(int) {
    pfixeq();
    vable = 3;
    byable = 0;
    wable = 1;
    opable = 0;
    if (int rc = parse()) return rc;
    int rc0 = findopt("rc0", 3, 0);
    int null = findopt("null", 1, 0);
    int fast = findopt("fast", 4, 0);
    if (int rc = chkopt()) return rc;
    initialize_xeq();
    int64_t tested = 0, failed = 0;
    std::vector<double> buf(CHUNK), val(CHUNK);
    std::vector<uint8_t> sel(CHUNK);
    bool ordered = wepgm.n_sums >= 0; // running sums see only the tested observations
    for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        int i1 = std::min(nobs2, i0 + CHUNK - 1);
        if (kvpollstd()) return 1;
        select_chunk(i0, i1, buf, sel);
        if (!ordered) xeqblock(&wepgm, i0, i1, val.data());
        for (int j = 0; j <= i1 - i0; j++) {
            if (!sel[j]) continue;
            tested++;
            double v = ordered ? xeq(&wepgm, i0 + j) : val[j];
            if (v == 0) failed++;
        }
        if (fast && failed) break;
    }
    if (!tested) {
        c_outlev = 1;
        spout21("(null assertion)\n");
        return null ? 8 : 0;
    }
    if (!failed) return 0;
    c_outlev = 1;
    if (fast)
        spoutf("%lld contradiction%s\n", static_cast<long long>(failed), failed == 1 ? "" : "s");
    else
        spoutf("%lld contradiction%s in %lld observation%s\n", static_cast<long long>(failed),
               failed == 1 ? "" : "s", static_cast<long long>(tested), tested == 1 ? "" : "s");
    errtext(9, "assertion is false\n");
    return rc0 ? 0 : 9;
}

} // namespace korvu
