#include "kernel/flow/flow.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/varlist.h"
#include "kernel/cmds/builtins.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

// A loop typed outside a program: its lines, each NUL-terminated, and where
// each starts. Read once; every pass copies a line into `console`.
struct LoopBody {
    std::vector<char> text;
    std::vector<int32_t> off; // start of each line, and the end
    int32_t lines() const { return static_cast<int32_t>(off.size()) - 1; }
};

static int32_t convlevel = 0; // nested loops typed outside a program
static int32_t fedepth = 0;   // nested foreach

static char* skipbl(char* p) {
    while (*p == ' ') p++;
    return p;
}

int flow_getline() {
    if (!(runprog && loopsrc)) return getreq(1);
    const LoopBody* b = loopsrc;
    for (;;) {
        if (sys_upline >= b->lines()) return 1;
        int32_t at = b->off[sys_upline];
        memcpy(console, b->text.data() + at, b->off[sys_upline + 1] - at);
        sys_upline++;
        if (korvu_trace_flg) tracepgm(0);
        char* p = skipbl(console);
        if (!*p || (*p == '*' && !getreq_keepstar)) continue;
        settok(console);
        return 0;
    }
}

static void setcmd() {
    gettokcmd();
}

int flow_dispatch() {
    setcmd();
    int rc = selreq();
    nvar = i_nvar;
    return rc;
}

// ---- blocks -----------------------------------------------------------------

// One line of a block through doreq. At do-file level the line's status is
// held: the block's own line reports the code once.
static int blockreq() {
    uint8_t hold = status_hold;
    status_hold = 1;
    int more = doreq();
    status_hold = hold;
    return more;
}

// After a line of the block: the first code is kept and the rest of the
// block is only walked. Returns false when an exit ended the block.
static bool afterline(int more, int* code) {
    if (!more) {
        exitflg = 1;
        *code = globalrc;
        return false;
    }
    if (procflg) {
        if (globalrc) {
            *code = globalrc;
            procflg = 0;
        } else if (stopflag) {
            *code = 1;
            procflg = 0;
        }
    }
    return true;
}

// The body of a block under the new rules: lines up to one that begins with
// the close brace, which stands alone.
static int runblock() {
    uint8_t savedproc = procflg, savedelse = syselseflg;
    int code = 0;
    for (;;) {
        if (flow_getline()) {
            procflg = savedproc;
            syselseflg = savedelse;
            return nomatchbrace();
        }
        char* p = skipbl(console);
        if (*p == '}') {
            if (*skipbl(p + 1)) {
                procflg = savedproc;
                syselseflg = savedelse;
                return braceerror(0);
            }
            break;
        }
        if (!afterline(blockreq(), &code)) {
            procflg = savedproc;
            syselseflg = savedelse;
            return code;
        }
    }
    // a continue inside keeps the rest of the loop body skipped
    if (!breakdetail) procflg = savedproc;
    syselseflg = savedelse;
    return code;
}

// The close brace of the block opened before p, outside double quotes; null
// when the line doesn't close it.
static char* findclose(char* p) {
    int depth = 0;
    bool instr = false;
    for (; *p; p++) {
        if (*p == '"') {
            instr = !instr;
        } else if (!instr) {
            if (*p == '{') {
                depth++;
            } else if (*p == '}') {
                if (depth == 0) return p;
                depth--;
            }
        }
    }
    return nullptr;
}

// Old rules: the body starts behind the open brace on the same line and ends
// at the matching close anywhere on a line; the close cuts its line.
static int runblock_old(char* rest) {
    uint8_t savedproc = procflg, savedelse = syselseflg;
    int code = 0;
    bool first = true;
    char* line = rest;
    for (;;) {
        if (!first) {
            if (flow_getline()) {
                procflg = savedproc;
                syselseflg = savedelse;
                return nomatchbrace();
            }
            line = console;
        }
        char* close = findclose(line);
        if (close) *close = 0;
        if (*skipbl(line)) {
            int more;
            if (first) {
                // the rest of a line already expanded: run it as it stands
                memmove(console, line, strlen(line) + 1);
                settok(console);
                globalrc = flow_dispatch();
                more = !exitflg;
                exitflg = 0;
            } else {
                settok(console);
                more = blockreq();
            }
            if (!afterline(more, &code)) {
                procflg = savedproc;
                syselseflg = savedelse;
                return code;
            }
        }
        first = false;
        if (close) break;
    }
    if (!breakdetail) procflg = savedproc;
    syselseflg = savedelse;
    return code;
}

