// The robust variance over posted estimates: `_robust` (and the older
// `_huber`) replace e(V), or a named matrix, by the sandwich V M V built
// from one score variable per equation, by observation or by cluster, within
// strata and with a finite-population correction.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/matlink.h"
#include "results/regress/regress.h"
#include "results/regress/sandwich.h"
#include "results/stores.h"
#include "results/summarize.h"

namespace korvu {

namespace {

// The key of a cell of a grouping variable: its number or its text.
std::string cellkey(int v, int i) {
    if (isstrtype(typlist[v - 1])) {
        char buf[2100];
        return std::string("s") + skorvu_data(v, i, buf);
    }
    double x = korvu_data(v, i);
    char buf[40];
    snprintf(buf, sizeof buf, "n%.17g", x);
    return buf;
}

// One column of V: its equation and where its values come from.
struct Col {
    int eq = 0;
    int var = 0; // 0: the constant
};

int robust_common(bool huber) {
    vable = 1;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW | WGT_PW;
    byable = 0;
    opable = wgtable = 0;
    if (int rc = parse()) return rc;
    char vname_[40] = "", minus_txt[64] = "";
    findargn("v", 1, vname_, sizeof vname_, 1);
    int sv[2] = {0, 0}, cv[2] = {0, 0}, fv[2] = {0, 0};
    int ns = findvlist("strata", 3, sv, 2);
    int nc = findvlist("cluster", 2, cv, 2);
    int nf = findvlist("fpc", 3, fv, 2);
    findargn("minus", 5, minus_txt, sizeof minus_txt, 1);
    if (int rc = chkopt()) return rc;
    if (ns > 1 || nc > 1 || nf > 1) return error(103);
    double minus = 1;
    if (minus_txt[0]) {
        if (cnvstoz(minus_txt, &minus) || minus >= misval) return error(198);
        if (minus < 0) return errtext(198, "minus() must be >= 0");
    }
    std::vector<int> scores(varlist_vr, varlist_vr + lnvar);
    if (scores.empty()) return error(102);
    for (int v : scores)
        if (isstrtype(typlist[v - 1])) return errtext(109, "type mismatch");
    if (nf && isstrtype(typlist[fv[0] - 1])) return errtext(109, "type mismatch");

    // the variance matrix
    bool own = vname_[0] != 0;
    DenseMat V;
    if (!matlink.load) return errtext(199, "matrices not yet available");
    if (own) {
        if (matlink.load(vname_, 9, &V)) return errorf(111, "matrix %s not found", vname_);
    } else {
        if (!lastest || matlink.load("VCE", ET_RECORD, &V)) return error(301);
    }
    int p = V.cols;
    if (V.rows != p || p == 0) return errtext(503, "conformability error");
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < i; ++j) {
            double a = V.at(i, j), b = V.at(j, i);
            if (a != b && std::fabs(a - b) > 1e-12 * (std::fabs(a) + std::fabs(b)))
                return errtext(505, "matrix not symmetric");
        }

    // the equations and the variables of the columns
    std::vector<Col> cols(p);
    std::vector<std::string> eqs;
    for (int j = 0; j < p; ++j) {
        const std::string& n = V.colnames[j];
        size_t c = n.find(':');
        std::string eq = c == std::string::npos ? "_" : n.substr(0, c);
        std::string nm = c == std::string::npos ? n : n.substr(c + 1);
        if (eqs.empty() || eqs.back() != eq) eqs.push_back(eq);
        cols[j].eq = static_cast<int>(eqs.size()) - 1;
        if (nm == "_cons") continue;
        int v = korvu_findvar(nm.c_str(), 0, 1);
        if (v < 0) return -v;
        if (isstrtype(typlist[v - 1])) return errtext(109, "type mismatch");
        cols[j].var = v;
    }
    int neq = static_cast<int>(eqs.size());
    if (static_cast<int>(scores.size()) > neq)
        return errtext(198, "number of scores must equal number of equations");
    if (static_cast<int>(scores.size()) < neq)
        return errtext(198, "number of scores must equal number of equations");

