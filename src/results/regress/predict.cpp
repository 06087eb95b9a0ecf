// After a regression: `_predict` (fitted values and the statistics built on
// the residuals and the leverage) and `_test` (the Wald test of linear
// hypotheses on the coefficients).
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/distrib/distrib.h"
#include "results/estore.h"
#include "results/matlink.h"
#include "results/matrix/matrix.h"
#include "results/regress/regress.h"
#include "results/stores.h"
#include "results/summarize.h"

namespace korvu {

namespace {

// The last regression's coefficients, their variables and variances.
struct Est {
    int p = 0;
    std::vector<std::string> names;
    std::vector<int> vars; // 0 for the constant
    std::vector<double> b, V, V0;
    double s2 = 0, rank = 0;
    int depvar = 0;
};

int load_est(Est* e, bool needvars) {
    if (!lastest || !matlink.load) return error(301), 301;
    char model[40];
    estuseshort("model", model, sizeof model);
    DenseMat b, V;
    if (matlink.load("_b", ET_RECORD, &b) || matlink.load("VCE", ET_RECORD, &V))
        return error(301), 301;
    e->p = b.cols;
    e->b = b.x;
    e->V = V.x;
    e->names = b.colnames;
    double rmse = estval_get_double("rmse");
    e->s2 = rmse < misval ? rmse * rmse : misval;
    e->rank = estval_get_double("df_m") + 1;
    int tag = 0;
    if (dmfind("regV0", ET_RECORD, &tag) && tag == e->p * e->p) {
        e->V0.resize(static_cast<size_t>(tag));
        dmuse("regV0", ET_RECORD, nullptr, e->V0.data(), static_cast<long>(sizeof(double) * tag));
    }
    if (!needvars) return 0;
    for (auto& n : e->names) {
        if (n == "_cons") {
            e->vars.push_back(0);
            continue;
        }
        int v = sysfindvar(n.c_str());
        if (!v) return errorf(111, "variable %s not found", n.c_str());
        e->vars.push_back(v);
    }
    char dep[40];
    estuseshort("depvar", dep, sizeof dep);
    e->depvar = sysfindvar(dep);
    return 0;
}

// x' M x for the observation's regressors in x (p long).
double quad(const std::vector<double>& M, const std::vector<double>& x, int p) {
    double s = 0, e = 0;
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j)
            accumerr(&s, &e, x[i] * M[static_cast<size_t>(i) * p + j] * x[j]);
    return s + e;
}

} // namespace

