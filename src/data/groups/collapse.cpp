// collapse: the data replaced by statistics of groups.
//     collapse [(stat)] [newvar=]varname ... [weight] [if] [in] [, by(varlist) cw]
// String variables take first, last, firstnm, lastnm, min and max.
// Everything is computed before the data change; the result holds the
// by-variables, in order of their values, and the new variables.
#include <algorithm>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/groups/groups_internal.h"
#include "data/labels/label.h"
#include "data/sort/sort.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

namespace {

struct Target {
    std::string name;
    int src;
    GStatReq stat;
    std::string statword;
};

bool endword(const char* p, const char* w) {
    size_t n = std::strlen(w);
    return !std::strncmp(p, w, n) && (p[n] == ' ' || p[n] == 0);
}

// The statistics a string variable can have.
bool strstat(int st) {
    return st == GS_FIRST || st == GS_LAST || st == GS_FIRSTNM || st == GS_LASTNM || st == GS_MIN ||
           st == GS_MAX;
}

// The string statistic of each group: first and last in the order of the
// data, firstnm and lastnm the first and last not empty, min and max by byte
// order among those not empty ("" when a group has none).
void group_strstat(const Groups& g, int st, int v, std::vector<std::string>* out) {
    out->assign(static_cast<size_t>(g.ngroups), std::string());
    std::vector<uint8_t> seen(static_cast<size_t>(g.ngroups), 0);
    std::vector<char> buf(KV_STRMAX + 2);
    for (int32_t i = g.n1; i <= g.n2; i++) {
        int32_t q = g.gid[i - g.n1];
        if (q < 0) continue;
        const char* t = skorvu_data(v, i, buf.data());
        std::string& r = (*out)[q];
        bool empty = !*t;
        switch (st) {
        case GS_FIRST:
            if (!seen[q]) r = t;
            seen[q] = 1;
            break;
        case GS_LAST: r = t; break;
        case GS_FIRSTNM:
            if (!seen[q] && !empty) r = t, seen[q] = 1;
            break;
        case GS_LASTNM:
            if (!empty) r = t;
            break;
        case GS_MIN:
            if (!empty && (!seen[q] || std::strcmp(t, r.c_str()) < 0)) r = t, seen[q] = 1;
            break;
        case GS_MAX:
            if (!empty && (!seen[q] || std::strcmp(t, r.c_str()) > 0)) r = t, seen[q] = 1;
            break;
        default: break;
        }
    }
}

int readclist(std::vector<Target>& out) {
    char* p = wheretok();
    std::string stat = "mean";
    GStatReq req{GS_MEAN, 0};
    for (;;) {
        while (*p == ' ') p++;
        if (!*p || *p == ',' || *p == '[' || endword(p, "if") || endword(p, "in")) break;
        if (*p == '(') {
            char* q = std::strchr(p, ')');
            if (!q) return errtext(198, "unmatched parenthesis\n");
            stat.assign(p + 1, q);
            while (!stat.empty() && stat.back() == ' ') stat.pop_back();
            while (!stat.empty() && stat.front() == ' ') stat.erase(stat.begin());
            if (gstat_word(stat.c_str(), &req) < 0)
                return errorf(198, "(%s) is not a statistic\n", stat.c_str());
            p = q + 1;
            continue;
        }
        char* b = p;
        while (*p && *p != ' ' && *p != '=' && *p != ',' && *p != '[' && *p != '(') p++;
        std::string w1(b, p);
        while (*p == ' ') p++;
        std::string target;
        if (*p == '=') {
            target = w1;
            p++;
            while (*p == ' ') p++;
            b = p;
            while (*p && *p != ' ' && *p != '=' && *p != ',' && *p != '[' && *p != '(') p++;
            w1.assign(b, p);
            if (w1.empty()) return errtext(198, "variable name expected after =\n");
        }
        std::vector<int32_t> vars;
        if (int rc = grp_varlist(w1, vars)) return rc;
        if (!target.empty() && vars.size() != 1)
            return errorf(198, "%s= takes one variable\n", target.c_str());
        for (int32_t v : vars) {
            if (isstrtype(typlist[v - 1]) && !strstat(req.stat))
                return errorf(109,
                              "%s is a string variable: (%s) needs numbers; strings take first, "
                              "last, firstnm, lastnm, min and max\n",
                              varname(v), stat.c_str());
            out.push_back({target.empty() ? std::string(varname(v)) : target, v, req, stat});
        }
    }
    if (out.empty()) return error(102);
    TokPos st;
    stattok(&st);
    st.pos = p;
    st.last = p;
    resettok(&st);
    return 0;
}

} // namespace