int opbrace() {
    if (vernum > 799) {
        gettok(prsestd);
        if (token[0]) return braceerror(1);
        return runblock();
    }
    return runblock_old(wheretok());
}

// Where a block opens on the line behind p: under the new rules a brace
// that ends the line, under the old the first brace outside strings.
static char* blockbrace(char* p) {
    if (vernum > 799) {
        char* e = p + strlen(p);
        while (e > p && e[-1] == ' ') e--;
        return e > p && e[-1] == '{' ? e - 1 : nullptr;
    }
    bool instr = false;
    for (; *p; p++) {
        if (*p == '"') instr = !instr;
        if (!instr && *p == '{') return p;
    }
    return nullptr;
}

static int runbody(char* brace) {
    return vernum > 799 ? runblock() : runblock_old(brace + 1);
}

// Passes over the block that opens on this line, carrying nothing out.
static int walk(char* brace) {
    if (!brace) return 0;
    uint8_t saved = procflg;
    procflg = 0;
    int rc = runbody(brace);
    procflg = saved;
    return rc;
}

// A failure on a loop or if line: the block is still passed over so that
// the lines around it keep their structure.
static int failwalk(int rc, char* brace) {
    int32_t keep = globalrc;
    walk(brace);
    globalrc = keep;
    return rc;
}

// ---- loops typed outside a program -----------------------------------------

// Open minus close braces outside strings.
static int bracecount(const char* p) {
    int n = 0;
    bool instr = false;
    for (; *p; p++) {
        if (!instr && p[0] == '`' && p[1] == '"') {
            int depth;
            p = pcompoundquotes(const_cast<char*>(p), &depth) - 1;
            if (depth) break;
        } else if (*p == '"') {
            instr = !instr;
        } else if (!instr) {
            if (*p == '{') n++;
            if (*p == '}') n--;
        }
    }
    return n;
}

static void addline(LoopBody* b, const char* s) {
    size_t n = strlen(s) + 1;
    b->text.insert(b->text.end(), s, s + n);
    b->off.push_back(static_cast<int32_t>(b->text.size()));
}

// The loop whose word starts at head is read to the balance of its braces and
// run from that private copy, under runprog, in the caller's scope.
static int loopconvert(const char* word, const char* head) {
    if (mac_expanded) {
        c_outlev = 3;
        spoutsetptagweak();
        spout21(word);
        spout21(" command may not result from a macro expansion ");
        spout21("interactively or in do files\n");
        return 198;
    }
    if (convlevel >= MAXWHILE) return error(198);
    LoopBody body;
    body.off.push_back(0);
    addline(&body, head);
    int depth = bracecount(head); // none: the loop line alone runs and complains
    while (depth > 0) {
        if (getreq(1)) return nomatchbrace();
        addline(&body, console);
        depth += bracecount(console);
    }
    const LoopBody* savedsrc = loopsrc;
    int32_t savedline = sys_upline;
    uint8_t savedrun = runprog;
    loopsrc = &body;
    runprog = 1;
    sys_upline = 0;
    convlevel++;
    int rc = 0;
    bool exited = false;
    for (;;) {
        if (flow_getline()) break;
        if (stopflag) {
            rc = 1;
            break;
        }
        if (!doreq()) {
            exited = true;
            rc = globalrc;
            break;
        }
        if (globalrc) {
            rc = globalrc;
            break;
        }
    }
    convlevel--;
    loopsrc = savedsrc;
    sys_upline = savedline;
    runprog = savedrun;
    if (exited) exitflg = 1;
    return rc;
}

