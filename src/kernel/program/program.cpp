// The program store: defining, finding, listing, dropping and reading the
// lines of programs, and the entry and exit of a running program.
#include "kernel/program/program.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/sort/bystate.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
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

int32_t adosize = 500;
int32_t sysldtime = 0;
int32_t caller_vernum = KORVU_VERSION;
uint8_t program_class = 0;
uint8_t resort_on_exit = 0;
uint8_t reading_cls_pgm = 0;
int32_t autoload_level = 0;

static PgmRec* rec(void* v) {
    return static_cast<PgmRec*>(v);
}

// --- finding ------------------------------------------------------------------

void* pgmfind(const char* name, const char* owner, int mode) {
    if (!name || !name[0]) return nullptr;
    if (mode & 1) {
        void* fallback = nullptr;
        for (void* v = dmfind0(name, DM_PROGRAM); v; v = dmnamenext(v, DM_PROGRAM)) {
            const char* o = rec(v)->owner;
            if (owner && !strcmp(o, owner)) return v;
            if (!o[0] && !fallback) fallback = v;
        }
        if (fallback) return fallback;
    }
    if (mode & 2) return dmfind0(name, DM_PLUGIN);
    return nullptr;
}

// The item of exactly this name and owner.
static void* pgmexact(const char* name, const char* owner) {
    for (void* v = dmfind0(name, DM_PROGRAM); v; v = dmnamenext(v, DM_PROGRAM))
        if (!strcmp(rec(v)->owner, owner)) return v;
    return nullptr;
}

int byability(const char* name) {
    void* v = pgmfind(name, sys_pgmclass, 1);
    return v ? rec(v)->bymode : 9;
}

// --- storing ------------------------------------------------------------------

int pgmsqueeze(const char* line, char* dst) {
    int indent = 0;
    while (*line == ' ') line++, indent++;
    if (indent > 255) indent = 255;
    char* d = dst;
    bool instr = false;
    for (const char* p = line; *p; p++) {
        if (*p == '"') instr = !instr;
        if (*p == ' ' && !instr && d > dst && d[-1] == ' ') continue;
        *d++ = *p;
    }
    if (d > dst && d[-1] == ' ' && !instr) d--;
    *d = 0;
    return indent;
}

// A growing body: the offsets are relative to the start of the text.
struct Body {
    std::vector<int32_t> off;
    std::string text;
    std::vector<char> scratch;
};

static int addline(Body& b, const char* line) {
    if (static_cast<int>(b.off.size()) >= PGM_MAXLINES) return error(1000);
    b.scratch.resize(strlen(line) + 1);
    int indent = pgmsqueeze(line, b.scratch.data());
    size_t n = strlen(b.scratch.data());
    if (b.text.size() + n + 2 > static_cast<size_t>(PGM_MAXTEXT)) return error(1000);
    b.off.push_back(static_cast<int32_t>(b.text.size()));
    b.text += static_cast<char>(indent);
    b.text.append(b.scratch.data(), n);
    b.text += '\0';
    return 0;
}

static int storebody(const char* name, const char* owner, const Body& b, int cls, int bymode,
                     int sortpres, const char* properties) {
    int n = static_cast<int>(b.off.size());
    if (n == 0) return 0;
    size_t head = sizeof(PgmRec) + sizeof(int32_t) * (n + 1);
    size_t size = head + b.text.size();
    void* v = dmadd(name, DM_PROGRAM, n, size);
    if (!v) return 950;
    PgmRec* p = rec(v);
    memset(p, 0, sizeof *p);
    p->loadtime = sysldtime;
    p->lastuse = sysclock;
    p->sortpres = static_cast<uint8_t>(sortpres);
    p->clsprog = reading_cls_pgm;
    p->pgmclass = static_cast<uint8_t>(cls);
    p->bymode = static_cast<uint8_t>(bymode);
    p->version = static_cast<int16_t>(vernum);
    snprintf(p->owner, sizeof p->owner, "%s", owner);
    snprintf(p->properties, sizeof p->properties, "%s", properties ? properties : "");
    int32_t* idx = reinterpret_cast<int32_t*>(p + 1);
    for (int i = 0; i < n; i++) idx[i] = static_cast<int32_t>(head) + b.off[i];
    idx[n] = static_cast<int32_t>(size);
    memcpy(static_cast<char*>(v) + head, b.text.data(), b.text.size());
    return 0;
}