// _predict [type] newvar [if] [in] [, xb stdp stdf residuals hat leverage
// rstandard cooksd]
int predictcmd(int) {
    char* t = gettok(prsestd);
    int type = KV_FLOAT;
    std::string name = t ? t : "";
    if (name == "float" || name == "double") {
        type = name == "double" ? KV_DOUBLE : KV_FLOAT;
        t = gettok(prsestd);
        name = t ? t : "";
    }
    if (name.empty()) return required("new variable name");
    if (chkname(name.c_str(), 1)) return 198;
    if (sysfindvar(name.c_str())) return errorf(110, "%s already defined", name.c_str());
    vable = 3;
    opable = 0;
    wgtable = 3;
    if (int rc = parse()) return rc;
    static const char* words[] = {"xb",  "stdp",     "stdf",      "residuals",
                                  "hat", "leverage", "rstandard", "cooksd"};
    static const int mins[] = {2, 4, 4, 1, 3, 3, 4, 4};
    int which = -1, count = 0;
    for (int k = 0; k < 8; ++k)
        if (findopt(words[k], mins[k], 0)) which = k, ++count;
    if (int rc = chkopt()) return rc;
    if (count > 1) return errtext(198, "only one statistic may be specified");
    if (which == 5) which = 4;
    Est e;
    if (int rc = load_est(&e, true)) return rc;
    bool needy = which >= 3 && which != 4;
    if (needy && !e.depvar) return errtext(111, "the dependent variable is not in the data");
    if ((which >= 4) && e.V0.empty()) return errtext(198, "the leverage needs the last regression");
    if (which < 0 && s_outlev <= 2) {
        c_outlev = 1;
        spout21("(option xb assumed; fitted values)\n");
    }
    initialize_xeq();
    int es = esample_var();
    // Under weights the leverage is the weighted one, w x'(X'WX)^-1 x, with
    // analytic and sampling weights scaled to a mean of 1 over the estimation
    // sample as the fit scaled them; frequency weights count copies and leave
    // it as it is.
    static ExpObj wobj; // a compiled object is large: not on the stack
    bool weighted = false;
    double wmean = 1;
    if (which >= 4) {
        char wtype[16], wexp[2048];
        estuseshort("wtype", wtype, sizeof wtype);
        estuseshort("wexp", wexp, sizeof wexp);
        const char* x = wexp;
        while (*x == '=' || *x == ' ') ++x;
        if (wtype[0] && std::strcmp(wtype, "fweight") && *x) {
            if (int rc = compexp_text(&wobj, x, x + std::strlen(x), 0, 0)) return rc;
            weighted = true;
            if (std::strcmp(wtype, "iweight")) {
                double sum = 0, c = 0;
                int64_t n = 0;
                for (int i = 1; i <= nobs; ++i) {
                    if (es && korvu_data(es, i) == 0) continue;
                    double w = xeq(&wobj, i);
                    if (w >= misval) continue;
                    accumerr(&sum, &c, w);
                    ++n;
                }
                wmean = n && sum + c > 0 ? (sum + c) / static_cast<double>(n) : 1;
            }
        }
    }
    // everything is checked: the variable is made now
    if (int rc = addvar(name.c_str(), type)) return rc;
    int nv = nvar;
    i_nvar = nvar;
    int p = e.p;
    std::vector<double> x(p);
    std::vector<double> sel(1);
    int64_t missing = 0;
    for (int i = 1; i <= nobs; ++i) {
        if ((i & 0xffff) == 0 && kvpollstd()) return 1;
        double out = misval;
        bool in = i >= nobs1 && i <= nobs2;
        if (in && ifclause) {
            xeqblock(&ifpgm, i, i, sel.data());
            in = sel[0] != 0;
        }
        // the statistics of the fit itself are for its sample only
        if (in && which >= 4 && (!es || korvu_data(es, i) == 0)) in = false;
        bool ok = in;
        for (int j = 0; ok && j < p; ++j) {
            x[j] = e.vars[j] ? korvu_data(e.vars[j], i) : 1.0;
            if (x[j] >= misval) ok = false;
        }
        double y = needy && ok ? korvu_data(e.depvar, i) : 0;
        if (y >= misval) ok = false;
        if (ok) {
            double xb = 0, xe = 0;
            for (int j = 0; j < p; ++j) accumerr(&xb, &xe, x[j] * e.b[j]);
            xb += xe;
            double r = y - xb;
            double w = 1;
            if (weighted) {
                double raw = xeq(&wobj, i);
                w = raw < misval ? raw / wmean : 0;
            }
            double h = which >= 4 ? w * quad(e.V0, x, p) : 0;
            switch (which) {
            case -1:
            case 0: out = xb; break;
            case 1: out = std::sqrt(std::max(0.0, quad(e.V, x, p))); break;
            case 2: out = std::sqrt(std::max(0.0, quad(e.V, x, p)) + e.s2); break;
            case 3: out = r; break;
            case 4: out = h; break;
            case 6:
                out = h < 1 && e.s2 > 0 && w > 0 ? r * std::sqrt(w) / std::sqrt(e.s2 * (1 - h))
                                                 : misval;
                break;
            case 7:
                out = h < 1 && e.s2 > 0 && w > 0
                          ? w * r * r * h / (e.rank * e.s2 * (1 - h) * (1 - h))
                          : misval;
                break;
            }
        }
        if (out >= misval) ++missing;
        store(nv, i, out);
    }
    if (missing && s_outlev <= 2) {
        c_outlev = 1;
        spoutf("(%lld missing value%s generated)\n", static_cast<long long>(missing),
               missing > 1 ? "s" : "");
    }
    return 0;
}

