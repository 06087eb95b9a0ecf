// The by-group data-management commands: duplicates, idcheck, levels,
// fillall, freqdata, dsort and sample.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/groups/groups_internal.h"
#include "data/select/generate.h"
#include "data/sort/sort.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "kernel/program/argparse.h"
#include "output/spout.h"

namespace korvu {

namespace {

void post_r(const char* name, double x) {
    if (dahooks.post_r) dahooks.post_r(name, x);
}

// varlist (all variables when none) [if] [in] [, options] into the vector
int readvarlist(std::vector<int32_t>& vars, bool ifin) {
    vable = 0;
    ifable = ifin ? 0 : 3;
    oable = ifin ? 0 : 3;
    if (int rc = parse()) return rc;
    vars.assign(varlist_vr, varlist_vr + lnvar);
    if (vars.empty())
        for (int v = 1; v <= nvar; v++) vars.push_back(v);
    return 0;
}

std::string listname(const std::vector<int32_t>& vars) {
    if (static_cast<int>(vars.size()) == nvar) return "all variables";
    std::string s;
    for (int32_t v : vars) s += (s.empty() ? "" : " ") + std::string(varname(v));
    return s;
}

std::string celltext(int v, int32_t i) {
    char buf[260];
    if (isstrtype(typlist[v - 1])) return skorvu_data(v, i, buf);
    fmtnum(buf, fmtname(v), korvu_data(v, i));
    const char* p = buf;
    while (*p == ' ') p++;
    return p;
}

} // namespace

// duplicates report|list|tag|drop [varlist] [if] [in] [, generate(newvar) force]
int grp_duplicates() {
    gettok(prsestd);
    std::string sub = token;
    int mode = cmdcmp(token, "report", 1) ? 0
               : cmdcmp(token, "list", 1) ? 1
               : cmdcmp(token, "tag", 1)  ? 2
               : cmdcmp(token, "drop", 4) ? 3
                                          : -1;
    if (mode < 0) return errorf(198, "duplicates: report, list, tag or drop expected\n");
    if (nvar == 0) return errtext(2000, "no observations\n");
    std::vector<int32_t> vars;
    if (int rc = readvarlist(vars, true)) return rc;
    bool given = false;
    std::string gen = grp_optarg("generate", 1, &given);
    bool force = findopt("force", 5, 0);
    if (int rc = chkopt()) return rc;
    while (!gen.empty() && gen.back() == ' ') gen.pop_back();
    if (mode == 2) {
        if (gen.empty()) return errtext(198, "option generate() required\n");
        if (int rc = chkname(gen.c_str(), 1)) return rc;
        if (sysfindvar(gen.c_str())) return error2(3, gen.c_str());
    }
    if (mode == 3 && static_cast<int>(vars.size()) < nvar && !force)
        return errtext(198, "force required to drop observations duplicated on some of the "
                            "variables only\n");
    std::vector<uint8_t> take;
    if (int rc = grp_take(take, nullptr)) return rc;
    const int32_t n1 = nobs1, n2 = nobs2;
    Groups g;
    if (int rc = groups_make(&g, vars.data(), static_cast<int>(vars.size()), n1, n2, take.data(),
                             GRP_ORDER | GRP_MEMBERS))
        return rc;
    int64_t nsel = 0, surplus = 0;
    for (int32_t q = 0; q < g.ngroups; q++) nsel += g.size[q], surplus += g.size[q] - 1;
    if (mode == 0) {
        spoutf("\nDuplicates in terms of %s\n\n", listname(vars).c_str());
        spoutf("%10s %14s %10s\n", "copies", "observations", "surplus");
        std::vector<int64_t> bysize;
        for (int32_t q = 0; q < g.ngroups; q++) {
            size_t s = static_cast<size_t>(g.size[q]);
            if (bysize.size() <= s) bysize.resize(s + 1, 0);
            bysize[s]++;
        }
        for (size_t s = 1; s < bysize.size(); s++)
            if (bysize[s])
                spoutf("%10zu %14lld %10lld\n", s, static_cast<long long>(bysize[s] * s),
                       static_cast<long long>(bysize[s] * (s - 1)));
        post_r("N", static_cast<double>(nsel));
        post_r("unique_value", static_cast<double>(g.ngroups));
        return 0;
    }
    if (mode == 1) {
        spoutf("\nDuplicates in terms of %s\n\n", listname(vars).c_str());
        spoutf("%7s %8s", "group", "obs");
        for (int32_t v : vars) spoutf("  %s", varname(v));
        newline();
        int32_t shown = 0;
        for (int32_t q = 0; q < g.ngroups; q++) {
            if (g.size[q] < 2) continue;
            shown++;
            for (int32_t a = g.start[q]; a < g.start[q + 1]; a++) {
                if (kvpollstd()) return 1;
                int32_t i = g.members[a];
                spoutf("%7d %8d", shown, i);
                for (int32_t v : vars) spoutf("  %s", celltext(v, i).c_str());
                newline();
            }
        }
        if (!shown) spoutf("(0 observations are duplicates)\n");
        return 0;
    }
    if (mode == 2) {
        std::vector<double> out(static_cast<size_t>(nobs), misval);
        for (int32_t i = n1; i <= n2; i++) {
            int32_t q = g.gid[i - n1];
            if (q >= 0) out[i - 1] = g.size[q] - 1;
        }
        int32_t big = 0;
        for (int32_t s : g.size) big = std::max(big, s);
        int type = big <= maxbyte ? KV_BYTE : (big <= maxint ? KV_INT : KV_LONG);
        if (int rc = addvar(gen.c_str(), type)) return rc;
        i_nvar = nvar;
        grp_putcolumn(nvar, 1, nobs, out.data());
        updata = 1;
        return 0;
    }
    // drop: all but the first of each group
    std::vector<char> gone(static_cast<size_t>(nobs) + 1, 0);
    int64_t k = 0;
    for (int32_t q = 0; q < g.ngroups; q++)
        for (int32_t a = g.start[q] + 1; a < g.start[q + 1]; a++) gone[g.members[a]] = 1, k++;
    spoutf("\nDuplicates in terms of %s\n\n", listname(vars).c_str());
    if (k) {
        lclcmprs(gone.data());
        colsync();
        reset_sort(0);
    }
    spoutf("(%lld observation%s deleted)\n", static_cast<long long>(k), k == 1 ? "" : "s");
    return 0;
}

// idcheck varlist [, missok]
int grp_idcheck() {
    vable = 1;
    ifable = 3;
    oable = 3;
    if (int rc = parse()) return rc;
    std::vector<int32_t> vars(varlist_vr, varlist_vr + lnvar);
    bool missok = findopt("missok", 6, 0);
    if (int rc = chkopt()) return rc;
    if (!missok)
        for (int32_t v : vars) {
            bool str = isstrtype(typlist[v - 1]);
            for (int32_t i = 1; i <= nobs; i++) {
                char buf[260];
                bool miss = str ? !skorvu_data(v, i, buf)[0] : korvu_data(v, i) >= misval;
                if (miss) return errorf(459, "variable %s should never be missing\n", varname(v));
            }
        }
    Groups g;
    if (int rc = groups_make(&g, vars.data(), static_cast<int>(vars.size()), 1, nobs, nullptr, 0))
        return rc;
    if (g.ngroups != nobs) {
        std::string s = listname(vars);
        if (static_cast<int>(vars.size()) == nvar) s = "the variables";
        return errorf(459, "variable%s %s do%s not uniquely identify the observations\n",
                      vars.size() == 1 ? "" : "s", s.c_str(), vars.size() == 1 ? "es" : "");
    }
    return 0;
}

// levels varname [if] [in] [, local(name) missing separate(text) clean]
int grp_levels() {
    vable = 1;
    ifable = 0;
    oable = 0;
    if (int rc = parse()) return rc;
    if (lnvar != 1) return error(103);
    int v = varlist_vr[0];
    bool given = false;
    std::string mac = grp_optarg("local", 1, &given);
    while (!mac.empty() && mac.back() == ' ') mac.pop_back();
    bool missing = findopt("missing", 4, 0);
    bool sepgiven = false;
    std::string sep = grp_optarg("separate", 3, &sepgiven);
    if (!sepgiven) sep = " ";
    bool clean = findopt("clean", 5, 0);
    if (int rc = chkopt()) return rc;
    if (!mac.empty())
        if (int rc = chklmname(mac.c_str())) return rc;
    std::vector<uint8_t> take;
    if (int rc = grp_take(take, nullptr)) return rc;
    Groups g;
    if (int rc = groups_make(&g, &v, 1, nobs1, nobs2, take.data(),
                             GRP_ORDER | (missing ? 0 : GRP_NOMISS)))
        return rc;
    std::string out;
    bool str = isstrtype(typlist[v - 1]);
    char buf[260];
    for (int32_t q = 0; q < g.ngroups; q++) {
        if (q) out += sep;
        if (str) {
            const char* s = skorvu_data(v, g.rep[q], buf);
            bool plain = clean && !std::strpbrk(s, " \"");
            out += plain ? std::string(s) : "`\"" + std::string(s) + "\"'";
        } else {
            out += numtext(korvu_data(v, g.rep[q]));
        }
        if (out.size() > static_cast<size_t>(macrolen) - 1) return error(920);
    }
    spoutf("%s\n", out.c_str());
    if (post_rmacro) post_rmacro("levels", out.c_str());
    if (!mac.empty()) {
        std::string name = "_" + mac;
        if (int rc = macresave_c(name.c_str(), out.c_str())) return error(rc);
    }
    return 0;
}

// fillall varlist: adds the combinations of the variables' values that are
// absent, marked by the new byte variable _fillall
int grp_fillall() {
    vable = 1;
    ifable = 3;
    oable = 3;
    if (int rc = parse()) return rc;
    std::vector<int32_t> vars(varlist_vr, varlist_vr + lnvar);
    if (int rc = chkopt()) return rc;
    if (vars.size() < 2) return errtext(102, "fillall needs two or more variables\n");
    if (sysfindvar("_fillall")) return errtext(110, "variable _fillall already defined\n");
    if (nobs == 0) return errtext(2000, "no observations\n");
    size_t nv = vars.size();
    std::vector<Groups> gs(nv);
    double P = 1;
    for (size_t q = 0; q < nv; q++) {
        if (int rc = groups_make(&gs[q], &vars[q], 1, 1, nobs, nullptr, GRP_ORDER)) return rc;
        P *= gs[q].ngroups;
    }
    if (P > 2147483646.0) return error(901);
    // which combinations exist, by their mixed-radix number
    std::vector<uint8_t> present(static_cast<size_t>(P), 0);
    for (int32_t i = 0; i < nobs; i++) {
        int64_t c = 0;
        for (size_t q = 0; q < nv; q++) c = c * gs[q].ngroups + gs[q].gid[i];
        present[static_cast<size_t>(c)] = 1;
    }
    int64_t add = 0;
    for (uint8_t p : present) add += !p;
    if (nobs + add > 2147483646) return error(901);
    const int32_t old = nobs;
    if (old + add > maxobs) {
        int rc = repartobs(static_cast<int32_t>(old + add - maxobs));
        if (rc || old + add > maxobs) return error(901);
    }
    const int32_t oldnvar = nvar;
    if (int rc = addvar("_fillall", KV_BYTE)) return rc;
    int mark = nvar;
    i_nvar = nvar;
    // new observations: missing everywhere, then the key values
    for (int v = 1; v <= nvar; v++)
        for (int32_t i = old + 1; i <= old + add; i++) {
            if (isstrtype(typlist[v - 1]))
                sstore(v, i, "");
            else
                store(v, i, misval);
        }
    nobs = static_cast<int32_t>(old + add);
    for (int32_t i = 1; i <= nobs; i++) store(mark, i, i > old ? 1 : 0);
    int32_t i = old;
    std::vector<int64_t> digit(nv);
    char buf[260];
    for (size_t c = 0; c < present.size(); c++) {
        if (present[c]) continue;
        i++;
        int64_t r = static_cast<int64_t>(c);
        for (size_t q = nv; q-- > 0;) digit[q] = r % gs[q].ngroups, r /= gs[q].ngroups;
        for (size_t q = 0; q < nv; q++) {
            int v = vars[q];
            int32_t src = gs[q].rep[static_cast<size_t>(digit[q])];
            if (isstrtype(typlist[v - 1]))
                sstore(v, i, skorvu_data(v, src, buf));
            else
                store(v, i, korvu_data(v, src));
        }
    }
    (void)oldnvar;
    updata = 1;
    return syssort_vars(vars.data(), static_cast<int>(nv));
}

// freqdata varlist [weight] [if] [in] [, freq(name) percent(name) cfreq(name) cpercent(name)]
int grp_freqdata() {
    vable = 1;
    ifable = 0;
    oable = 0;
    wgtable = 0;
    wgtallowt = WGT_FW;
    if (int rc = parse()) return rc;
    std::vector<int32_t> vars(varlist_vr, varlist_vr + lnvar);
    bool given = false;
    std::string fname = grp_optarg("freq", 1, &given);
    if (!given) fname = "_freq";
    std::string pname = grp_optarg("percent", 1);
    std::string cfname = grp_optarg("cfreq", 2);
    std::string cpname = grp_optarg("cpercent", 2);
    if (int rc = chkopt()) return rc;
    if (int rc = wgtdflt(WGT_FW)) return rc;
    std::vector<std::string> names;
    for (std::string* s : {&fname, &pname, &cfname, &cpname}) {
        while (!s->empty() && s->back() == ' ') s->pop_back();
        if (s->empty()) continue;
        if (int rc = chkname(s->c_str(), 1)) return rc;
        for (int32_t v : vars)
            if (*s == varname(v)) return error2(3, s->c_str());
        names.push_back(*s);
    }
    std::vector<uint8_t> take;
    std::vector<double> w;
    if (int rc = grp_take(take, weclause ? &w : nullptr)) return rc;
    Groups g;
    if (int rc = groups_make(&g, vars.data(), static_cast<int>(vars.size()), nobs1, nobs2,
                             take.data(), GRP_ORDER))
        return rc;
    if (g.ngroups == 0) return errtext(2000, "no observations\n");
    std::vector<double> f(static_cast<size_t>(g.ngroups), 0.0);
    for (size_t k = 0; k < g.gid.size(); k++)
        if (g.gid[k] >= 0) f[g.gid[k]] += weclause ? w[k] : 1.0;
    double tot = 0;
    for (double x : f) tot += x;
    std::vector<NewCol> cols;
    cols.push_back({fname, "Frequency", "", tot <= maxlong ? KV_LONG : KV_DOUBLE, f});
    if (!pname.empty()) {
        NewCol c{pname, "Percent", "%8.2f", KV_FLOAT, f};
        for (double& x : c.values) x = 100 * x / tot;
        cols.push_back(c);
    }
    if (!cfname.empty()) {
        NewCol c{cfname, "Cumulative frequency", "", KV_DOUBLE, f};
        std::partial_sum(c.values.begin(), c.values.end(), c.values.begin());
        cols.push_back(c);
    }
    if (!cpname.empty()) {
        NewCol c{cpname, "Cumulative percent", "%8.2f", KV_FLOAT, f};
        std::partial_sum(c.values.begin(), c.values.end(), c.values.begin());
        for (double& x : c.values) x = 100 * x / tot;
        cols.push_back(c);
    }
    return grp_newdata(vars, g, cols);
}

// dsort [+|-]varname ... [, stable]: a descending key is replaced for the sort
// by a work variable holding its values' rank reversed, so that ties and
// their treatment stay those of sort
int grp_dsort() {
    std::string text = wheretok();
    std::string opts;
    size_t comma = text.find(',');
    if (comma != std::string::npos) opts = text.substr(comma), text.resize(comma);
    std::vector<int32_t> vars;
    std::vector<uint8_t> desc;
    size_t p = 0;
    bool nextdesc = false;
    while (p < text.size()) {
        while (p < text.size() && text[p] == ' ') p++;
        if (p >= text.size()) break;
        size_t b = p;
        while (p < text.size() && text[p] != ' ') p++;
        std::string w = text.substr(b, p - b);
        bool d = nextdesc;
        nextdesc = false;
        while (!w.empty() && (w[0] == '-' || w[0] == '+')) d = w[0] == '-', w.erase(w.begin());
        if (w.empty()) {
            nextdesc = d;
            continue;
        }
        std::vector<int32_t> vl;
        if (int rc = grp_varlist(w, vl)) return rc;
        for (int32_t v : vl) vars.push_back(v), desc.push_back(d);
    }
    if (vars.empty()) return error(100);
    // the options
    TokPos st;
    stattok(&st);
    char* end = st.pos + std::strlen(st.pos);
    if (!opts.empty()) end = std::strchr(st.pos, ',');
    st.pos = end;
    st.last = end;
    resettok(&st);
    ifable = 3;
    oable = 3;
    if (int rc = parse_ifinopts()) return rc;
    int stable = findopt("stable", 5, 0);
    if (int rc = chkopt()) return rc;
    if (nobs < 2) return 0;
    const int32_t oldnvar = nvar;
    std::vector<int32_t> keys = vars;
    for (size_t q = 0; q < vars.size(); q++) {
        if (!desc[q]) continue;
        Groups g;
        if (int rc = groups_make(&g, &vars[q], 1, 1, nobs, nullptr, GRP_ORDER)) {
            nvar = oldnvar;
            return rc;
        }
        int w = addwrkvar(KV_LONG, 0);
        if (w < 0) {
            nvar = oldnvar;
            return error(-w);
        }
        std::vector<double> r(static_cast<size_t>(nobs));
        for (int32_t i = 0; i < nobs; i++) r[i] = g.ngroups - 1 - g.gid[i];
        grp_putcolumn(w, 1, nobs, r.data());
        keys[q] = w;
    }
    for (size_t q = 0; q < keys.size(); q++) varlist_vr[q] = keys[q];
    lnvar = static_cast<int32_t>(keys.size());
    nobs1 = 1;
    nobs2 = nobs;
    int rc = syssort(stable);
    nvar = oldnvar;
    i_nvar = nvar;
    // only the ascending keys before the first descending one declare an order
    size_t asc = 0;
    while (asc < vars.size() && !desc[asc]) asc++;
    for (size_t q = 0; q < asc; q++) varlist_vr[q] = vars[q];
    if (srtlist) srtlist[0] = 0;
    if (!rc) setsrtlist(static_cast<int>(asc));
    return rc;
}

// sample # [if] [in] [, count]: keeps # percent (or # observations) of the
// observations selected, in each by-group, at random through uniform();
// observations not selected by if and in stay
int grp_sample() {
    gettok(prsenum);
    double x;
    if (!token[0] || tokisstr(token) || cnvstoz(token, &x) || x >= misval || x < 0)
        return errtext(198, "sample: a number of observations or a percentage expected\n");
    ifable = 0;
    oable = 0;
    if (int rc = parse_ifinopts()) return rc;
    bool count = findopt("count", 5, 0);
    if (int rc = chkopt()) return rc;
    if (!count && x > 100) return errtext(198, "percentage must be between 0 and 100\n");
    if (count && x != std::floor(x)) return error(198);
    std::vector<uint8_t> take;
    if (int rc = grp_take(take, nullptr)) return rc;
    const int32_t n1 = nobs1, n2 = nobs2;
    const int64_t n = n2 >= n1 ? n2 - n1 + 1 : 0;
    Groups g;
    if (int rc = groups_make(&g, grp_byvars.data(), static_cast<int>(grp_byvars.size()), n1, n2,
                             take.data(), GRP_MEMBERS))
        return rc;
    // the draws, one per observation in order
    static ExpObj obj;
    zapexp(&obj);
    static const char unif[] = "uniform()";
    if (int rc = compexp_text(&obj, unif, unif + sizeof unif - 1, 0, 0)) return rc;
    std::vector<double> u(static_cast<size_t>(n));
    for (int32_t i = n1; i <= n2; i++) u[i - n1] = xeq(&obj, i);
    std::vector<char> gone(static_cast<size_t>(nobs) + 1, 0);
    int64_t k = 0;
    std::vector<int32_t> m;
    for (int32_t q = 0; q < g.ngroups; q++) {
        m.assign(g.members.begin() + g.start[q], g.members.begin() + g.start[q + 1]);
        int64_t keep = count ? static_cast<int64_t>(x)
                             : static_cast<int64_t>(std::floor(m.size() * x / 100 + 0.5));
        if (keep >= static_cast<int64_t>(m.size())) continue;
        std::sort(m.begin(), m.end(), [&](int32_t a, int32_t b) {
            return u[a - n1] < u[b - n1] || (u[a - n1] == u[b - n1] && a < b);
        });
        for (size_t a = static_cast<size_t>(keep); a < m.size(); a++) gone[m[a]] = 1, k++;
    }
    if (k) {
        lclcmprs(gone.data());
        colsync();
        reset_sort(0);
    }
    spoutf("(%lld observation%s deleted)\n", static_cast<long long>(k), k == 1 ? "" : "s");
    return 0;
}

} // namespace korvu