int pgmstore(const char* name, const char* owner, const char* const* lines, int nlines, int cls,
             int bymode, int sortpres, const char* properties) {
    Body b;
    for (int i = 0; i < nlines; i++)
        if (int rc = addline(b, lines[i])) return rc;
    return storebody(name, owner, b, cls, bymode, sortpres, properties);
}

// The owner of a program defined now: the main program of the ado-file being
// read, unless this is that program itself.
static const char* newowner(const char* name) {
    if (!sysldtime || !strcmp(name, sys_pgmclass)) return "";
    return sys_pgmclass;
}

// Count of open braces less closed ones, outside double quotes.
static int bracecount(const char* s) {
    int n = 0;
    bool instr = false;
    for (; *s; s++) {
        if (*s == '"') instr = !instr;
        if (instr) continue;
        if (*s == '{') n++;
        if (*s == '}') n--;
    }
    return n;
}

static int pgmdefine_owned(const char* name, const char* owner, int cls, int bymode, int sortpres,
                           const char* properties, const char* firstline);

int pgmdefine(const char* name, int cls, int bymode, int sortpres, const char* properties,
              const char* firstline) {
    return pgmdefine_owned(name, newowner(name), cls, bymode, sortpres, properties, firstline);
}

static int pgmdefine_owned(const char* name, const char* owner, int cls, int bymode, int sortpres,
                           const char* properties, const char* firstline) {
    if (void* old = pgmexact(name, owner)) {
        // a class file read again brings its member programs again
        if (!(reading_cls_pgm && autoload_level && rec(old)->clsprog)) return error2(3, name);
        if (rec(old)->running) return error2(3, name);
        dmrm(old);
    }
    Body b;
    int depth = 0;
    if (firstline) {
        if (int rc = addline(b, firstline)) return rc;
        depth = bracecount(firstline);
    }
    while (!firstline || depth > 0) {
        if (getreq(1)) return stopflag ? 1 : error(612);
        if (stopflag) return 1;
        if (!firstline) {
            TokPos at;
            stattok(&at);
            gettok(prsestd);
            bool isend = !tokisstr(token) && tokis(token, "end");
            resettok(&at);
            if (isend) break;
        } else {
            depth += bracecount(console);
        }
        if (static_cast<int>(strlen(console)) >= conslen) return error(1000);
        if (int rc = addline(b, console)) return rc;
    }
    return storebody(name, owner, b, cls, bymode, sortpres, properties);
}

// byable(onecall) or byable(recall[, noheader|header]).
static int readbymode(const char* text, int* mode) {
    std::string t = text;
    std::vector<std::string> w;
    std::string cur;
    for (char c : t) {
        if (c == ' ' || c == ',') {
            if (!cur.empty()) w.push_back(cur), cur.clear();
            if (c == ',') w.push_back(",");
        } else {
            cur += c;
        }
    }
    if (!cur.empty()) w.push_back(cur);
    if (w.size() == 1 && w[0] == "onecall") return *mode = 1, 0;
    if (!w.empty() && w[0] == "recall") {
        if (w.size() == 1) return *mode = 2, 0;
        if (w.size() == 3 && w[1] == ",") {
            if (w[2] == "noheader") return *mode = 3, 0;
            if (w[2] == "header") return *mode = 2, 0;
        }
    }
    return 198;
}

