// Autoload of functions: object files (name.lo) along the ado path, and the
// libraries: llumo followed by each element of the library path, then the
// libraries of the index. `set lumolofirst on` puts object files first.
#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/program/program.h"
#include "lumo/front/cc.h"
#include "lumo/io/lumofile.h"
#include "output/spout.h"
#include "results/settings.h"

namespace korvu {

std::string m_llibindex;
static bool indexbuilt = false;

static std::vector<std::string> splitlist(const std::string& s, const char* seps) {
    std::vector<std::string> out;
    std::string cur;
    for (char ch : s) {
        if (strchr(seps, ch)) {
            if (!cur.empty()) out.push_back(cur);
            cur.clear();
        } else {
            cur += ch;
        }
    }
    if (!cur.empty()) out.push_back(cur);
    return out;
}

static void note(const std::string& text) {
    const uint8_t lev = c_outlev;
    c_outlev = 1;
    spout21(text.c_str());
    c_outlev = lev;
}

// "9.2", "10.15", "9.3": the version word of compiled code as text.
static std::string vertext(uint32_t v) {
    char buf[32];
    snprintf(buf, sizeof buf, "%u.%02u", v / 100, v % 100);
    std::string s = buf;
    if (s.back() == '0') s.pop_back();
    return s;
}

// Loads `name` from the open library; null after a note when it cannot.
static LumoFcn* loadfrom(LlibCtx* c, const char* name, uint32_t off) {
    LlibMember m;
    const int r = llib_load1(c, off, &m);
    const std::string where = std::string(name) + "() in " + c->path;
    if (r == 1 || r == 2) {
        note(where + (r == 1 ? " from a older version of Korvu\n"
                             : " from a more recent version of Korvu\n"));
        return nullptr;
    }
    if (r) {
        note(where + ":  library corrupt\n");
        return nullptr;
    }
    uint32_t ver = 0;
    if (fseek(c->fp, static_cast<long>(off) + LLIB_MEMBERHDR + 4, SEEK_SET) == 0 &&
        fread(&ver, 4, 1, c->fp) == 1 && ver > static_cast<uint32_t>(KORVU_VERSION)) {
        note(where + ", compiled by Korvu " + vertext(ver) +
             ", cannot be loaded:  it needs that version or later\n");
        return nullptr;
    }
    LumoFcn* f = nullptr;
    const int rc = llib_load2(c, off, &m, name, &f);
    if (rc) {
        note(where + (rc == 3900 ? ":  insufficient memory\n" : ":  library corrupt\n"));
        return nullptr;
    }
    return f;
}

// Object file: 1 and the path when name.lo is on the ado path.
static bool findlo(const char* name, std::string* path) {
    char buf[4096];
    if (!srchado(name, "lo", 1, buf, sizeof buf)) return false;
    *path = buf;
    return true;
}

// Libraries in the order searched, as names without ".llib".
static std::vector<std::string> libraries() {
    std::vector<std::string> libs;
    for (const std::string& e : splitlist(m_libpath, ";")) libs.push_back("llumo" + e);
    std::string extra = kset.lumolibs;
    if (extra.empty()) {
        if (!indexbuilt) m_llibreindex();
        extra = m_llibindex;
    }
    for (const std::string& e : splitlist(extra, " ;"))
        if (std::find(libs.begin(), libs.end(), e) == libs.end()) libs.push_back(e);
    return libs;
}

// Where the name is: 2 and the object file, 3 and the library, else 0.
static int locate(const char* name, std::string* path) {
    const bool lofirst = kset.lumolofirst != 0;
    for (int pass = 0; pass < 2; pass++) {
        const bool lo = (pass == 0) == lofirst;
        if (lo) {
            if (findlo(name, path)) {
                LlibCtx* c = new LlibCtx;
                const bool in =
                    !llib_init(c, path->c_str(), false, false, true) && llib_search(c, name) != 0;
                llib_close(c);
                delete c;
                if (in) return 2;
            }
            continue;
        }
        for (const std::string& lib : libraries()) {
            LlibCtx* c = new LlibCtx;
            const bool in = !llib_init(c, lib.c_str(), false, true, true) && llib_search(c, name);
            if (in) *path = c->path;
            llib_close(c);
            delete c;
            if (in) return 3;
        }
    }
    return 0;
}

LumoFcn* m_autoload(const char* name) {
    std::string path;
    if (!locate(name, &path)) return nullptr;
    LlibCtx* c = new LlibCtx;
    LumoFcn* f = nullptr;
    if (!llib_init(c, path.c_str(), false, false, true))
        f = loadfrom(c, name, llib_search(c, name));
    llib_close(c);
    delete c;
    return f;
}

std::string m_autosearch(const char* name, int* kind) {
    std::string path;
    if (m_findbuiltin(name)) {
        *kind = 4;
        return "";
    }
    if (LumoFcn* f = m_findfcn(name); f && !f->replaced) {
        *kind = 1;
        return "";
    }
    *kind = locate(name, &path);
    return path;
}

// Names of the libraries (without ".llib") in the directories of the ado
// path, sorted, the system's own left out (they are searched by the path).
static std::string scanlibs() {
    std::vector<std::string> names;
    const char* s = macptr("S_ADO");
    for (const std::string& elem : splitlist(s ? s : "", ";")) {
        std::string e = elem;
        while (!e.empty() && e.front() == ' ') e.erase(0, 1);
        while (!e.empty() && e.back() == ' ') e.pop_back();
        if (e.size() > 1 && e.front() == '"' && e.back() == '"') e = e.substr(1, e.size() - 2);
        if (e.empty()) continue;
        std::string dir = mapdirname(e.c_str());
        for (const std::string& d : {dir, dir + "l/"}) {
            DIR* dp = opendir(d.empty() ? "." : d.c_str());
            if (!dp) continue;
            while (dirent* de = readdir(dp)) {
                std::string f = de->d_name;
                if (f.size() <= 5 || f.compare(f.size() - 5, 5, ".llib")) continue;
                f.resize(f.size() - 5);
                if (!llib_validname(f.c_str()) || llibofficial(f.c_str())) continue;
                if (std::find(names.begin(), names.end(), f) == names.end()) names.push_back(f);
            }
            closedir(dp);
        }
    }
    std::sort(names.begin(), names.end());
    std::string out;
    for (const std::string& n : names) out += (out.empty() ? "" : " ") + n;
    return out;
}

void m_llibreindex() {
    m_llibindex = scanlibs();
    indexbuilt = true;
}

} // namespace korvu