// ---- if, else, while --------------------------------------------------------

// Reads and evaluates the condition standing in the tokenizer, up to the
// brace at `brace` (null: up to a command). 0 or a code; *truth the result.
static int condition(char* brace, bool* truth) {
    char cut = 0;
    if (brace) {
        cut = *brace;
        *brace = 0;
    }
    lvxtra = 1;
    vable = 3;
    pushtok("if");
    int rc = parse();
    if (brace) {
        if (!rc && *skipbl(wheretok())) rc = error(198);
        *brace = cut;
    }
    if (rc) return rc;
    double v = xeq(&ifpgm, nobs1);
    *truth = v != 0; // missing counts as true
    return 0;
}

static int ifblock(char* brace, bool truth) {
    uint8_t saved = procflg;
    procflg = truth;
    syselseflg = truth;
    int rc = runbody(brace);
    if (!breakdetail) procflg = saved;
    return rc;
}

static int whilecmd(char* head) {
    if (!runprog) return loopconvert("while", head);
    int32_t whileline = sys_upline - 1;
    char* brace = blockbrace(wheretok());
    if (!brace) return required("{");
    bool truth;
    if (int rc = condition(brace, &truth)) return failwalk(rc, brace);
    if (kvpollstd()) return failwalk(1, brace);
    uint8_t savedproc = procflg, ba = breakallowed, bd = breakdetail;
    breakallowed = 1;
    breakdetail = 0;
    procflg = truth;
    int rc = runbody(brace);
    uint8_t how = breakdetail;
    procflg = savedproc;
    breakallowed = ba;
    breakdetail = bd;
    if (exitflg) return rc;
    // the loop is the re-reading of its own line
    if (truth && how != 2 && !rc) sys_upline = whileline;
    return rc;
}

int ifcmd(int iswhile) {
    char* head = lwheretok();
    if (!procflg) return walk(blockbrace(wheretok()));
    if (iswhile) return whilecmd(head);
    char* brace = blockbrace(wheretok());
    bool truth;
    if (int rc = condition(brace, &truth)) return failwalk(rc, brace);
    if (brace) return ifblock(brace, truth);
    char* rest = skipbl(wheretok());
    if (!*rest) return vernum > 799 ? required("{") : braceerror(1);
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (cmdcmp(token, "else", 4)) {
        c_outlev = 3;
        spoutsetptagweak();
        spout21("if may not be immedately followed by else\n");
        return 198;
    }
    resettok(&at);
    // the command runs in place, its head blanked out
    memset(console, ' ', rest - console);
    uint8_t saved = procflg;
    procflg = truth;
    syselseflg = truth;
    int rc = flow_dispatch();
    if (!breakdetail) procflg = saved;
    return rc;
}

int elsecmd(int) {
    uint8_t saved = procflg;
    if (syselseflg) procflg = 0;
    int rc = flow_dispatch();
    if (!breakdetail) procflg = saved;
    return rc;
}

// ---- forvalues ---------------------------------------------------------------

static int number(double* out) {
    gettok(prsenum);
    if (!token[0] || tokisstr(token) || cnvstoz(token, out)) return error(198);
    return 0;
}

// `#1(#d)#2`, `#1/#2`, `#1 #t to #2`, `#1 #t : #2`.
static int range(double* from, double* step, double* to) {
    if (int rc = number(from)) return rc;
    gettok(prsenum);
    if (tokis(token, "(")) {
        if (int rc = number(step)) return rc;
        gettok(prsenum);
        if (!tokis(token, ")")) return error(198);
        return number(to);
    }
    if (tokis(token, "/")) {
        *step = 1;
        return number(to);
    }
    double t;
    if (!token[0] || tokisstr(token) || cnvstoz(token, &t)) return error(198);
    gettok(prsenum);
    if (!tokis(token, "to") && !tokis(token, ":")) return error(198);
    *step = t - *from;
    return number(to);
}

