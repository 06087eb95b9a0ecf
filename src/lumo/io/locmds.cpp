// The `lumo` subcommands of files: mosave, llib, which, matsave, matuse and
// matdescribe. Files are written under a temporary name and renamed when
// complete, so a failure leaves the user's file as it was.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/program/program.h"
#include "lumo/front/cc.h"
#include "lumo/io/lumofile.h"
#include "output/spout.h"
#include "results/settings.h"

namespace korvu {

static void out(const std::string& s) {
    const uint8_t lev = c_outlev;
    c_outlev = 0;
    spoutnoptl(s.c_str());
    c_outlev = lev;
}

static bool exists(const std::string& p) {
    struct stat st;
    return stat(p.c_str(), &st) == 0;
}

static std::string trim(std::string s) {
    while (!s.empty() && isspace(static_cast<unsigned char>(s.front()))) s.erase(0, 1);
    while (!s.empty() && isspace(static_cast<unsigned char>(s.back()))) s.pop_back();
    return s;
}

// The text before the comma and the options behind it: words, some with a
// parenthesised argument.
struct Opts {
    std::string lhs;
    std::vector<std::pair<std::string, std::string>> opts;
    bool bad = false;
    bool has(const char* w) const {
        for (auto& o : opts)
            if (o.first == w) return true;
        return false;
    }
    std::string arg(const char* w) const {
        for (auto& o : opts)
            if (o.first == w) return o.second;
        return "";
    }
};

static Opts parseopts(const char* args, std::initializer_list<const char*> allowed) {
    Opts r;
    std::string s = args;
    int depth = 0;
    size_t comma = std::string::npos;
    for (size_t i = 0; i < s.size(); i++) {
        if (s[i] == '(') depth++;
        if (s[i] == ')') depth--;
        if (s[i] == ',' && depth == 0) {
            comma = i;
            break;
        }
    }
    r.lhs = trim(s.substr(0, comma));
    if (comma == std::string::npos) return r;
    std::string o = s.substr(comma + 1);
    size_t i = 0;
    while (i < o.size()) {
        while (i < o.size() && isspace(static_cast<unsigned char>(o[i]))) i++;
        if (i >= o.size()) break;
        std::string w;
        while (i < o.size() && (isalnum(static_cast<unsigned char>(o[i])) || o[i] == '_'))
            w += o[i++];
        std::string a;
        if (i < o.size() && o[i] == '(') {
            int d = 1;
            i++;
            while (i < o.size() && d) {
                if (o[i] == '(') d++;
                if (o[i] == ')' && --d == 0) break;
                a += o[i++];
            }
            if (d) {
                r.bad = true;
                return r;
            }
            i++;
        }
        bool ok = !w.empty();
        if (ok)
            ok = std::find_if(allowed.begin(), allowed.end(),
                              [&](const char* x) { return w == x; }) != allowed.end();
        if (!ok) {
            errorf(198, "option %s not allowed\n", w.empty() ? o.substr(i, 1).c_str() : w.c_str());
            r.bad = true;
            return r;
        }
        a = trim(a);
        if (a.size() >= 2 && a.front() == '"' && a.back() == '"') a = a.substr(1, a.size() - 2);
        r.opts.push_back({w, a});
    }
    return r;
}

static std::string dirof(const Opts& o, int* rc) {
    *rc = 0;
    if (!o.has("dir")) return "";
    std::string d = o.arg("dir");
    if (d.size() > 499) {
        *rc = errtext(198, "dir() too long\n");
        return "";
    }
    return mapdirname(d.c_str());
}

static std::string tmpname(const std::string& path) {
    char buf[64];
    snprintf(buf, sizeof buf, ".tmp%ld", static_cast<long>(getpid()));
    return path + buf;
}

static bool matches(const char* name, const char* pat) {
    if (!*pat) return !*name;
    if (*pat == '*') return matches(name, pat + 1) || (*name && matches(name + 1, pat));
    if (*pat == '?') return *name && matches(name + 1, pat + 1);
    return *name == *pat && matches(name + 1, pat + 1);
}

// Names of "f()" words, wildcards expanded against the functions in memory.
static int fcnlist(const std::string& text, std::vector<std::string>* names) {
    std::string w;
    for (size_t i = 0; i <= text.size(); i++) {
        if (i < text.size() && !isspace(static_cast<unsigned char>(text[i]))) {
            w += text[i];
            continue;
        }
        if (w.empty()) continue;
        if (w.size() < 3 || w.compare(w.size() - 2, 2, "()"))
            return errorf(198, "%s:  only functions may be written in libraries\n", w.c_str());
        const std::string n = w.substr(0, w.size() - 2);
        if (n.find_first_of("*?") != std::string::npos) {
            std::vector<std::string> got;
            for (void* it = dmnext(nullptr, nullptr, DM_LUMOFCN, nullptr); it;
                 it = dmnext(it, nullptr, DM_LUMOFCN, nullptr)) {
                const auto* f = static_cast<const LumoFcn*>(it);
                if (!f->replaced && strcmp(dmname(it), mwrd_istmt) &&
                    matches(dmname(it), n.c_str()))
                    got.push_back(dmname(it));
            }
            std::sort(got.begin(), got.end());
            for (auto& g : got)
                if (std::find(names->begin(), names->end(), g) == names->end()) names->push_back(g);
        } else {
            LumoFcn* f = m_findfcn(n.c_str());
            if (!f || f->replaced) {
                if (m_findstruct(n.c_str()))
                    return errorf(198, "%s:  only functions may be written in libraries\n",
                                  n.c_str());
                return errorf(111, "%s() not found\n", n.c_str());
            }
            if (std::find(names->begin(), names->end(), n) == names->end()) names->push_back(n);
        }
        w.clear();
    }
    return 0;
}

// Writes the functions into a new file at `path` (through a temporary).
static int writenew(const std::string& path, bool objfile, const std::vector<std::string>& fns,
                    const std::string& copyfrom) {
    const std::string tmp = tmpname(path);
    int rc = 0;
    if (copyfrom.empty()) {
        rc = llib_create(tmp.c_str(), objfile);
    } else {
        FILE* in = fopen(copyfrom.c_str(), "rb");
        FILE* o = in ? fopen(tmp.c_str(), "wb") : nullptr;
        if (!in) return fierr(603, copyfrom.c_str());
        if (!o) {
            fclose(in);
            return fierr(603, tmp.c_str());
        }
        char buf[65536];
        size_t n;
        bool ok = true;
        while ((n = fread(buf, 1, sizeof buf, in)) > 0)
            if (fwrite(buf, 1, n, o) != n) ok = false;
        fclose(in);
        if (fclose(o) || !ok) rc = errtext(693, "could not write into library\n");
    }
    if (rc) {
        remove(tmp.c_str());
        return rc;
    }
    LlibCtx* c = new LlibCtx;
    rc = llib_init(c, tmp.c_str(), true, false, false);
    for (size_t i = 0; !rc && i < fns.size(); i++)
        rc = llib_add(c, m_findfcn(fns[i].c_str()), fns[i].c_str());
    llib_close(c);
    delete c;
    if (!rc && rename(tmp.c_str(), path.c_str())) rc = fierr(693, path.c_str());
    if (rc) remove(tmp.c_str());
    return rc;
}

int lumo_mosave(const char* args) {
    Opts o = parseopts(args, {"dir", "replace"});
    if (o.bad) return 198;
    const std::string& w = o.lhs;
    if (w.size() < 3 || w.compare(w.size() - 2, 2, "()") ||
        w.find_first_of(" \t*?") != std::string::npos)
        return errtext(198, "lumo mosave:  name() expected\n");
    const std::string name = w.substr(0, w.size() - 2);
    LumoFcn* f = m_findfcn(name.c_str());
    if (!f || f->replaced) return errorf(111, "%s() not found\n", name.c_str());
    int rc;
    const std::string dir = dirof(o, &rc);
    if (rc) return rc;
    const std::string path = dir + name + ".lo";
    const bool was = exists(path);
    if (was && !o.has("replace")) return fierr(602, path.c_str());
    if (!was && o.has("replace")) fierr(698, path.c_str());
    rc = writenew(path, true, {name}, "");
    if (!rc) fierr(697, path.c_str());
    return rc;
}

// "lname" or "lname.llib": the name without the suffix, checked.
static int libname(std::string s, std::string* name) {
    s = trim(s);
    if (s.size() > 5 && !s.compare(s.size() - 5, 5, ".llib")) s.resize(s.size() - 5);
    if (s.empty() || s[0] != 'l')
        return errtext(198, "library names must start with letter lowercase l\n");
    if (!llib_validname(s.c_str()))
        return errorf(198, "%s invalid .llib library name;\n", s.c_str());
    *name = s;
    return 0;
}

// The file of an existing library: dir(), then the current directory, then
// the ado path.
static int libfile(const std::string& name, const std::string& dir, std::string* path) {
    std::string p = dir + name + ".llib";
    if (exists(p)) {
        *path = p;
        return 0;
    }
    char buf[4096];
    if (dir.empty() && srchado(name.c_str(), "llib", 1, buf, sizeof buf)) {
        *path = buf;
        return 0;
    }
    return errorf(601, "%s.llib not found\n", name.c_str());
}

// The declared return type of a member as words ("real scalar").
static std::string typewords(int el, int org) {
    static const char* const els[] = {"transmorphic", "real",    "string", "complex",
                                      "numeric",      "pointer", "struct"};
    static const char* const orgs[] = {"matrix",    "scalar",    "vector",
                                       "rowvector", "colvector", "void"};
    if (org == OT_VOID) return "void";
    std::string s = el >= 0 && el <= ET_STRUCT ? els[el] : "?";
    if (org >= 0 && org < OT_VOID) s += std::string(" ") + orgs[org];
    return s;
}

static int llib_describe(const std::string& path) {
    LlibCtx* c = new LlibCtx;
    int rc = llib_init(c, path.c_str(), false, false, false);
    if (!rc) {
        char buf[200];
        snprintf(buf, sizeof buf, "  (library contains %d member%s)\n\n", c->n,
                 c->n == 1 ? "" : "s");
        out(buf);
        for (int i = 0; i < c->n; i++) {
            LlibMember m{};
            const int r = llib_load1(c, llib_search(c, c->names[i]), &m);
            std::string line = "    ";
            if (r == 0) line += typewords(m.eltype, m.orgtype) + " ";
            line += std::string(c->names[i]) + "()";
            if (r == 1 || r == 2) line += r == 1 ? "  (older format)" : "  (newer format)";
            if (r == 5) line += "  (corrupt)";
            out(line + "\n");
        }
    }
    llib_close(c);
    delete c;
    return rc;
}

int lumo_llib(const char* args) {
    std::string s = trim(args);
    std::string sub;
    size_t i = 0;
    while (i < s.size() && !isspace(static_cast<unsigned char>(s[i])) && s[i] != ',') sub += s[i++];
    const std::string rest = s.substr(i);
    if (sub == "create") {
        Opts o = parseopts(rest.c_str(), {"dir", "replace"});
        if (o.bad) return 198;
        std::string name;
        if (int rc = libname(o.lhs, &name)) return rc;
        int rc;
        const std::string dir = dirof(o, &rc);
        if (rc) return rc;
        const std::string path = dir + name + ".llib";
        const bool was = exists(path);
        if (was && !o.has("replace")) return fierr(602, path.c_str());
        if (!was && o.has("replace")) fierr(698, path.c_str());
        rc = writenew(path, false, {}, "");
        if (!rc) out("(file " + path + " created)\n");
        return rc;
    }
    if (sub == "add") {
        Opts o = parseopts(rest.c_str(), {"library", "dir"});
        if (o.bad) return 198;
        if (!o.has("library")) return errtext(198, "option library() required\n");
        std::string name, path;
        if (int rc = libname(o.arg("library"), &name)) return rc;
        int rc;
        const std::string dir = dirof(o, &rc);
        if (rc) return rc;
        if ((rc = libfile(name, dir, &path))) return rc;
        std::vector<std::string> fns;
        if ((rc = fcnlist(o.lhs, &fns))) return rc;
        if (fns.empty()) return errtext(198, "nothing to add\n");
        // check everything before the file changes
        LlibCtx* c = new LlibCtx;
        rc = llib_init(c, path.c_str(), false, false, false);
        for (size_t k = 0; !rc && k < fns.size(); k++)
            if (llib_search(c, fns[k].c_str()))
                rc = errorf(602, "%s() already in library\n", fns[k].c_str());
        if (!rc && c->n + static_cast<int>(fns.size()) > c->cap)
            rc = errorf(610, "%s full; it holds at most %d members\n", path.c_str(), c->cap);
        llib_close(c);
        delete c;
        if (rc) return rc;
        rc = writenew(path, false, fns, path);
        if (!rc) {
            char buf[100];
            snprintf(buf, sizeof buf, "(%d function%s added)\n", static_cast<int>(fns.size()),
                     fns.size() == 1 ? "" : "s");
            out(buf);
        }
        return rc;
    }
    if (sub == "index") {
        if (!trim(rest).empty()) return error(198);
        m_llibreindex();
        out("(library search order:");
        std::string all;
        for (const char* p = m_libpath.c_str();;) {
            const char* q = strchr(p, ';');
            std::string e = q ? std::string(p, q) : std::string(p);
            if (!e.empty()) all += " llumo" + e;
            if (!q) break;
            p = q + 1;
        }
        out(all + (m_llibindex.empty() ? "" : " " + m_llibindex) + ")\n");
        return 0;
    }
    if (sub == "query") {
        if (!trim(rest).empty()) return error(198);
        out("  library path:   " + m_libpath + "\n");
        out(std::string("  lumolofirst:    ") + (kset.lumolofirst ? "on" : "off") + "\n");
        out(std::string("  lumolibs:       ") + kset.lumolibs + "\n");
        out("  index:          " + m_llibindex + "\n");
        return 0;
    }
    if (sub == "describe") {
        Opts o = parseopts(rest.c_str(), {"dir"});
        if (o.bad) return 198;
        std::string name, path;
        if (int rc = libname(o.lhs, &name)) return rc;
        int rc;
        const std::string dir = dirof(o, &rc);
        if (rc) return rc;
        if ((rc = libfile(name, dir, &path))) return rc;
        return llib_describe(path);
    }
    return errorf(198, "%s:  invalid llib subcommand\n", sub.c_str());
}

int lumo_which(const char* args) {
    std::string w = trim(args);
    if (w.size() > 2 && !w.compare(w.size() - 2, 2, "()")) w.resize(w.size() - 2);
    if (w.empty() || w.find_first_of(" \t(),") != std::string::npos)
        return errtext(198, "lumo which:  name() expected\n");
    int kind = 0;
    const std::string where = m_autosearch(w.c_str(), &kind);
    switch (kind) {
    case 4: out("  " + w + "():  built-in\n"); return 0;
    case 1: out("  " + w + "():  in memory\n"); return 0;
    case 2: out("  " + w + "():  " + where + "\n"); return 0;
    case 3: out("  " + w + "():  lumo library " + where + "\n"); return 0;
    }
    return errorf(111, "%s() not found\n", w.c_str());
}

// --- matrices in files -----------------------------------------------------------

static std::string matfile(std::string f) {
    f = trim(f);
    if (f.size() >= 2 && f.front() == '"' && f.back() == '"') f = f.substr(1, f.size() - 2);
    const size_t slash = f.rfind('/');
    const size_t dot = f.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) f += ".lmat";
    return f;
}