int grp_collapse() {
    if (nvar == 0) return errtext(2000, "no observations\n");
    std::vector<Target> targets;
    if (int rc = readclist(targets)) return rc;
    ifable = 0;
    oable = 0;
    wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW | WGT_PW;
    if (int rc = parse_ifinopts()) return rc;
    std::vector<int32_t> keys = grp_byvars;
    bool byopt = false;
    std::string bytext = grp_optarg("by", 2, &byopt);
    if (byopt) {
        std::vector<int32_t> b;
        if (int rc = grp_varlist(bytext, b)) return rc;
        keys.insert(keys.end(), b.begin(), b.end());
    }
    bool cw = findopt("cw", 2, 0);
    findopt("fast", 4, 0); // nothing to restore: the data change only at the end
    if (int rc = chkopt()) return rc;
    if (int rc = wgtdflt(WGT_AW)) return rc;
    // names: unique, not a by-variable, valid
    for (size_t a = 0; a < targets.size(); a++) {
        if (int rc = chkname(targets[a].name.c_str(), 1)) return rc;
        for (size_t b = 0; b < a; b++)
            if (targets[a].name == targets[b].name)
                return errorf(198, "%s defined more than once\n", targets[a].name.c_str());
        for (int32_t k : keys)
            if (targets[a].name == varname(k))
                return errorf(198, "%s is a by-variable and cannot be a result\n",
                              targets[a].name.c_str());
    }
    static std::vector<uint8_t> take; // kept across commands: no fresh pages
    std::vector<double> w;
    if (int rc = grp_take(take, weclause ? &w : nullptr)) return rc;
    const int32_t n1 = nobs1, n2 = nobs2;
    const int64_t n = n2 >= n1 ? n2 - n1 + 1 : 0;
    // the sources, decoded once each
    std::vector<int32_t> srcs, ssrcs; // numeric and string sources
    for (const Target& t : targets) {
        std::vector<int32_t>& l = isstrtype(typlist[t.src - 1]) ? ssrcs : srcs;
        if (std::find(l.begin(), l.end(), t.src) == l.end()) l.push_back(t.src);
    }
    std::vector<const double*> cols(srcs.size());
    std::vector<std::vector<double>> more; // past the scratch buffers
    for (size_t s = 0; s < srcs.size(); s++) {
        if (s < 5) {
            cols[s] = groups_values(srcs[s], n1, n2, 3 + static_cast<int>(s));
        } else {
            more.emplace_back(static_cast<size_t>(n));
            groups_column(srcs[s], n1, n2, more.back().data());
            cols[s] = more.back().data();
        }
    }
    if (cw)
        for (int64_t k = 0; k < n; k++)
            for (const double* c : cols)
                if (c[k] >= misval) take[k] = 0;
    if (cw && !ssrcs.empty()) {
        std::vector<char> buf(KV_STRMAX + 2);
        for (int64_t k = 0; k < n; k++)
            for (int32_t v : ssrcs)
                if (!*skorvu_data(v, n1 + static_cast<int32_t>(k), buf.data())) take[k] = 0;
    }
    bool members = false;
    for (const Target& t : targets)
        if (t.stat.stat == GS_PCTILE || t.stat.stat == GS_IQR || t.stat.stat == GS_MODE)
            members = true;
    static Groups g;
    const bool all = !ifclause && !weclause && !cw;
    // sums and counts by one numeric key of whole numbers in a small range:
    // straight from the key's column, no group number per observation
    bool direct = keys.size() == 1;
    for (const Target& t : targets)
        if (isstrtype(typlist[t.src - 1]) || !gdirect_stat_ok(t.stat.stat)) direct = false;
    static GDirect dg;
    if (direct) {
        int rc = gdirect_make(&dg, keys[0], n1, n2, all ? nullptr : take.data(), false);
        if (rc > 0) return rc;
        direct = rc == 0;
    }
    std::vector<std::vector<double>> res(targets.size());
    std::vector<std::vector<std::string>> sres(targets.size());
    if (direct) {
        const size_t S = static_cast<size_t>(dg.span);
        std::vector<int32_t> first(S);
        std::vector<double> tmp(S);
        g = Groups{};
        g.n1 = n1, g.n2 = n2;
        for (size_t a = 0; a < targets.size(); a++) {
            size_t s = static_cast<size_t>(std::find(srcs.begin(), srcs.end(), targets[a].src) -
                                           srcs.begin());
            if (int rc = gdirect_stat(dg, targets[a].stat, cols[s], weclause ? w.data() : nullptr,
                                      wgttype, all ? nullptr : take.data(), tmp.data(),
                                      a == 0 ? first.data() : nullptr))
                return rc;
            if (a == 0)
                for (size_t q = 0; q < S; q++)
                    if (first[q] >= 0) g.rep.push_back(first[q]);
            res[a].reserve(g.rep.size());
            for (size_t q = 0; q < S; q++)
                if (first[q] >= 0) res[a].push_back(tmp[q]);
        }
        g.ngroups = static_cast<int32_t>(g.rep.size());
        if (g.ngroups == 0) return errtext(2000, "no observations\n");
    } else if (int rc = groups_make(&g, keys.data(), static_cast<int>(keys.size()), n1, n2,
                                    all ? nullptr : take.data(),
                                    GRP_ORDER | (members ? GRP_MEMBERS : 0)))
        return rc;
    const int32_t G = g.ngroups;
    if (G == 0) return errtext(2000, "no observations\n");
    for (size_t a = 0; a < targets.size() && !direct; a++) {
        res[a].resize(static_cast<size_t>(G));
        if (isstrtype(typlist[targets[a].src - 1])) {
            if (kvpollstd()) return 1;
            group_strstat(g, targets[a].stat.stat, targets[a].src, &sres[a]);
            continue;
        }
        size_t s =
            static_cast<size_t>(std::find(srcs.begin(), srcs.end(), targets[a].src) - srcs.begin());
        if (int rc = group_stat(g, targets[a].stat, cols[s], weclause ? w.data() : nullptr, wgttype,
                                res[a].data()))
            return rc;
    }
    std::vector<NewCol> newcols(targets.size());
    for (size_t a = 0; a < targets.size(); a++) {
        NewCol& c = newcols[a];
        c.name = targets[a].name;
        c.values = std::move(res[a]);
        int st = targets[a].stat.stat;
        int srct = typlist[targets[a].src - 1];
        if (isstrtype(srct)) {
            size_t w = 1;
            for (const std::string& t : sres[a]) w = std::max(w, t.size());
            c.type = static_cast<int>(w);
            c.format = "%" + std::to_string(w) + "s";
            c.strs = std::move(sres[a]);
        } else if (st == GS_COUNT || st == GS_NMISS || st == GS_TOTALOBS)
            c.type = weclause && wgttype != WGT_FW && st == GS_COUNT ? KV_DOUBLE : KV_LONG;
        else if (st == GS_MIN || st == GS_MAX || st == GS_FIRST || st == GS_LAST ||
                 st == GS_FIRSTNM || st == GS_LASTNM || st == GS_MODE) {
            c.type = srct;
            c.format = fmtname(targets[a].src);
        } else
            c.type = KV_DOUBLE;
        char lab[81];
        getvarlab(targets[a].src, lab);
        c.label = "(" + targets[a].statword + ") " + (lab[0] ? lab : varname(targets[a].src));
        if (c.label.size() > 80) c.label.resize(80);
    }
    return grp_newdata(keys, g, newcols);
}