    if (nf && weclause && wgttype == WGT_FW && !nc)
        return errtext(198, "fpc() with frequency weights needs cluster()");
    initialize_xeq();
    // the PSUs: observations, or clusters within strata
    std::map<std::string, int> psuix;
    std::vector<SandPsu> psus;
    std::vector<double> row(p);
    double N = 0, sumw = 0;
    long nused = 0;
    bool aw = weclause && (wgttype == WGT_AW);
    bool fw = weclause && wgttype == WGT_FW;
    // analytic weights are scaled to sum to the number of observations: a first pass
    double wscale = 1;
    for (int pass = aw ? 0 : 1; pass < 2; ++pass) {
        for (int i = nobs1; i <= nobs2; ++i) {
            if ((i & 0xfff) == 0 && kvpollstd()) return 1;
            double t;
            if (ifclause) {
                xeqblock(&ifpgm, i, i, &t);
                if (t == 0) continue;
            }
            double w = 1;
            if (weclause) {
                xeqblock(&wepgm, i, i, &w);
                if (w >= misval || w == 0) continue;
                if (w < 0 && wgttype != WGT_IW) return errtext(402, "negative weights encountered");
                if (fw && w != std::floor(w))
                    return errtext(401, "may not use noninteger frequency weights");
            }
            bool miss = false;
            for (int s : scores) miss |= korvu_data(s, i) >= misval;
            for (const Col& c : cols) miss |= c.var && korvu_data(c.var, i) >= misval;
            if (ns)
                miss |= isstrtype(typlist[sv[0] - 1]) ? !cellkey(sv[0], i).compare("s")
                                                      : korvu_data(sv[0], i) >= misval;
            if (nc)
                miss |= isstrtype(typlist[cv[0] - 1]) ? !cellkey(cv[0], i).compare("s")
                                                      : korvu_data(cv[0], i) >= misval;
            double f = nf ? korvu_data(fv[0], i) : misval;
            if (nf) miss |= f >= misval;
            if (miss) continue;
            if (pass == 0) {
                sumw += w, ++nused;
                continue;
            }
            w *= wscale;
            for (int j = 0; j < p; ++j) {
                double x = cols[j].var ? korvu_data(cols[j].var, i) : 1;
                row[j] = w * korvu_data(scores[cols[j].eq], i) * x;
            }
            N += fw ? w : 1;
            if (!aw) sumw += w;
            std::string st = ns ? cellkey(sv[0], i) : "";
            std::string key = st + '\x01' + (nc ? cellkey(cv[0], i) : std::to_string(i));
            auto it = psuix.find(key);
            int g;
            if (it == psuix.end()) {
                g = static_cast<int>(psus.size());
                psuix.emplace(key, g);
                psus.push_back({std::vector<double>(p, 0.0), 1, f, st});
            } else {
                g = it->second;
                if (nf && psus[g].fpc != f)
                    return errtext(198,
                                   "fpc for all observations within a stratum must be the same");
            }
            if (fw && !nc) {
                // a frequency weight counts the observation w times: w of the same row
                for (int j = 0; j < p; ++j) psus[g].u[j] = row[j] / w;
                psus[g].m = w;
            } else {
                for (int j = 0; j < p; ++j) psus[g].u[j] += row[j];
            }
        }
        if (pass == 0) {
            if (sumw <= 0) return error(2000);
            wscale = static_cast<double>(nused) / sumw;
        }
    }
    if (N <= 0 || psus.empty()) return error(2000);

    // the meat, stratum by stratum, and V M V
    bool centred = ns || nf;
    std::vector<double> M;
    int nstrata = 0;
    double npsu = 0;
    const char* msg = "";
    if (int rc = sandwich_meat(psus, p, centred, nf != 0, &M, &nstrata, &npsu, &msg))
        return errtext(rc, msg);
    // without strata, n / (n - 1) over the PSUs
    double scale = (N - 1) / (N - minus);
    if (!centred) scale *= npsu > 1 ? npsu / (npsu - 1) : misval;
    if (!(N - minus > 0)) scale = misval;
    std::vector<double> Vx(static_cast<size_t>(p) * p), R(Vx.size());
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j) Vx[static_cast<size_t>(i) * p + j] = V.at(i, j);
    sandwich_vmv(Vx.data(), M, p, scale, R.data());
    DenseMat out = V;
    out.x = R;
    if (own) {
        if (matlink.save(vname_, 9, out)) return error(950);
    } else {
        if (matlink.save("VCE", ET_RECORD, out)) return error(950);
        estval_resave_vcetype("Robust");
        estval_erase_clustvar();
        estval_erase_N_clust();
        if (nc) {
            estval_save_clustvar(varname(cv[0]));
            estval_save_N_clust(static_cast<int>(psus.size()));
        }
    }
    int nclust = nc ? static_cast<int>(psus.size()) : 0;
    retval_clear();
    retval_set_scalar("N", N);
    retval_set_scalar("N_strata", static_cast<double>(nstrata));
    if (nc) retval_set_scalar("N_clust", nclust);
    if (huber && nc && s_outlev <= 2) {
        c_outlev = 1;
        spoutf("Grouping variable: %s\n", varname(cv[0]));
    }
    return 0;
}

} // namespace

int robustcmd(int) {
    return robust_common(false);
}

int hubercmd(int) {
    return robust_common(true);
}

} // namespace korvu