// _test coeflist | _test name = name [, accumulate]: that the coefficients
// are zero, or that two are equal; F with its p-value.
int testcmd(int) {
    std::vector<std::string> toks;
    for (;;) {
        char* t = gettok(prsestd);
        if (!t || !t[0]) break;
        toks.push_back(t);
    }
    if (toks.empty()) return errtext(198, "nothing to test");
    Est e;
    if (int rc = load_est(&e, false)) return rc;
    int p = e.p;
    auto index = [&](const std::string& n) {
        for (int j = 0; j < p; ++j)
            if (e.names[j] == n) return j;
        return -1;
    };
    std::vector<std::vector<double>> R;
    std::vector<std::string> text;
    bool equal = toks.size() == 3 && toks[1] == "=";
    if (equal) {
        int a = index(toks[0]), c = index(toks[2]);
        if (a < 0) return errorf(111, "%s not found", toks[0].c_str());
        if (c < 0) return errorf(111, "%s not found", toks[2].c_str());
        std::vector<double> r(p, 0.0);
        r[a] = 1, r[c] -= 1;
        R.push_back(r);
        text.push_back(toks[0] + " - " + toks[2] + " = 0");
    } else {
        for (auto& n : toks) {
            int a = index(n);
            if (a < 0) return errorf(111, "%s not found", n.c_str());
            std::vector<double> r(p, 0.0);
            r[a] = 1;
            R.push_back(r);
            text.push_back(n + " = 0");
        }
    }
    int q = static_cast<int>(R.size());
    // R V R' and R b
    std::vector<double> A(static_cast<size_t>(q) * q), rb(q);
    for (int i = 0; i < q; ++i) {
        double s = 0, er = 0;
        for (int j = 0; j < p; ++j) accumerr(&s, &er, R[i][j] * e.b[j]);
        rb[i] = s + er;
        for (int k = 0; k < q; ++k) {
            double u = 0, ue = 0;
            for (int a = 0; a < p; ++a)
                for (int c = 0; c < p; ++c)
                    if (R[i][a] != 0 && R[k][c] != 0)
                        accumerr(&u, &ue, R[i][a] * e.V[static_cast<size_t>(a) * p + c] * R[k][c]);
            A[static_cast<size_t>(i) * q + k] = u + ue;
        }
    }
    std::vector<int> order;
    for (int i = 0; i < q; ++i) order.push_back(i);
    sweep_in_order(A.data(), q, 0, q - 1, order);
    int rank = 0;
    double W = 0, we = 0;
    for (int i = 0; i < q; ++i) {
        if (A[static_cast<size_t>(i) * q + i] != 0) ++rank;
        for (int k = 0; k < q; ++k)
            accumerr(&W, &we, rb[i] * A[static_cast<size_t>(i) * q + k] * rb[k]);
    }
    W += we;
    double dfr = estval_get_double("df_r");
    double F = rank ? W / rank : misval;
    double pv = F < misval && dfr < misval ? ftail(rank, dfr, F) : misval;
    retval_clear();
    retval_set_scalar("drop", q - rank);
    retval_set_scalar("df_r", dfr);
    retval_set_scalar("df", rank);
    retval_set_scalar("F", F);
    retval_set_scalar("p", pv);
    if (s_outlev > 2) return 0;
    c_outlev = 1;
    spout21("\n");
    for (int i = 0; i < q; ++i) spoutf(" (%2d)  %s\n", i + 1, text[i].c_str());
    if (rank < q) spoutf("       Constraint%s dropped\n", q - rank > 1 ? "s" : "");
    spout21("\n");
    spoutf("       F(%3d,%6.0f) =%s\n", rank, dfr, safereforms("%8.2f", F));
    spoutf("%20s =%s\n", "Prob > F", safereforms("%10.4f", pv));
    return 0;
}

} // namespace korvu