int pgmgen() {
    gettok(prsestdot);
    while (tokis(token, ".")) gettok(prsestdot);
    if (!token[0] || tokisstr(token)) return required("program name");
    std::string name(token, strnlen(token, NAMELEN));
    TokPos at;
    stattok(&at);
    gettok(prsestdot);
    // `program a.b`: member program b of class a
    std::string owner;
    if (tokis(token, ".")) {
        gettok(prsestdot);
        if (!token[0] || tokisstr(token)) return required("program name");
        owner = name;
        name.assign(token, strnlen(token, NAMELEN));
        if (chkname(owner.c_str(), 1)) return 198;
    } else {
        resettok(&at);
    }
    if (chkname(name.c_str(), 1)) return 198;

    int cls = 0, bymode = 0, sortpres = 0;
    std::string props;
    gettok(prsestd);
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        if (findopt("rclass", 1, 0))
            cls = 1;
        else if (findopt("eclass", 1, 0))
            cls = 3;
        else if (findopt("sclass", 1, 0))
            cls = 2;
        else if (findopt("return", 1, 0))
            cls = 1;
        else
            findopt("nclass", 1, 0);
        char buf[200];
        findargn("byable", 2, buf, sizeof buf, 10);
        if (buf[0]) {
            if (readbymode(buf, &bymode)) {
                return errtext(198, "option byable() incorrectly specified\n");
            }
        }
        sortpres = findopt("sortpreserve", 4, 0);
        char pbuf[200];
        findargn("properties", 4, pbuf, sizeof pbuf, 40);
        props = pbuf;
        if (props.size() > sizeof(PgmRec::properties) - 1) {
            return errtext(198, "option properties() incorrectly specified\n");
        }
        for (size_t s = 0; s < props.size();) {
            size_t e = props.find(' ', s);
            if (e == std::string::npos) e = props.size();
            if (e > s && chkname(props.substr(s, e - s).c_str(), 1)) return 198;
            s = e + 1;
        }
        if (findopt("plugin", 6, 0)) {
            return errtext(199, "plugins are not available\n");
        }
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return errorf(198, "'%s' invalid\n", tokisstr(token) ? token + 1 : token);
    }
    if (!owner.empty()) {
        uint8_t saved = reading_cls_pgm;
        reading_cls_pgm = 1;
        int rc = pgmdefine_owned(name.c_str(), owner.c_str(), cls, bymode, sortpres, props.c_str(),
                                 nullptr);
        reading_cls_pgm = saved;
        return rc;
    }
    return pgmdefine(name.c_str(), cls, bymode, sortpres, props.c_str(), nullptr);
}

// --- removing -------------------------------------------------------------------

static bool group_running(const char* main) {
    for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
         v = dmnext(v, nullptr, DM_PROGRAM, nullptr)) {
        PgmRec* p = rec(v);
        if (!p->running) continue;
        if (!strcmp(p->owner, main) || (!p->owner[0] && !strcmp(dmname(v), main))) return true;
    }
    return false;
}

// Removes one program item; for a main program all it owns as well.
static int killitem(void* v) {
    PgmRec* p = rec(v);
    std::string name = dmname(v);
    if (p->owner[0]) {
        if (p->running) return 0;
        dmrm(v);
        return 1;
    }
    if (group_running(name.c_str())) return 0;
    for (;;) {
        void* doomed = nullptr;
        for (void* w = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); w;
             w = dmnext(w, nullptr, DM_PROGRAM, nullptr))
            if (!strcmp(rec(w)->owner, name.c_str())) {
                doomed = w;
                break;
            }
        if (!doomed) break;
        dmrm(doomed);
    }
    dmrm(v);
    if (void* ix = dmfind0(name.c_str(), DM_PGMINDEX)) dmrm(ix);
    while (void* pl = dmfind0(name.c_str(), DM_PLUGIN)) dmrm(pl);
    return 1;
}

// "name" is a main program (or one defined by hand), "owner.name" a subprogram.
static void* pgmnamed(const std::string& full) {
    size_t dot = full.find('.');
    if (dot == std::string::npos) return pgmexact(full.c_str(), "");
    return pgmexact(full.substr(dot + 1).c_str(), full.substr(0, dot).c_str());
}

