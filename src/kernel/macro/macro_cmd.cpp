// The macro commands: local, global, c_local, the local forms of return,
// ereturn and sreturn, macro and its subcommands, tempvar, tempname, tempfile.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/macro/macro_deps.h"
#include "kernel/macro/macro_internal.h"
#include "output/spout.h"

namespace korvu {

namespace {

int badname(const char* name) {
    return errorf(198, "%s invalid name\n", name);
}

// The raw text after the name, trimmed, with one enclosing pair of simple or
// compound quotes removed. 198 for an opening quote without its close.
int rawvalue(const char* p, std::string& out) {
    while (*p == ' ') ++p;
    size_t n = std::strlen(p);
    while (n && p[n - 1] == ' ') --n;
    if (n >= 2 && p[0] == '`' && p[1] == '"') {
        if (n < 4 || p[n - 2] != '"' || p[n - 1] != '\'') return error(198);
        out.assign(p + 2, n - 4);
    } else if (n && p[0] == '"') {
        if (n < 2 || p[n - 1] != '"') return error(198);
        out.assign(p + 1, n - 2);
    } else {
        out.assign(p, n);
    }
    if (out.size() > static_cast<size_t>(macrolen - 1))
        out.resize(static_cast<size_t>(macrolen - 1));
    return 0;
}

int store(int kind, const char* name, const char* text) {
    switch (kind) {
    case 7: return macresave_c(name, text);
    case 4: return macresave_type(name, typelmac + 128, text);
    case 5: return macresave_type(name, DM_EMACRO, text);
    case 6: return macresave_type(name, DM_SMACRO, text);
    default: return macresave(name, text);
    }
}

} // namespace

int macgen(int kind) {
    char* t = gettok(prsestd);
    if (!t[0]) return error(198);
    if (t[0] == '+' || t[0] == '-') {
        char op[2] = {t[0], 0};
        t = gettok(prsestd);
        if (kind != 1 || t[0] != op[0] || t[1]) return error(198);
        t = gettok(prsestd);
        if (!t[0] || tokisstr(t)) return error(198);
        if (int rc = chklmname(t)) return rc;
        std::string name = "_" + std::string(t);
        if (chkmacname(name.c_str())) return badname(t);
        if (gettok(prsestd)[0]) return error(198);
        return macincr(name.c_str(), op, nullptr, 0);
    }
    if (tokisstr(t)) return error(198);
    std::string name;
    if (kind == 1 || kind == 7) {
        if (int rc = chklmname(t)) return rc;
        name = "_" + std::string(t);
    } else {
        if (kind != 4 && kind != 5 && kind != 6 && t[0] == '_') return error(198);
        name = t;
    }
    if (chkmacname(name.c_str())) return badname(t);

    char* p = wheretok();
    while (*p == ' ') ++p;
    if (!*p) return store(kind, name.c_str(), "");
    // one scratch kept across calls: a loop of `local` commands allocates nothing
    static std::vector<char> buf;
    if (buf.size() < static_cast<size_t>(macrolen) + 1)
        buf.resize(static_cast<size_t>(macrolen) + 1);
    buf[0] = 0;
    if (p[0] == '=' && p[1] != '=') {
        gettok(prsestd);
        if (!mac_hooks.expvalue) return mac_notyet("expressions (=exp)");
        int rc = mac_hooks.expvalue(wheretok(), buf.data(), buf.size());
        if (rc) return rc;
        // A number's text is its first word.
        char* b = buf.data();
        while (*b == ' ') ++b;
        std::string v(b);
        return store(kind, name.c_str(), v.c_str());
    }
    if (p[0] == ':') {
        gettok(prsestd);
        int rc = macexfcn(buf.data());
        if (rc) return rc;
        return store(kind, name.c_str(), buf.data());
    }
    std::string v;
    if (int rc = rawvalue(p, v)) return rc;
    return store(kind, name.c_str(), v.c_str());
}

// --- macro dir, list, drop, shift -------------------------------------------

namespace {

std::vector<std::string> blankwords(const char* p) {
    std::vector<std::string> w;
    while (*p) {
        while (*p == ' ') ++p;
        const char* q = p;
        while (*q && *q != ' ') ++q;
        if (q > p) w.emplace_back(p, static_cast<size_t>(q - p));
        p = q;
    }
    return w;
}

void showone(const char* name, const char* value) {
    c_outlev = 1;
    spoutptl("{p 0 16}\n");
    spout21(name);
    size_t n = std::strlen(name);
    if (n >= 15) {
        spoutptl(":{break}\n");
    } else {
        char pad[32];
        std::snprintf(pad, sizeof pad, ":{space %d}", static_cast<int>(16 - n - 1));
        spoutptl(pad);
    }
    c_outlev = 0;
    spout21(value);
    c_outlev = 1;
    spoutptl("{p_end}\n");
}

int macdir() {
    std::vector<std::string> names = blankwords(wheretok());
    uint8_t was = c_outlev;
    if (names.empty() || (names.size() == 1 && names[0] == "_all")) {
        char name[dm_namelen + 1];
        for (void* v = macnext(nullptr, name); v; v = macnext(v, name)) {
            showone(name, static_cast<char*>(v));
            if (kvpollstd()) break;
        }
    } else {
        for (auto& n : names)
            if (!macptr(n.c_str())) return macnotfound(n.c_str());
        for (auto& n : names) showone(n.c_str(), macptr(n.c_str()));
    }
    c_outlev = was;
    return stopflag ? 1 : 0;
}

const char* const sysmacs[] = {"S_ADO",     "S_FLAVOR",  "S_OS",     "S_OSDTL", "S_MACH",
                               "S_level",   "S_MODE",    "S_KTB",    "S_SHELL", "S_XSHELL",
                               "S_XSHELL2", "S_CONSOLE", "S_KorvuXE"};

bool issysmac(const char* name) {
    for (const char* s : sysmacs)
        if (!std::strcmp(s, name)) return true;
    return false;
}

int macdrop() {
    std::vector<std::string> words = blankwords(wheretok());
    if (words.empty()) return error(198);
    for (auto& w : words) {
        bool all = w == "_all";
        bool wild = !all && w.back() == '*';
        if (!all && !wild) {
            macerase(w.c_str());
            continue;
        }
        std::string prefix = wild ? w.substr(0, w.size() - 1) : std::string();
        std::vector<void*> doomed;
        char name[dm_namelen + 1];
        for (void* v = macnext(nullptr, name); v; v = macnext(v, name)) {
            if (all ? !std::strncmp(name, "S_", 2) != 0 : issysmac(name)) continue;
            if (!all && std::strncmp(name, prefix.c_str(), prefix.size())) continue;
            doomed.push_back(v);
        }
        for (void* v : doomed) dmrm(v);
    }
    return 0;
}

int macshift() {
    char* t = gettok(prsenum);
    long count = 1;
    if (t[0]) {
        char* end;
        count = std::strtol(t, &end, 10);
        if (*end || count < 0 || gettok(prsestd)[0]) return error(198);
    }
    char key[16];
    for (long k = 0; k < count; ++k) {
        macerase("_1");
        for (int i = 2;; ++i) {
            std::snprintf(key, sizeof key, "_%d", i);
            void* v = macptr(key);
            if (!v) break;
            std::snprintf(key, sizeof key, "_%d", i - 1);
            dmrename(v, key);
        }
        if (kvpollstd()) return 1;
    }
    return 0;
}

} // namespace

int macro(int) {
    char* t = gettok(prsestd);
    if (cmdcmp(t, "define", 2)) return macgen(0);
    if (cmdcmp(t, "dir", 2) || cmdcmp(t, "list", 1)) return macdir();
    if (cmdcmp(t, "drop", 4)) return macdrop();
    if (cmdcmp(t, "shift", 1)) return macshift();
    return error(198);
}

// --- temporary names --------------------------------------------------------

int tmpvcmd(int isvar) {
    int n = 0;
    for (char* t = gettok(prsestd); t[0]; t = gettok(prsestd), ++n) {
        if (tokisstr(t)) return error(198);
        if (int rc = chklmname(t)) return rc;
        std::string name = "_" + std::string(t);
        if (chkmacname(name.c_str())) return badname(t);
        char val[FNLEN];
        if (isvar)
            mktmpvn(val);
        else if (mktmpfn(val, sizeof val))
            return error(914);
        if (int rc = macresave(name.c_str(), val)) return rc;
    }
    return n ? 0 : error(198);
}

} // namespace korvu