int grp_newdata(const std::vector<int32_t>& keys, const Groups& g, std::vector<NewCol>& cols) {
    const int32_t G = g.ngroups;
    // the key variables' values, from each group's first observation
    std::vector<std::vector<double>> keynum(keys.size());
    std::vector<std::vector<std::string>> keystr(keys.size());
    char buf[260];
    for (size_t q = 0; q < keys.size(); q++) {
        int v = keys[q];
        for (int32_t r : g.rep) {
            if (isstrtype(typlist[v - 1]))
                keystr[q].push_back(skorvu_data(v, r, buf));
            else
                keynum[q].push_back(korvu_data(v, r));
        }
    }
    // from here the data change. The observations are cut to one per group
    // first: with the columns in observation order, lowering nobs leaves the
    // cells of the others where they are, so it is undone by restoring the
    // count until something is moved or dropped. When the variables that go
    // make room for the new ones, they are dropped first and the new ones
    // then fit (nothing can fail); otherwise the records are widened for the
    // new ones (the only step that can fail, for want of room, and then
    // having moved nothing), and the old ones dropped after.
    colsync();
    const int32_t oldnobs = nobs;
    const int32_t nc = static_cast<int32_t>(cols.size());
    std::vector<uint8_t> drop(static_cast<size_t>(nvar), 1);
    for (int32_t k : keys) drop[k - 1] = 0;
    int32_t addw = 0, dropw = 0, ndrop = 0;
    for (const NewCol& c : cols) addw += bytlenc(c.type);
    for (int v = 1; v <= nvar; v++)
        if (drop[v - 1]) dropw += bytlenc(typlist[v - 1]), ndrop++;
    if (nvar - ndrop + nc > maxmaxvar) return error(900);
    std::vector<std::string> keynames;
    for (int32_t k : keys) keynames.push_back(varname(k));
    const bool dropfirst = usedwidth() - dropw + addw <= syslrecl && nvar - ndrop + nc <= maxvar;
    if (G < nobs) nobs = G;
    if (dropfirst) {
        if (int rc = grp_dropvars(drop)) {
            nobs = oldnobs;
            return error(rc);
        }
    } else if (usedwidth() + addw > syslrecl) {
        if (int rc = repart(usedwidth() + addw - syslrecl, 0)) {
            nobs = oldnobs;
            return error(rc >= 9000 ? 902 : rc);
        }
    }
    const int32_t first = nvar; // the new variables follow
    for (int32_t a = 0; a < nc; a++) {
        int v = addwrkvar(cols[a].type, 0);
        if (v < 0) { // not expected: the room and the count were checked
            nvar = first;
            i_nvar = nvar;
            if (!dropfirst) nobs = oldnobs;
            return error(-v);
        }
    }
    updata = 1;
    for (size_t q = 0; q < keys.size(); q++) {
        int v = sysfindvar(keynames[q].c_str());
        for (int32_t r = 0; r < G; r++) {
            if (isstrtype(typlist[v - 1]))
                sstore(v, r + 1, keystr[q][r].c_str());
            else
                store(v, r + 1, keynum[q][r]);
        }
    }
    for (int32_t a = 0; a < nc; a++) {
        int v = first + 1 + a;
        if (isstrtype(cols[a].type))
            for (int32_t r = 0; r < G; r++) sstore(v, r + 1, cols[a].strs[r].c_str());
        else
            grp_putcolumn(v, 1, G, cols[a].values.data());
    }
    if (!dropfirst) {
        drop.resize(static_cast<size_t>(nvar), 0); // the new ones stay
        if (int rc = grp_dropvars(drop)) return error(rc);
    }
    // keys in the order given, then the results
    int nk = static_cast<int>(keys.size());
    for (int q = 0; q < nk; q++) {
        int v = sysfindvar(keynames[q].c_str());
        if (v && v != q + 1) movevar(v, q + 1);
    }
    for (size_t a = 0; a < cols.size(); a++) {
        int v = nk + 1 + static_cast<int>(a);
        std::snprintf(varname(v), NAMELEN1, "%s", cols[a].name.c_str());
        putvarlab(v, cols[a].label.c_str());
        if (!cols[a].format.empty())
            std::snprintf(fmtname(v), FMTLEN1, "%s", cols[a].format.c_str());
        else if (cols[a].type == KV_DOUBLE)
            std::snprintf(fmtname(v), FMTLEN1, "%s", "%9.0g");
    }
    i_nvar = nvar;
    for (int q = 0; q < nk; q++) varlist_vr[q] = q + 1;
    setsrtlist(nk);
    updata = 1;
    return 0;
}

} // namespace korvu
