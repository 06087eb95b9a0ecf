// The ado path: system directories, the search along S_ADO, loading a command
// from its ado-file, eviction of old ado programs, `which`, `discard`,
// `sysdir` and `set adosize`.
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "app/link.h"
#include "class/clslang.h"
#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/vars/vartab.h"
#include "kernel/cmds/builtins.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/loop/startup.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/program.h"
#include "output/spout.h"

namespace korvu {

char sysdir_updates[128], sysdir_base[128], sysdir_site[128], sysdir_plus[128],
    sysdir_personal[128], sysdir_oldplace[128];

static bool ado_ready = false;

static const char* default_adopath = "UPDATES;BASE;SITE;.;PERSONAL;PLUS;OLDPLACE";

static bool isdir(const std::string& d) {
    struct stat st;
    return stat(d.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

static bool isfile(const std::string& f) {
    struct stat st;
    return stat(f.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

static std::string tilde(const std::string& d) {
    if (!d.empty() && d[0] == '~') {
        const char* home = getenv("HOME");
        return std::string(home ? home : "") + d.substr(1);
    }
    return d;
}

static void setdir(char* dst, const std::string& s) {
    snprintf(dst, 128, "%s", s.c_str());
}

void adoinit() {
    if (ado_ready) return;
    ado_ready = true;
    std::string sys = sysdir_korvu;
    if (!sys.empty() && sys.back() != '/') sys += '/';
    setdir(sysdir_updates, sys + "ado/updates/");
    setdir(sysdir_base, sys + "base/");
    std::string parent = sys.size() > 1 ? sys.substr(0, sys.size() - 1) : sys;
    size_t slash = parent.rfind('/');
    parent = slash == std::string::npos ? std::string() : parent.substr(0, slash + 1);
    setdir(sysdir_site, parent + "ado/");
    setdir(sysdir_plus, isdir(tilde("~/ado/ktbplus/")) ? "~/ado/ktbplus/" : "~/ado/plus/");
    setdir(sysdir_personal, "~/ado/personal/");
    setdir(sysdir_oldplace, "~/ado/");
    if (!macptr("S_ADO")) {
        const char* env = getenv("S_ADO");
        macresave("S_ADO", env && *env ? env : default_adopath);
    }
}

struct SysDir {
    const char* word;
    char* dir;
    size_t size;
};

static SysDir sysdirs[] = {
    {"KORVU", sysdir_korvu, sizeof sysdir_korvu},
    {"UPDATES", sysdir_updates, 128},
    {"BASE", sysdir_base, 128},
    {"SITE", sysdir_site, 128},
    {"PLUS", sysdir_plus, 128},
    {"PERSONAL", sysdir_personal, 128},
    {"OLDPLACE", sysdir_oldplace, 128},
};

static SysDir* findsysdir(const char* word) {
    if (cmdcmp_lc(word, "KTBPLUS", 7)) return &sysdirs[4];
    for (SysDir& s : sysdirs)
        if (cmdcmp_lc(word, s.word, static_cast<int>(strlen(s.word)))) return &s;
    return nullptr;
}

const char* mapdirname(const char* dir) {
    static std::string out;
    adoinit();
    if (SysDir* s = findsysdir(dir)) {
        out = s->dir;
    } else {
        out = dir;
        if (!out.empty() && out.back() != '/') out += '/';
    }
    return out.c_str();
}

char* pathjoin(char* dst, const char* dir, const char* file) {
    std::string d = dir;
    if (!d.empty() && d.back() != '/') d += '/';
    copytext(dst, FNLEN, (d + file).c_str());
    return dst;
}

// Walks S_ADO for `file`, in each directory and its first-letter subdirectory.
static int walkado(const std::string& file, int nth, char* pathout, size_t size) {
    adoinit();
    const char* s = macptr("S_ADO");
    std::string path = s ? std::string(s).substr(0, 5400) : "";
    size_t start = 0;
    while (start <= path.size()) {
        size_t semi = path.find(';', start);
        std::string elem =
            path.substr(start, semi == std::string::npos ? std::string::npos : semi - start);
        start = semi == std::string::npos ? path.size() + 1 : semi + 1;
        while (!elem.empty() && elem.front() == ' ') elem.erase(0, 1);
        while (!elem.empty() && elem.back() == ' ') elem.pop_back();
        if (elem.size() > 1 && elem.front() == '"' && elem.back() == '"')
            elem = elem.substr(1, elem.size() - 2);
        if (elem.empty()) continue;
        std::string dir = tilde(mapdirname(elem.c_str()));
        if (dir.empty()) continue;
        std::string cand[2] = {dir + file, dir + file.substr(0, 1) + "/" + file};
        for (const std::string& c : cand) {
            if (!isfile(c)) continue;
            if (--nth == 0) {
                snprintf(pathout, size, "%s", c.c_str());
                return 1;
            }
        }
    }
    return 0;
}

int srchado(const char* name, const char* ext, int nth, char* pathout, size_t size) {
    return walkado(std::string(name) + "." + ext, nth, pathout, size);
}

int srchadofile(const char* name, char* pathout, size_t size) {
    return walkado(name, 1, pathout, size);
}

// --- loading ------------------------------------------------------------------

static int unrecognized(const char* tail) {
    return errorf(199, "unrecognized command:  %s%s", cmd, tail);
}

// Removes every ado program of one load, or of all loads with 0.
static void dropload(int32_t load) {
    for (bool again = true; again;) {
        again = false;
        for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
             v = dmnext(v, nullptr, DM_PROGRAM, nullptr)) {
            PgmRec* p = static_cast<PgmRec*>(v);
            if (!p->loadtime || (load && p->loadtime != load) || p->running) continue;
            std::string name = p->owner[0] ? std::string(p->owner) + "." + dmname(v) : dmname(v);
            if (pgmkill(name.c_str())) {
                again = true;
                break;
            }
        }
    }
}

int discardal() {
    dropload(0);
    return 0;
}

void pgm_evict(int32_t keep) {
    for (;;) {
        uint64_t total = 0;
        for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
             v = dmnext(v, nullptr, DM_PROGRAM, nullptr))
            if (static_cast<PgmRec*>(v)->loadtime) total += dmsize(v);
        if (total <= static_cast<uint64_t>(adosize) * 1000) return;
        // groups by main program: newest use and whether any member runs
        struct Group {
            std::string main;
            int32_t last;
            bool busy;
        };
        std::vector<Group> groups;
        for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
             v = dmnext(v, nullptr, DM_PROGRAM, nullptr)) {
            PgmRec* p = static_cast<PgmRec*>(v);
            if (!p->loadtime) continue;
            std::string main = p->owner[0] ? p->owner : dmname(v);
            Group* g = nullptr;
            for (Group& x : groups)
                if (x.main == main) g = &x;
            if (!g) {
                groups.push_back({main, p->lastuse, false});
                g = &groups.back();
            }
            if (p->lastuse > g->last) g->last = p->lastuse;
            if (p->running || p->loadtime == keep) g->busy = true;
        }
        const Group* pick = nullptr;
        for (const Group& g : groups)
            if (!g.busy && (!pick || g.last < pick->last)) pick = &g;
        if (!pick) return;
        if (!pgmkill(pick->main.c_str())) {
            // a group whose main program went first: take the members singly
            bool any = false;
            for (void* v = dmnext(nullptr, nullptr, DM_PROGRAM, nullptr); v;
                 v = dmnext(v, nullptr, DM_PROGRAM, nullptr))
                if (!strcmp(static_cast<PgmRec*>(v)->owner, pick->main.c_str())) {
                    dmrm(v);
                    any = true;
                    break;
                }
            if (!any) return;
        }
    }
}

int autoload(const char* ext, int mustdefine) {
    if (chkname(cmd, 0)) {
        if (!strcmp(ext, "class")) return 199;
        return unrecognized(" invalid command name\n");
    }
    char path[1024];
    if (!srchado(cmd, ext, 1, path, sizeof path)) return unrecognized("\n");
    if (static_cast<int>(strlen(path)) + 3 >= conslen) return unrecognized("\n");

    // alprolog: what the load disturbs
    std::string saved_console = console;
    TokState tok;
    borrow_gettok(&tok);
    int32_t saved_ldtime = sysldtime;
    uint8_t saved_rcls = reading_cls_pgm;
    char saved_pgmclass[33], saved_cmd[34];
    memcpy(saved_pgmclass, sys_pgmclass, sizeof saved_pgmclass);
    memcpy(saved_cmd, cmd, sizeof saved_cmd);
    long offset = tok.pos ? tok.pos - console : -1;
    long loffset = tok.last ? tok.last - console : -1;

    if (snprintf(sys_pgmclass, sizeof sys_pgmclass, "%s", cmd) < 0) sys_pgmclass[0] = 0;
    snprintf(console, conslen, "\"%s\"", path);
    settok(console);
    sysldtime = sysclock ? sysclock : 1;
    int32_t thisload = sysldtime;
    reading_cls_pgm = !strcmp(ext, "class");
    autoload_level++;
    int rc = godo(1, 0);
    autoload_level--;

    // alepilog
    snprintf(console, conslen, "%s", saved_console.c_str());
    if (offset >= 0) tok.pos = console + offset;
    if (loffset >= 0) tok.last = console + loffset;
    return_gettok(&tok);
    sysldtime = saved_ldtime;
    reading_cls_pgm = saved_rcls;
    memcpy(sys_pgmclass, saved_pgmclass, sizeof saved_pgmclass);
    memcpy(cmd, saved_cmd, sizeof saved_cmd);
    pgm_evict(thisload);

    if (rc) {
        spoutlevf(4, "(error occurred while loading %s.%s)\n", cmd, ext);
        dropload(thisload);
        return rc;
    }
    if (mustdefine && !pgmfind(cmd, sys_pgmclass, 1)) {
        std::string tail = std::string(" not defined by ") + cmd + "." + ext + "\n";
        return unrecognized(tail.c_str());
    }
    return 0;
}

// --- commands -------------------------------------------------------------------

int discard(int) {
    gettok(prsestd);
    if (token[0]) return error(198);
    dmzap(DM_VARLIST);
    dmzap(DM_LASTCMD);
    dmzap(DM_POSTFILE);
    cls_discard_all();
    return discardal();
}

static constexpr const char* known_types[] = {"hlp", "ihlp", "plugin", "class", "dlg",  "idlg",
                                              "lo",  "llib", "ptag",   "do",    "style"};

// The path of a hit and the "*!" lines at the head of the file.
static void showhit(const char* path) {
    spout21(path);
    newline();
    FILE* fp = fopen(path, "r");
    if (!fp) return;
    char line[1024];
    while (fgets(line, sizeof line, fp)) {
        if (strncmp(line, "*!", 2)) break;
        size_t n = strlen(line);
        while (n && (line[n - 1] == '\n' || line[n - 1] == '\r')) line[--n] = 0;
        spout21(line);
        newline();
    }
    fclose(fp);
}

int verscmd(int) {
    char name[FNLEN];
    if (int rc = gettokfn(name, sizeof name)) return error(rc);
    gettok(prsestd);
    int all = 0;
    if (tokis(token, ",")) {
        noptn = 0;
        opable = 0;
        if (int rc = proption()) return rc;
        all = findopt("all", 3, 0);
        if (int rc = chkopt()) return rc;
    } else if (token[0]) {
        return error(198);
    }
    c_outlev = 1;
    const char* base = strrchr(name, '/');
    base = base ? base + 1 : name;
    const char* dot = strrchr(base, '.');
    std::string word = name;
    if (dot && strcmp(dot, ".ado")) {
        bool known = false;
        for (const char* t : known_types)
            if (!strcmp(dot + 1, t)) known = true;
        if (!known) return errorf(610, "file %s not Korvu filetype\n", name);
        char path[1024];
        if (!srchadofile(name, path, sizeof path))
            return errorf(601, "file %s not found along adopath\n", name);
        showhit(path);
        return 0;
    }
    if (dot) word.resize(word.size() - 4);
    bool found = false;
    if (!dot) {
        if (const char* b = findbuiltin(word.c_str())) {
            spout21("built-in command:  ");
            spout21(b);
            newline();
            if (!all) return 0;
            found = true;
        }
    }
    char path[1024];
    for (int nth = 1; srchado(word.c_str(), "ado", nth, path, sizeof path); nth++) {
        showhit(path);
        found = true;
        if (!all) break;
    }
    if (!found) {
        return errorf(111, "command %s not found as either built-in or ado-file\n", word.c_str());
    }
    return 0;
}

int kvsysdir(int) {
    if (byvar) return error(190);
    adoinit();
    gettok(prsestd);
    if (!token[0] || cmdcmp(token, "list", 1)) {
        gettok(prsestd);
        if (token[0]) return error(198);
        c_outlev = 1;
        for (const SysDir& s : sysdirs) spoutf("%9s:  %s\n", s.word, s.dir);
        return 0;
    }
    if (!cmdcmp(token, "set", 3)) return error(198);
    gettok(prsestd);
    SysDir* s = token[0] && !tokisstr(token) ? findsysdir(token) : nullptr;
    if (!s) {
        return errorf(198, "%s invalid sysdir name\n", tokisstr(token) ? token + 1 : token);
    }
    char dir[FNLEN];
    if (int rc = gettokfn(dir, sizeof dir)) return error(rc);
    gettok(prsestd);
    if (token[0]) return error(198);
    std::string d = dir;
    if (d.back() != '/') d += '/';
    if (d.size() > 116) {
        return errtext(198, "directory name too long\n");
    }
    snprintf(s->dir, s->size, "%s", d.c_str());
    return 0;
}

int set_adosize() {
    gettok(prsenum);
    double v;
    if (!token[0] || tokisstr(token) || cnvstoz(token, &v) || v != static_cast<int>(v))
        return error(198);
    gettok(prsestd);
    if (token[0]) return error(198);
    if (int rc = chkrange("adosize", static_cast<int>(v), 10, 10000)) return rc;
    adosize = static_cast<int32_t>(v);
    pgm_evict(0);
    return 0;
}

// `: sysdir NAME'
static int sysdir_fcn(const char*, char* dst) {
    gettok(prsestd);
    if (!token[0]) return error(198);
    std::string w = tokisstr(token) ? token + 1 : token;
    snprintf(dst, macrolen, "%s", mapdirname(w.c_str()));
    return 0;
}

static int loading() {
    return autoload_level > 0;
}

static int32_t adosize_value() {
    return adosize;
}

int numlist_hook(const char* text, double* values, int n, int flags, int* count);

// Links the program side into the hooks of the kernel and the data area.
void link_programs() {
    mac_fcn_hooks[MXF_SYSDIR] = sysdir_fcn;
    dahooks.adosize = adosize_value;
    znumlist_hook = numlist_hook;
    frame_hooks.autoloading = loading;
}

} // namespace korvu