static int loopname(char* lname) {
    gettok(prsestd);
    if (!token[0] || tokisstr(token)) return error(198);
    if (int rc = chklmname(token)) return rc;
    if (chkmacname(token)) return error(198);
    if (snprintf(lname, 40, "_%s", token) < 0) lname[0] = 0;
    return 0;
}

// The value as the loop's local holds it.
static void loopvalue(double v, char* buf) {
    uint8_t dp = dpcomma;
    dpcomma = 0;
    char tmp[64];
    fmtnum(tmp, "%18.0g", v);
    dpcomma = dp;
    const char* p = tmp;
    while (*p == ' ') p++;
    size_t n = strlen(p);
    while (n && p[n - 1] == ' ') n--;
    memcpy(buf, p, n);
    buf[n] = 0;
}

// Common to both loops: the state of the enclosing body, taken back at the end.
struct LoopSave {
    uint8_t procflg, breakallowed, breakdetail;
};

static void passbegin(const LoopSave& s, int32_t first) {
    sys_upline = first;
    breakallowed = 1;
    breakdetail = 0;
    procflg = s.procflg;
}

static void loopend(const LoopSave& s) {
    procflg = s.procflg;
    breakallowed = s.breakallowed;
    breakdetail = s.breakdetail;
}

// One pass of a loop body: the block as stored, or for old programs the rest
// of the loop's own line put back into the console.
static int runbody(const std::vector<char>& rest) {
    if (vernum > 799) return runblock();
    memcpy(console, rest.data(), rest.size());
    return runblock_old(console);
}

// One pass with the loop's macro set to value; false when the loop stops.
static bool looppass(const LoopSave& s, int32_t first, const std::vector<char>& rest,
                     const char* lname, const char* value, int& rc, bool& ran) {
    if (int src = macresave(lname, value)) {
        rc = src;
        return false;
    }
    passbegin(s, first);
    if (rc) procflg = 0;
    if (int brc = runbody(rest)) rc = brc;
    ran = true;
    return !exitflg;
}

// A loop that made no pass still reads its body once, unrun, to its end.
static void loopskip(bool ran, int32_t first, const std::vector<char>& rest) {
    if (ran || exitflg) return;
    sys_upline = first;
    procflg = 0;
    runbody(rest);
}

int forvals(int) {
    char* head = lwheretok();
    char* brace = blockbrace(wheretok());
    if (!procflg) return walk(brace);
    if (!runprog) return loopconvert("forvalues", head);
    char lname[40];
    double from = 0, step = 1, to = 0;
    if (int rc = loopname(lname)) return failwalk(rc, brace);
    gettok(prsestd);
    if (!tokis(token, "=")) return failwalk(error(198), brace);
    if (!brace) {
        if (int rc = range(&from, &step, &to)) return rc;
        return required("{");
    }
    *brace = 0;
    int rc = range(&from, &step, &to);
    if (!rc && *skipbl(wheretok())) rc = error(198);
    *brace = '{';
    if (rc) return failwalk(rc, brace);
    if (step == 0) {
        c_outlev = 3;
        spoutsetptagweak();
        spout21("forvalues:  increment may not be zero\n");
        return failwalk(198, brace);
    }
    // the old rules let the body begin on this line
    std::vector<char> rest;
    if (vernum <= 799) rest.assign(brace + 1, brace + strlen(brace) + 1);
    LoopSave s{procflg, breakallowed, breakdetail};
    int32_t first = sys_upline;
    bool ran = false;
    char value[64];
    rc = 0;
    for (double v = from;; v += step) {
        search_event_now();
        macerase(lname);
        if (step > 0 ? !(v <= to) : !(v >= to)) break;
        if (rc || breakdetail == 2 || exitflg) break;
        if (kvpollstd()) {
            rc = 1;
            if (ran) break;
        }
        loopvalue(v, value);
        if (!looppass(s, first, rest, lname, value, rc, ran)) break;
    }
    loopskip(ran, first, rest);
    loopend(s);
    return rc;
}

// ---- foreach -----------------------------------------------------------------