int pgmkill(const char* name) {
    void* v = pgmnamed(name);
    return v ? killitem(v) : 0;
}

// Reads program names, "a.b" for a subprogram, to the end of the line.
static std::vector<std::string> pgmnames() {
    std::vector<std::string> out;
    for (;;) {
        gettok(prsestdot);
        if (!token[0]) break;
        std::string w = tokisstr(token) ? token + 1 : token;
        TokPos at;
        stattok(&at);
        gettok(prsestdot);
        if (tokis(token, ".")) {
            gettok(prsestdot);
            w += ".";
            w += token;
        } else {
            resettok(&at);
        }
        out.push_back(w);
    }
    return out;
}

static int pgmdrop() {
    std::vector<std::string> names = pgmnames();
    if (names.empty()) return required("name or _all");
    if (names[0] == "_all") {
        if (names.size() > 1) return notalow(names[1].c_str());
        for (bool again = true; again;) {
            again = false;
            for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
                 v = dmnext(v, nullptr, DM_PROGRAM, nullptr)) {
                if (rec(v)->owner[0] || group_running(dmname(v))) continue;
                if (killitem(v)) {
                    again = true;
                    break;
                }
            }
        }
        return 0;
    }
    for (auto& n : names)
        if (!pgmnamed(n)) return error2(5, n.c_str());
    for (auto& n : names) pgmkill(n.c_str());
    return 0;
}

static void listone(void* v) {
    PgmRec* p = rec(v);
    std::string head = p->owner[0] ? std::string(p->owner) + "." + dmname(v) : dmname(v);
    static constexpr const char* clsname[] = {"", "rclass", "sclass", "eclass"};
    if (p->pgmclass) head += std::string(", ") + clsname[p->pgmclass & 3];
    newline();
    spout21(head.c_str());
    spout21(":\n");
    const int32_t* idx = pgmindex(p);
    const char* base = static_cast<const char*>(v);
    for (int i = 0; i < dmtag(v); i++) {
        const char* line = base + idx[i];
        spoutf("%3d.  %*s", i + 1, static_cast<unsigned char>(line[0]), "");
        spout21(line + 1);
        newline();
    }
}

static int pgmlist() {
    std::vector<std::string> names = pgmnames();
    c_outlev = 1;
    if (names.empty() || (names.size() == 1 && names[0] == "_all")) {
        std::vector<void*> all;
        for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
             v = dmnext(v, nullptr, DM_PROGRAM, nullptr))
            all.push_back(v);
        for (auto it = all.rbegin(); it != all.rend(); ++it) {
            listone(*it);
            if (kvpollstd()) return 1;
        }
        return 0;
    }
    for (auto& n : names)
        if (!pgmnamed(n)) return error2(5, n.c_str());
    for (auto& n : names) listone(pgmnamed(n));
    return 0;
}

static int pgmdir() {
    gettok(prsestd);
    if (token[0]) return error(198);
    c_outlev = 1;
    std::vector<void*> mains;
    for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
         v = dmnext(v, nullptr, DM_PROGRAM, nullptr))
        if (!rec(v)->owner[0]) mains.push_back(v);
    uint64_t total = 0;
    auto row = [&](void* v, const std::string& name) {
        PgmRec* p = rec(v);
        const char* kind = p->clsprog ? "class" : (p->loadtime ? "ado" : "");
        spoutf("%5s %8d  %s\n", kind, static_cast<int>(dmsize(v)), name.c_str());
        total += dmsize(v);
    };
    for (auto it = mains.rbegin(); it != mains.rend(); ++it) {
        std::string main = dmname(*it);
        row(*it, main);
        for (void* w = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); w;
             w = dmnext(w, nullptr, DM_PROGRAM, nullptr))
            if (!strcmp(rec(w)->owner, main.c_str())) row(w, main + "." + dmname(w));
    }
    spoutptl("      {hline 8}\n");
    spoutf("%5s %8d\n", "", static_cast<int>(total));
    char name[dm_namelen + 1];
    for (void* v = dmnext(nullptr, name, DM_PLUGIN, nullptr); v;
         v = dmnext(v, name, DM_PLUGIN, nullptr))
        spoutf("%-17s     |%s|\n", name, "");
    return 0;
}

