// Orders recorded in an index variable: the `sort` command itself and
// restoring an order (`sort ..., index()`, sortpreserve).
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "app/link.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/sort/bystate.h"
#include "data/sort/sort.h"
#include "data/vars/char.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/flow/dofile.h"
#include "kernel/loop/brk.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

inline constexpr int DM_SORTPRESERVE = 34;

int mkidxvar(char* buf) {
    int v = addwrkvar(KV_LONG, 0);
    if (v < 0) return v;
    copytext(buf, NAMELEN + 1, varname(v));
    int32_t* col = static_cast<int32_t*>(colbase_w(v, nullptr));
    for (int32_t i = 1; i <= nobs; i++) col[i - 1] = i;
    i_nvar = nvar;
    return v;
}

// Drops one variable by number.
static int dropvar(int v) {
    char_dropvar(varname(v));
    if (v == nvar) {
        nvar--;
        i_nvar = nvar;
        return 0;
    }
    if (int rc = markrow_open()) return rc;
    for (int k = 1; k <= nvar; k++) markrow_set(k, k == v);
    remvar();
    i_nvar = nvar;
    return 0;
}

int sysidxsort(const char* name, int report) {
    int x = sysfindvar(name);
    if (!x) return report ? varnotfound(name) : 111;
    int n = lnvar;
    bool islong = typlist[x - 1] == KV_LONG;
    auto index = [&](int32_t i) {
        if (islong) {
            int32_t r;
            std::memcpy(&r, dtaptr(x, i), 4);
            return static_cast<int64_t>(r);
        }
        double d = korvu_data(x, i);
        return d == static_cast<double>(static_cast<int64_t>(d)) ? static_cast<int64_t>(d)
                                                                 : int64_t{-1};
    };
    // already in that order?
    bool listed = true;
    for (int k = 0; k < n && listed; k++) listed = srtlist[k] == varlist_vr[k];
    if (listed && srtlist[n] == x && islong) {
        bool same = true;
        for (int32_t i = 1; i <= nobs && same; i++) same = index(i) == i;
        if (same) {
            reset_sort(n);
            return 0;
        }
    }
    // cycle following: every swap puts one observation in its place
    bool ok = true;
    for (int32_t i = 1; i <= nobs && ok; i++) {
        if (report && kvpollstd()) {
            colsync();
            return 1;
        }
        for (int64_t t = index(i); t != i; t = index(i)) {
            if (t < 1 || t > nobs || index(static_cast<int32_t>(t)) == t) {
                ok = false;
                break;
            }
            exch(i, static_cast<int32_t>(t));
        }
    }
    if (ok) {
        colsync();
        setsrtlist(n);
        return 0;
    }
    // not a permutation: a general sort with the index as the last key
    varlist_vr[n] = x;
    lnvar = n + 1;
    nobs1 = 1;
    nobs2 = nobs;
    int rc = syssort(0);
    lnvar = n;
    if (!rc) reset_sort(n);
    return rc;
}

// --- sortpreserve ---------------------------------------------------------------

static int32_t preserve_depth = 0;

int sort_preserve() {
    preserve_depth++;
    char idx[NAMELEN1];
    int v = mkidxvar(idx);
    if (v < 0) {
        preserve_depth--;
        return -v;
    }
    // on failure nothing stays behind: no index, no entry, the depth back
    auto undo = [&](int rc) {
        dropvar(v);
        preserve_depth--;
        return rc;
    };
    if (int rc = macresave("__sortindex", idx)) return undo(rc);
    std::vector<char> rec;
    for (int k = 0; srtlist[k]; k++) {
        char name[NAMELEN1] = {};
        std::snprintf(name, sizeof name, "%s", varname(srtlist[k]));
        rec.insert(rec.end(), name, name + NAMELEN1);
    }
    char last[NAMELEN1] = {};
    std::snprintf(last, sizeof last, "%s", idx);
    rec.insert(rec.end(), last, last + NAMELEN1);
    std::string key = std::to_string(preserve_depth);
    if (!dmsave(key.c_str(), DM_SORTPRESERVE, 0, rec.data(), rec.size())) return undo(950);
    return 0;
}

int sort_restore(int flag) {
    std::string key = std::to_string(preserve_depth);
    void* item = dmfind0(key.c_str(), DM_SORTPRESERVE);
    if (!item) {
        return errtext(9196, "could not restore sort index -- system header not found\n");
    }
    const char* rec = static_cast<const char*>(item);
    int nnames = static_cast<int>(dmsize(item) / NAMELEN1);
    std::string idx(rec + (nnames - 1) * NAMELEN1);
    int rc = 0;
    if (flag) {
        int n = 0;
        for (int k = 0; k + 1 < nnames && !rc; k++) {
            int v = sysfindvar(rec + k * NAMELEN1);
            if (!v) {
                rc = errtext(196, "could not restore sort order because variables were dropped\n");
            } else {
                varlist_vr[n++] = v;
            }
        }
        if (!rc) {
            lnvar = n;
            int old = setbreak(0);
            rc = sysidxsort(idx.c_str(), 0);
            setbreak(old);
        }
    }
    if (int x = sysfindvar(idx.c_str())) dropvar(x);
    dmrm(item);
    preserve_depth--;
    return rc;
}

// --- the command ------------------------------------------------------------------

int sortcmd(int) {
    vable = 1;
    ifable = 3;
    oable = 0;
    opable = 0;
    if (int rc = parse()) return rc;
    int stable = findopt("stable", 5, 0);
    char idx[200];
    findargn("index", 5, idx, sizeof idx, 1);
    if (int rc = chkopt()) return rc;
    if (idx[0]) {
        if (orange || stable || std::strlen(idx) > 32) return error(198);
        return sysidxsort(idx, 1);
    }
    return syssort(stable);
}

int set_sortseed() {
    gettok(prsestd);
    double x;
    if (!token[0] || cnvstoz(token, &x) || x != static_cast<double>(static_cast<int64_t>(x)) ||
        x < 0 || x > 2147483647.0)
        return error(198);
    gettok(prsestd);
    if (token[0]) return error(198);
    setsortseed(static_cast<uint32_t>(x));
    return 0;
}

void link_sorting() {
    syssort_hook = syssort_vars;
    frame_hooks.sort_preserve = sort_preserve;
    frame_hooks.sort_restore = sort_restore;
}

} // namespace korvu