// The innermost list: its macro and how far the loop has read it.
struct FeList {
    char name[40];
    size_t offset;
    FeList* prev;
};
static FeList* fe_cur = nullptr;

int foreachrest(char* dst, size_t n) {
    dst[0] = 0;
    if (!fe_cur || n == 0) return 0;
    const char* list = macptr(fe_cur->name);
    if (!list) return 0;
    size_t len = strlen(list);
    const char* p = list + (fe_cur->offset < len ? fe_cur->offset : len);
    while (*p == ' ') p++;
    size_t m = strlen(p);
    while (m && p[m - 1] == ' ') m--;
    if (m >= n) m = n - 1;
    memcpy(dst, p, m);
    dst[m] = 0;
    return 0;
}

void link_flow() {
    mac_hooks.ferest = foreachrest;
}

// Next element of list from *offset: a word, or a simple or compound string
// without its quotes. False at the end.
static bool nextelement(const char* list, size_t* offset, char* dst, size_t cap) {
    size_t len = strlen(list);
    const char* p = list + (*offset < len ? *offset : len);
    while (*p == ' ') p++;
    if (!*p) {
        *offset = static_cast<size_t>(p - list);
        return false;
    }
    const char *b, *e, *next;
    if (p[0] == '`' && p[1] == '"') {
        int depth;
        const char* q = pcompoundquotes(const_cast<char*>(p), &depth);
        b = p + 2;
        e = depth ? q : q - 2;
        next = q;
    } else if (*p == '"') {
        const char* q = strchr(p + 1, '"');
        b = p + 1;
        e = q ? q : p + strlen(p);
        next = q ? q + 1 : e;
    } else {
        const char* q = p;
        while (*q && *q != ' ') q++;
        b = p;
        e = q;
        next = q;
    }
    size_t n = e > b ? static_cast<size_t>(e - b) : 0;
    if (n >= cap) n = cap - 1;
    memcpy(dst, b, n);
    dst[n] = 0;
    *offset = static_cast<size_t>(next - list);
    return true;
}

// Names of the variables in varlist_vr, blank-separated, into the list macro;
// for a list of new names, the names typed, none of which may exist.
static int savevarnames(const char* listname, bool isnew) {
    std::vector<char> text;
    for (int i = 0; i < lnvar; i++) {
        if (isnew && varlist_vr[i]) return error2(3, newvarname[i]);
        const char* nm = isnew ? newvarname[i] : varname(varlist_vr[i]);
        if (i) text.push_back(' ');
        text.insert(text.end(), nm, nm + strlen(nm));
    }
    text.push_back(0);
    return macresave(listname, text.data());
}

// `of numlist`: through the numlist reader when there is one, else plain
// numbers only.
static int savenumlist(const char* listname, const char* text) {
    std::vector<char> out;
    char buf[64];
    if (znumlist_hook) {
        std::vector<double> v(1600);
        int count = 0;
        if (int rc = znumlist_hook(text, v.data(), 1600, 0, &count)) return rc;
        for (int i = 0; i < count; i++) {
            loopvalue(v[i], buf);
            if (i) out.push_back(' ');
            out.insert(out.end(), buf, buf + strlen(buf));
        }
    } else {
        const char* p = text;
        int count = 0;
        for (;;) {
            while (*p == ' ') p++;
            if (!*p) break;
            const char* q = p;
            while (*q && *q != ' ') q++;
            size_t n = static_cast<size_t>(q - p);
            if (n >= sizeof buf) return errornumlist(121, 0);
            memcpy(buf, p, n);
            buf[n] = 0;
            double x;
            if (cnvstoz(buf, &x)) return errornumlist(121, 0);
            if (++count > 1600) return error(1000);
            if (!out.empty()) out.push_back(' ');
            out.insert(out.end(), p, q);
            p = q;
        }
    }
    out.push_back(0);
    return macresave(listname, out.data());
}