int pgm(int) {
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    if (!tokisstr(token)) {
        if (cmdcmp(token, "dir", 2)) return pgmdir();
        if (cmdcmp(token, "list", 1)) return pgmlist();
        if (cmdcmp(token, "drop", 4)) return pgmdrop();
        if (cmdcmp(token, "define", 2)) return pgmgen();
    }
    resettok(&at);
    return pgmgen();
}

// --- running --------------------------------------------------------------------

int pgmgetline() {
    const PgmRec* p = static_cast<const PgmRec*>(sys_pgmloc);
    if (!p) {
        p = rec(pgmfind(sys_pgmname, sys_pgmclass, 1));
        if (!p) return 1;
        sys_pgmloc = p;
    }
    if (sys_upline >= dmtag(p)) return 1;
    const int32_t* idx = pgmindex(p);
    size_t len = static_cast<size_t>(idx[sys_upline + 1] - idx[sys_upline]);
    if (len > static_cast<size_t>(conslen)) len = conslen;
    memcpy(console, reinterpret_cast<const char*>(p) + idx[sys_upline], len);
    console[len - 1] = 0;
    console[0] = ' ';
    sys_upline++;
    return 0;
}

int runprogram() {
    void* v = pgmfind(cmd, sys_pgmclass, 3);
    if (v && dmtype(v) == DM_PLUGIN) {
        return errtext(199, "plugins are not available\n");
    }
    if (!v) {
        if (int rc = autoload("ado", 1)) return rc;
    }
    return godo(3, 0);
}

int pgm_prolog(PgmFrame* f) {
    PgmRec* p = rec(pgmfind(cmd, sys_pgmclass, 1));
    f->rec = p;
    f->rmsg = korvu_rmsg;
    f->is_cls = sys_is_cls;
    f->pclass = program_class;
    f->byable_ado = in_byable_ado;
    f->mvmodern = mvmodern;
    f->caller_vernum = caller_vernum;
    memcpy(f->pgmclass, sys_pgmclass, sizeof f->pgmclass);
    if (!p) return error(199);
    f->running = p->running;
    p->running = 1;
    p->lastuse = sysclock;
    program_class = p->pgmclass;
    sys_is_cls = p->clsprog;
    resort_on_exit = p->sortpres;
    snprintf(sys_pgmclass, sizeof sys_pgmclass, "%s", p->owner[0] ? p->owner : dmname(p));
    snprintf(sys_pgmname, sizeof sys_pgmname, "%s", dmname(p));
    korvu_rmsg = 0;
    caller_vernum = vernum;
    if (p->clsprog) vernum = p->version;
    sys_pgmloc = p;
    sys_upline = 0;
    runprog = 1;
    if (int rc = set_by_env()) return rc;
    if (resort_on_exit && frame_hooks.sort_preserve) {
        if (int rc = frame_hooks.sort_preserve()) {
            resort_on_exit = 0;
            return rc;
        }
    }
    return 0;
}

int pgm_retcls(const PgmFrame*) {
    switch (program_class) {
    case 1: return 1;
    case 3: return 2;
    case 2: return 3;
    default: return 0;
    }
}

void pgm_epilog(const PgmFrame* f) {
    if (f->rec) f->rec->running = f->running;
    korvu_rmsg = f->rmsg;
    sys_is_cls = f->is_cls;
    program_class = f->pclass;
    in_byable_ado = f->byable_ado;
    mvmodern = f->mvmodern;
    caller_vernum = f->caller_vernum;
    memcpy(sys_pgmclass, f->pgmclass, sizeof sys_pgmclass);
}

} // namespace korvu