static const char* mosaytext(int rc) {
    switch (rc) {
    case 1: return "matrix stream busy\n";
    case 2: return "type of matrix not allowed in files\n";
    case 3: return "error writing file\n";
    case 4: return "insufficient memory\n";
    case 7: return "functions may not be written as matrices\n";
    default: return "file not a matrix file or corrupt\n";
    }
}

static int mocode(int rc) {
    switch (rc) {
    case 3: return 693;
    case 4: return 3900;
    case 5: return 610;
    default: return 3300;
    }
}

// `lumo matsave filename names [, replace]`: the matrices of the interactive
// level, one stream each.
int lumo_matsave(const char* args) {
    Opts o = parseopts(args, {"replace"});
    if (o.bad) return 198;
    std::string first, names;
    {
        std::string l = o.lhs;
        size_t i = 0;
        while (i < l.size() && !isspace(static_cast<unsigned char>(l[i]))) first += l[i++];
        names = trim(l.substr(i));
    }
    if (first.empty() || names.empty())
        return errtext(198, "lumo matsave:  filename and matrix names expected\n");
    std::vector<MObj*> mats;
    std::string w;
    for (size_t i = 0; i <= names.size(); i++) {
        if (i < names.size() && !isspace(static_cast<unsigned char>(names[i]))) {
            w += names[i];
            continue;
        }
        if (w.empty()) continue;
        bool any = false;
        for (MObj* m = mo_nextmat(nullptr); m; m = mo_nextmat(m))
            if (matches(m->name, w.c_str())) {
                any = true;
                if (std::find(mats.begin(), mats.end(), m) == mats.end()) mats.push_back(m);
            }
        if (!any) return errorf(111, "%s not found\n", w.c_str());
        w.clear();
    }
    const std::string path = matfile(first);
    const bool was = exists(path);
    if (was && !o.has("replace")) return fierr(602, path.c_str());
    const std::string tmp = tmpname(path);
    FILE* fp = fopen(tmp.c_str(), "wb");
    if (!fp) return fierr(603, path.c_str());
    int rc = 0;
    for (MObj* m : mats)
        if ((rc = moio_write(fp, m, m->name))) break;
    if (fclose(fp) && !rc) rc = 3;
    if (!rc && rename(tmp.c_str(), path.c_str())) rc = 3;
    if (rc) {
        remove(tmp.c_str());
        return errtext(mocode(rc), mosaytext(rc));
    }
    if (!was && o.has("replace")) fierr(698, path.c_str());
    fierr(697, path.c_str());
    return 0;
}