// Reads `in ...` or `of kind ...` up to the brace (cut off meanwhile) and
// leaves the name of the list macro in listname; *made when the loop owns it.
static int readlist(char* listname, bool* made) {
    *made = false;
    gettok(prsestd);
    if (tokis(token, "in")) {
        char* p = skipbl(wheretok());
        size_t n = strlen(p);
        while (n && p[n - 1] == ' ') n--;
        char keep = p[n];
        p[n] = 0;
        int rc = macresave(listname, p);
        p[n] = keep;
        *made = true;
        return rc;
    }
    if (!tokis(token, "of")) return error(198);
    gettok(prsestd);
    if (tokis(token, "local") || tokis(token, "global")) {
        bool local = token[0] == 'l';
        gettok(prsestd);
        if (!token[0] || tokisstr(token) || strlen(token) > 32) return error(198);
        listname[0] = '_';
        memcpy(listname + local, token, strlen(token) + 1);
        gettok(prsestd);
        if (token[0]) return error(198);
        return 0;
    }
    *made = true;
    if (tokis(token, "numlist")) return savenumlist(listname, skipbl(wheretok()));
    if (tokis(token, "varlist") || tokis(token, "newlist")) {
        bool isnew = token[0] == 'n';
        int32_t before = nvar;
        vexists = isnew ? 0 : 1;
        int rc = ssvlist(prsestd, isnew);
        if (!rc) {
            gettok(prsestd);
            if (token[0]) rc = error(198);
        }
        if (!rc) rc = savevarnames(listname, isnew);
        if (isnew) nvar = before;
        return rc;
    }
    if (tokis(token, "any")) {
        char* p = skipbl(wheretok());
        return macresave(listname, p);
    }
    return error(198);
}

int foreach (int) {
    char* head = lwheretok();
    char* brace = blockbrace(wheretok());
    if (!procflg) return walk(brace);
    if (!runprog) return loopconvert("foreach", head);
    if (fedepth >= MAXFOREACH) return failwalk(error(198), brace);
    char lname[40];
    if (int rc = loopname(lname)) return failwalk(rc, brace);
    FeList list;
    snprintf(list.name, sizeof list.name, "!%dfe", fedepth + 1);
    bool made = false;
    if (!brace) {
        readlist(list.name, &made);
        if (made) macerase(list.name);
        return required("{");
    }
    *brace = 0;
    int rc = readlist(list.name, &made);
    *brace = '{';
    if (rc) {
        if (made) macerase(list.name);
        return failwalk(rc, brace);
    }
    std::vector<char> rest;
    if (vernum <= 799) rest.assign(brace + 1, brace + strlen(brace) + 1);
    list.offset = 0;
    list.prev = fe_cur;
    fe_cur = &list;
    fedepth++;
    std::vector<char> elem(static_cast<size_t>(macrolen));
    LoopSave s{procflg, breakallowed, breakdetail};
    int32_t first = sys_upline;
    bool ran = false;
    for (;;) {
        search_event_now();
        macerase(lname);
        const char* text = macptr(list.name);
        if (!text || !nextelement(text, &list.offset, elem.data(), elem.size())) break;
        if (rc || breakdetail == 2 || exitflg) break;
        if (kvpollstd()) {
            rc = 1;
            if (ran) break;
        }
        if (!looppass(s, first, rest, lname, elem.data(), rc, ran)) break;
    }
    loopskip(ran, first, rest);
    fedepth--;
    fe_cur = list.prev;
    if (made) macerase(list.name);
    loopend(s);
    return rc;
}

// ---- continue, class exit -----------------------------------------------------

int continuecmd(int) {
    if (!breakallowed) return error(119);
    gettok(prsestd);
    int how = 1;
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        if (findopt("break", 2, 0)) how = 2;
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    breakdetail = static_cast<uint8_t>(how);
    procflg = 0;
    return 0;
}

int cexitcmd(int) {
    if (!sys_is_cls) {
        c_outlev = 3;
        spoutsetptagweak();
        spout21("command -class exit- can only be used in a class program\n");
        return 198;
    }
    // the value for the class return slot belongs to the class system
    exitflg = 1;
    return 0;
}

} // namespace korvu
