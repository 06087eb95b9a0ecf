// `lumo describe`, `lumo memory`, `lumo rename` and the matrix side of
// `lumo drop` and `lumo clear`.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "lumo/objects/mobj.h"
#include "output/spout.h"
#include "results/stores.h"

namespace korvu {

static void out(const char* s) {
    const uint8_t lev = c_outlev;
    c_outlev = 0;
    spoutnoptl(s);
    c_outlev = lev;
}

static const char* orgof(const MObj* o) {
    if (o->rows == 1 && o->cols == 1) return "scalar";
    if (o->rows == 1) return "rowvector";
    if (o->cols == 1) return "colvector";
    return "matrix";
}

static bool matches(const char* name, const char* pat) {
    if (!*pat) return true;
    if (*pat == '*') return matches(name, pat + 1) || (*name && matches(name + 1, pat));
    return *name == *pat && matches(name + 1, pat + 1);
}

// lumo describe [pattern]: the matrices of the interactive level, then the
// functions, with their bytes.
int lumo_describe(const char* args) {
    std::string pat = args;
    while (!pat.empty() && pat.back() == ' ') pat.pop_back();
    if (pat.empty()) pat = "*";
    char buf[200];
    out("\n      # bytes   type                        name and extent\n");
    out("-------------------------------------------------------------------------------\n");
    std::vector<MObj*> mats;
    for (MObj* o = mo_nextmat(nullptr); o; o = mo_nextmat(o))
        if (matches(o->name, pat.c_str())) mats.push_back(o);
    std::sort(mats.begin(), mats.end(),
              [](const MObj* x, const MObj* y) { return strcmp(x->name, y->name) < 0; });
    for (MObj* o : mats) {
        std::string t = std::string(m_eltname(o)) + " " + orgof(o);
        snprintf(buf, sizeof buf, "%13lld   %-27s %s[%d,%d]\n",
                 static_cast<long long>(m_objsize(o)), t.c_str(), o->name, o->rows, o->cols);
        out(buf);
    }
    std::vector<const LumoFcn*> fcns;
    for (void* it = dmnext(nullptr, nullptr, DM_LUMOFCN, nullptr); it;
         it = dmnext(it, nullptr, DM_LUMOFCN, nullptr)) {
        const auto* f = static_cast<const LumoFcn*>(it);
        const char* nm = dmname(f);
        if (!strcmp(nm, mwrd_istmt) || f->replaced || !matches(nm, pat.c_str())) continue;
        fcns.push_back(f);
    }
    std::sort(fcns.begin(), fcns.end(),
              [](const LumoFcn* x, const LumoFcn* y) { return strcmp(dmname(x), dmname(y)) < 0; });
    for (const LumoFcn* f : fcns) {
        const char* nm = dmname(f);
        snprintf(buf, sizeof buf, "%13lld   %-27s %s()\n",
                 static_cast<long long>(4 * static_cast<int64_t>(f->nwords)), "function", nm);
        out(buf);
    }
    out("-------------------------------------------------------------------------------\n");
    return 0;
}

// lumo memory: counts and bytes, also left in r().
int lumo_memory(const char*) {
    int64_t nmat = 0, bmat = 0, nfcn = 0, bfcn = 0;
    for (MObj* o = mo_nextmat(nullptr); o; o = mo_nextmat(o)) nmat++, bmat += m_objsize(o);
    for (void* it = dmnext(nullptr, nullptr, DM_LUMOFCN, nullptr); it;
         it = dmnext(it, nullptr, DM_LUMOFCN, nullptr)) {
        const auto* f = static_cast<const LumoFcn*>(it);
        if (!strcmp(dmname(f), mwrd_istmt)) continue;
        nfcn++;
        bfcn += 4 * static_cast<int64_t>(f->nwords);
    }
    int cellcap, cells, hdrcap, hdrs;
    mo_rpt(&cellcap, &cells, &hdrcap, &hdrs);
    char buf[200];
    out("\n                        #         bytes\n");
    out("------------------------------------------\n");
    snprintf(buf, sizeof buf, "%-18s %7lld %13lld\n", "matrices", static_cast<long long>(nmat),
             static_cast<long long>(bmat));
    out(buf);
    snprintf(buf, sizeof buf, "%-18s %7lld %13lld\n", "functions", static_cast<long long>(nfcn),
             static_cast<long long>(bfcn));
    out(buf);
    snprintf(buf, sizeof buf, "%-18s %7lld\n", "objects in use",
             static_cast<long long>(mo_counts.live));
    out(buf);
    snprintf(buf, sizeof buf, "%-18s %7d of %d\n", "headers pooled", hdrs, hdrcap);
    out(buf);
    snprintf(buf, sizeof buf, "%-18s %7d of %d\n", "cells free", cells, cellcap);
    out(buf);
    out("------------------------------------------\n");
    retval_clear();
    retval_set_scalar("mat_n", static_cast<double>(nmat));
    retval_set_scalar("mat_bytes", static_cast<double>(bmat));
    retval_set_scalar("fcn_n", static_cast<double>(nfcn));
    retval_set_scalar("fcn_bytes", static_cast<double>(bfcn));
    retval_set_scalar("live", static_cast<double>(mo_counts.live));
    return 0;
}

static bool validname(const std::string& s) {
    if (s.empty() || s.size() > 32 || !(isalpha(static_cast<unsigned char>(s[0])) || s[0] == '_'))
        return false;
    for (char c : s)
        if (!isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

// lumo rename old new, or old() new() for a function.
int lumo_rename(const char* args) {
    char a[80] = "", b[80] = "";
    if (sscanf(args, "%79s %79s", a, b) != 2)
        return errtext(198, "lumo rename: two names required\n");
    std::string from = a, to = b;
    const bool fcn = from.size() > 2 && !from.compare(from.size() - 2, 2, "()");
    if (fcn) {
        if (to.size() < 3 || to.compare(to.size() - 2, 2, "()"))
            return errorf(198, "%s invalid\n", b);
        from.resize(from.size() - 2);
        to.resize(to.size() - 2);
        if (!validname(to)) return errorf(198, "%s() invalid name\n", to.c_str());
        void* f = dmfind0(from.c_str(), DM_LUMOFCN);
        if (!f) return errorf(111, "%s() not found\n", from.c_str());
        if (dmfind0(to.c_str(), DM_LUMOFCN))
            return errorf(110, "%s() already exists\n", to.c_str());
        dmrename(f, to.c_str());
        return 0;
    }
    if (!validname(to)) return errorf(198, "%s invalid name\n", to.c_str());
    MObj* o = findlvl0mat(from.c_str());
    if (!o) return errorf(111, "%s not found\n", from.c_str());
    if (findlvl0mat(to.c_str())) return errorf(110, "%s already exists\n", to.c_str());
    dmrename(o, to.c_str());
    snprintf(o->name, sizeof o->name, "%s", to.c_str());
    return 0;
}

} // namespace korvu