// Reads every matrix of the file; on failure nothing is kept.
static int readall(const std::string& path, std::vector<std::pair<std::string, MObj*>>* got) {
    FILE* fp = fopen(path.c_str(), "rb");
    if (!fp) return exists(path) ? fierr(603, path.c_str()) : fierr(601, path.c_str());
    int rc = 0;
    for (;;) {
        MObj* m = nullptr;
        std::string name;
        rc = moio_read(fp, &m, &name);
        if (rc == 8) {
            rc = 0;
            break;
        }
        if (rc) break;
        mo_hold(m);
        got->push_back({name, m});
    }
    fclose(fp);
    if (rc) {
        for (auto& g : *got) mo_release(g.second);
        got->clear();
        return errtext(mocode(rc), mosaytext(rc));
    }
    return 0;
}

int lumo_matuse(const char* args) {
    Opts o = parseopts(args, {"replace"});
    if (o.bad) return 198;
    if (o.lhs.empty()) return errtext(198, "lumo matuse:  filename expected\n");
    std::vector<std::pair<std::string, MObj*>> got;
    if (int rc = readall(matfile(o.lhs), &got)) return rc;
    int rc = 0;
    for (auto& g : got) {
        if (g.first.empty() || !isalpha(static_cast<unsigned char>(g.first[0])))
            rc = errtext(610, "file not a matrix file or corrupt\n");
        else if (!o.has("replace") && findlvl0mat(g.first.c_str()))
            rc = errorf(110, "%s already defined\n", g.first.c_str());
        if (rc) break;
    }
    for (auto& g : got) {
        if (!rc) {
            lumo_dropmat(g.first.c_str());
            MObj* t = m_mkmat(g.first.c_str(), g.second->eltype, 0, 0);
            if (!t || cpymat(t, g.second, false)) {
                rc = 3900;
            } else {
                char buf[200];
                snprintf(buf, sizeof buf, "(loading %s[%d,%d])\n", g.first.c_str(), t->rows,
                         t->cols);
                out(buf);
            }
        }
        mo_release(g.second);
    }
    return rc;
}

int lumo_matdescribe(const char* args) {
    Opts o = parseopts(args, {});
    if (o.bad) return 198;
    if (o.lhs.empty()) return errtext(198, "lumo matdescribe:  filename expected\n");
    std::vector<std::pair<std::string, MObj*>> got;
    if (int rc = readall(matfile(o.lhs), &got)) return rc;
    for (auto& g : got) {
        const MObj* m = g.second;
        const char* org = m->rows == 1 && m->cols == 1 ? "scalar"
                          : m->rows == 1               ? "rowvector"
                          : m->cols == 1               ? "colvector"
                                                       : "matrix";
        char buf[200];
        snprintf(buf, sizeof buf, "  %-9s %-10s %s[%d,%d]\n", m_eltname(m), org, g.first.c_str(),
                 m->rows, m->cols);
        out(buf);
        mo_release(g.second);
    }
    return 0;
}

} // namespace korvu
