// `version`: shows or sets the language version under which lines run, for
// the rest of the enclosing frame or for one command.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/formats/dates.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "output/spout.h"

namespace korvu {

static const char* borndate = "20 Jul 2007";

// #, #.#, #.##, ##.#, ##.## into version x 100; -1 for another form.
static int readversion(const char* t) {
    int whole = 0, nw = 0;
    // digits past the second make the form invalid; they are counted, not summed
    for (; isdigit(static_cast<unsigned char>(*t)); t++, nw++)
        if (nw < 2) whole = whole * 10 + (*t - '0');
    if (nw < 1 || nw > 2) return -1;
    int dec = 0;
    if (*t == '.') {
        t++;
        int nd = 0;
        while (isdigit(static_cast<unsigned char>(*t))) {
            if (++nd > 2) return -1;
            dec += (*t++ - '0') * (nd == 1 ? 10 : 1);
        }
        if (!nd) return -1;
    }
    return *t ? -1 : whole * 100 + dec;
}

static std::string verstext(int v) {
    char buf[32];
    if (v % 100 == 0)
        snprintf(buf, sizeof buf, "%d", v / 100);
    else if (v % 10 == 0)
        snprintf(buf, sizeof buf, "%d.%d", v / 100, (v % 100) / 10);
    else
        snprintf(buf, sizeof buf, "%d.%02d", v / 100, v % 100);
    return buf;
}

static int toonew(const char* typed) {
    errsayf("this is version %s of Korvu; it cannot run version %s programs\n",
            verstext(KORVU_VERSION).c_str(), typed);
    return errptl(9,
                  "{p}\nYou need a newer edition of Korvu to run this program; the version\n"
                  "number stated at its head is larger than this edition understands.\n{p_end}\n");
}

// The first colon of the rest of the line outside quotes and parentheses.
static char* findcolon(char* p) {
    int depth = 0;
    bool instr = false;
    for (; *p; p++) {
        if (*p == '"') instr = !instr;
        if (instr) continue;
        if (*p == '(') depth++;
        if (*p == ')') depth--;
        if (*p == ':' && depth == 0) return p;
    }
    return nullptr;
}

// The next word of the line becomes the command and is dispatched.
static int runbehind() {
    gettokcmd();
    return selreq();
}

int vercmd(int) {
    if (!procflg) {
        // only the colon form matters: the command behind it keeps blocks right
        char* colon = findcolon(wheretok());
        if (!colon) return 0;
        settok(colon + 1);
        return runbehind();
    }
    gettok(prsenum);
    if (!token[0]) {
        c_outlev = 1;
        spout21("version ");
        spout21(verstext(vernum).c_str());
        if (vernum < 800 && mvmodern) spout21(" (with modern treatment of missing values)");
        newline();
        return 0;
    }
    std::string typed = tokisstr(token) ? token + 1 : token;
    int v = tokisstr(token) ? -1 : readversion(token);
    if (v < 0) {
        return errorf(198, "'%s' invalid\n", typed.c_str());
    }
    if (v < 100 || v > KORVU_VERSION) return toonew(typed.c_str());

    char* colon = findcolon(wheretok());
    if (colon) *colon = 0;
    int missing = 0;
    gettok(prsestd);
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        int rc = proption();
        if (!rc) {
            missing = findopt("missing", 3, 0);
            char date[100];
            findargn("born", 4, date, sizeof date, 3);
            if (date[0]) {
                double d = stdate(date, "dmy");
                if (d >= misval) {
                    rc = errorf(198, "%s invalid date\n", date);
                } else if (d > stdate(borndate, "dmy")) {
                    rc = errtext(9, "you must update the Korvu executable to run this program\n");
                }
            }
            if (!rc) rc = chkopt();
        }
        if (rc) {
            if (colon) *colon = ':';
            return rc;
        }
    } else if (token[0]) {
        if (colon) *colon = ':';
        return error(198);
    }
    uint8_t modern = v >= 800 || missing;
    if (!colon) {
        vernum = v;
        mvmodern = modern;
        return 0;
    }
    *colon = ':';
    settok(colon + 1);
    int32_t oldver = vernum;
    uint8_t oldmv = mvmodern;
    vernum = v;
    mvmodern = modern;
    int rc = runbehind();
    vernum = oldver;
    mvmodern = oldmv;
    return rc;
}

} // namespace korvu
