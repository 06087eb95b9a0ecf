// Linear regression: `_regress` fits by the sweep on the accumulated
// cross-products (about the means when a constant is wanted), forms the
// statistics, the robust variance when asked, posts e() and shows the ANOVA
// header and the coefficient table.
#include <cblas.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/varlist.h"
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

// What redisplay needs beyond e(): kept as the item "regress" of the
// estimation record.
struct RegRecord {
    double sumy, sumyy, N;
    int32_t hascons, hascons_decl, notfreq;
    char depname[33];
    char op[19];
    int32_t k, flag;
    double sdy;
};

struct Opts {
    bool beta = false, header = true, plus = false, mse1 = false, nocons = false, hascons = false,
         robust = false, hc2 = false, hc3 = false, tsscons = false, rssmat = false, bmat = false,
         means = false, checkorder = false;
    double level = 95;
    double dof = -1;
    std::string eform, depname, cluster;
    std::string wexp;  // the weight's expression as typed
    std::string score; // a new variable for the equation's score
};

// Compensated dot product.
double cdot(const double* a, const double* b, int n, int sb = 1) {
    double s = 0, e = 0;
    for (int i = 0; i < n; ++i) accumerr(&s, &e, a[i] * b[static_cast<size_t>(i) * sb]);
    return s + e;
}

// The fit kept for display.
struct Fit {
    int p = 0;                      // coefficients (the constant last)
    std::vector<std::string> names; // coefficient names
    std::vector<double> b, V;       // p, p x p
    std::vector<double> sdx;        // standard deviations of the regressors
    double sdy = 0;
    double N = 0, df_m = 0, df_r = 0, F = 0, r2 = 0, rmse = 0, mss = 0, rss = 0, r2_a = 0;
    double ll = misval, ll_0 = misval;
    bool cons = false;
    std::string depvar, vcetype, clustvar;
    int nclust = 0;
};

std::string fmt(const char* f, double x) {
    return safereforms(f, x);
}

// ---- the header ---------------------------------------------------------------------

void statline(const char* left, const char* label, const std::string& value) {
    c_outlev = 1;
    spoutptl(left);
    spoutptlf("%-14s= ", label);
    c_outlev = 0;
    spout21(value.c_str());
    newline();
}

std::string fvalue(double x, const char* f) {
    if (x >= misval) return std::string(7, ' ') + ".";
    return fmt(f, x);
}

bool iv_title = false; // the header of an instrumental-variables fit

void reg3_header(const Fit& f, bool anova) {
    char fl[40];
    snprintf(fl, sizeof fl, "F(%3d,%6ld) =", static_cast<int>(f.df_m), static_cast<long>(f.df_r));
    std::string nobs = fmt("%8.0f", f.N);
    std::string Fv = fvalue(f.F, "%8.2f");
    double p = f.F < misval ? ftail(f.df_m, f.df_r, f.F) : misval;
    std::string pv = fvalue(p, "%8.4f");
    std::string r2 = fvalue(f.r2, "%8.4f"), r2a = fvalue(f.r2_a, "%8.4f");
    std::string rm = " " + fmt("%7.0g", f.rmse);
    c_outlev = 1;
    if (!anova) {
        spoutptl(iv_title ? "\nInstrumental variables (2SLS) regression" : "\nLinear regression");
        spoutptl(std::string(iv_title ? 15 : 38, ' ').c_str());
        spoutptlf("%-14s= ", "Number of obs");
        c_outlev = 0;
        spout21(nobs.c_str());
        newline();
        std::string pad(55, ' ');
        c_outlev = 1;
        spoutptl(pad.c_str());
        spoutptlf("%s ", fl);
        c_outlev = 0;
        spout21(Fv.c_str());
        newline();
        statline(pad.c_str(), "Prob > F", pv);
        statline(pad.c_str(), "R-squared", r2);
        statline(pad.c_str(), "Root MSE", rm);
        spoutptl("\n");
        return;
    }
    auto ssrow = [&](const char* name, double ss, double df) {
        std::string s =
            fmt("%12.0g", ss) + fmt("%6.0f", df) + fmt("%12.0g", df > 0 ? ss / df : misval);
        c_outlev = 1;
        spoutptlf("%12s {c |}", name);
        c_outlev = 0;
        spout21(s.c_str());
    };
    std::string gap(11, ' ');
    c_outlev = 1;
    if (iv_title) spoutptl("\nInstrumental variables (2SLS) regression\n");
    spoutptl("\n      Source {c |}       SS       df       MS              ");
    spoutptlf("%-14s= ", "Number of obs");
    c_outlev = 0;
    spout21(nobs.c_str());
    newline();
    c_outlev = 1;
    spoutptlf("{hline 13}{c +}{hline 30}%s%s ", gap.c_str(), fl);
    c_outlev = 0;
    spout21(Fv.c_str());
    newline();
    ssrow("Model", f.mss, f.df_m);
    statline(gap.c_str(), "Prob > F", pv);
    ssrow("Residual", f.rss, f.df_r);
    statline(gap.c_str(), "R-squared", r2);
    c_outlev = 1;
    spoutptlf("{hline 13}{c +}{hline 30}%s", gap.c_str());
    spoutptlf("%-14s= ", "Adj R-squared");
    c_outlev = 0;
    spout21(r2a.c_str());
    newline();
    double dft = f.df_m + f.df_r;
    ssrow("Total", f.mss + f.rss, dft);
    statline(gap.c_str(), "Root MSE", rm);
    spoutptl("\n");
}

void reg3_table(const Fit& f, const Opts& o) {
    OoState st;
    st.level = o.level;
    st.df = static_cast<int>(f.df_r);
    st.beta = o.beta;
    st.eform = o.eform;
    st.vcetype = f.vcetype;
    oo_init();
    oo_rchdr(st, f.depvar.c_str());
    oo_sep();
    for (int j = 0; j < f.p; ++j) {
        bool iscons = f.cons && j == f.p - 1;
        if (iscons && !o.eform.empty()) continue;
        double se = std::sqrt(std::max(0.0, f.V[static_cast<size_t>(j) * f.p + j]));
        if (f.V[static_cast<size_t>(j) * f.p + j] == 0 && f.b[j] == 0) se = misval;
        double beta = misval;
        if (o.beta && !iscons && j < static_cast<int>(f.sdx.size()) && f.sdy > 0)
            beta = f.b[j] * f.sdx[j] / f.sdy;
        oo_coefrow(st, f.names[j].c_str(), f.b[j], se, beta);
    }
    // plus: the table stays open for rows of the caller's own
    if (o.plus)
        oo_sep();
    else
        oo_close();
}

// Below the table of an instrumental-variables fit: the regressors that were
// instrumented and the instruments, from e().
void iv_footer() {
    char il[2048], zl[2048];
    estuseshort("instd", il, sizeof il);
    estuseshort("insts", zl, sizeof zl);
    c_outlev = 1;
    spoutf("Instrumented:%s%s\n", il[0] ? " " : "", il);
    spoutf("Instruments:  %s\n", zl);
    spoutptl("{hline 78}\n");
}

// Redisplay options and the stored fit.
int load_fit(Fit* f) {
    if (!lastest) return error(301), 301;
    char buf[80];
    estuseshort("model", buf, sizeof buf);
    if (std::strcmp(buf, "ols") && std::strcmp(buf, "iv")) return error(301), 301;
    DenseMat b, V;
    if (matlink.load("_b", ET_RECORD, &b) || matlink.load("VCE", ET_RECORD, &V))
        return error(301), 301;
    f->p = b.cols;
    f->b = b.x;
    f->V = V.x;
    f->names = b.colnames;
    f->cons = !f->names.empty() && f->names.back() == "_cons";
    for (auto& n : f->names) {
        size_t c = n.find(':');
        if (c != std::string::npos) n = n.substr(c + 1);
    }
    f->N = estval_get_double("N");
    f->df_m = estval_get_double("df_m");
    f->df_r = estval_get_double("df_r");
    f->F = estval_get_double("F");
    f->r2 = estval_get_double("r2");
    f->rmse = estval_get_double("rmse");
    f->mss = estval_get_double("mss");
    f->rss = estval_get_double("rss");
    f->r2_a = estval_get_double("r2_a");
    estuseshort("depvar", buf, sizeof buf);
    f->depvar = buf;
    char vt[80];
    estval_use_vcetype(vt, sizeof vt);
    f->vcetype = vt;
    int tag;
    void* it = dmfind("regsd", ET_RECORD, &tag);
    if (it && tag >= 1) {
        std::vector<double> sd(tag);
        dmuse("regsd", ET_RECORD, nullptr, sd.data(), static_cast<long>(sizeof(double) * tag));
        f->sdy = sd[0];
        f->sdx.assign(sd.begin() + 1, sd.end());
    }
    return 0;
}

int redisplay(const Opts& o) {
    Fit f;
    if (int rc = load_fit(&f)) return rc;
    if (s_outlev > 2) return 0;
    char model[16];
    estuseshort("model", model, sizeof model);
    iv_title = !std::strcmp(model, "iv");
    if (o.header) reg3_header(f, f.vcetype.empty());
    reg3_table(f, o);
    if (iv_title) iv_footer();
    iv_title = false;
    return 0;
}

// ---- robust variance -----------------------------------------------------------------

struct Robust {
    bool on = false, hc2 = false, hc3 = false;
    int clustvar = 0;
    bool clustring = false;
};

// The meat of the sandwich, block by block from the residuals' pass: each
// observation's score w e x (e x under frequency weights, counted f times),
// divided by sqrt(1 - h) or (1 - h) for HC2 and HC3, summed within clusters.
struct Meat {
    const Robust* rb;
    const std::vector<double>* V0;
    int p = 0;
    bool cons = false;
    std::vector<double> ms, me, z, c, xi, vx, U;
    std::unordered_map<double, int> gnum;
    std::unordered_map<std::string, int> gstr;
    char sbuf[2100];
};

double cdotp(const double* a, const double* b, int n) {
    double s = 0, e = 0;
    for (int i = 0; i < n; ++i) accumerr(&s, &e, a[i] * b[i]);
    return s + e;
}

int meat_block(void* ctx, const ResidBlock& blk) {
    Meat& mt = *static_cast<Meat*>(ctx);
    const Robust& rb = *mt.rb;
    int p = mt.p, k = blk.k;
    bool fw = weclause && wgttype == WGT_FW;
    int m = 0;
    if (!rb.clustvar && !rb.hc2 && !rb.hc3 && blk.m) {
        // the plain sandwich: the scores row by row, as the block stands
        m = blk.m;
        double* sc = mt.z.data() + static_cast<size_t>(p - 1) * ACC_BLOCK;
        for (int q = 0; q < m; ++q)
            sc[q] = fw ? std::sqrt(blk.w[q]) * blk.r[q] : blk.wn[q] * blk.r[q];
        for (int a = 0; a < k; ++a) {
            const double* x = blk.x + static_cast<size_t>(a + 1) * ACC_BLOCK;
            double* z = mt.z.data() + static_cast<size_t>(a) * ACC_BLOCK;
            for (int q = 0; q < m; ++q) z[q] = sc[q] * x[q];
        }
        // without a constant the last regressor's row is the scores' own row,
        // written last above
    }
    bool plain = m > 0;
    for (int q = 0; q < blk.m && !plain; ++q) {
        for (int j = 0; j < k; ++j) mt.xi[j] = blk.x[static_cast<size_t>(j + 1) * ACC_BLOCK + q];
        if (mt.cons) mt.xi[p - 1] = 1;
        double sc = fw ? blk.r[q] : blk.wn[q] * blk.r[q];
        if (rb.hc2 || rb.hc3) {
            for (int a = 0; a < p; ++a)
                mt.vx[a] = cdotp(&(*mt.V0)[static_cast<size_t>(a) * p], mt.xi.data(), p);
            double h = (fw ? 1 : blk.wn[q]) * cdotp(mt.xi.data(), mt.vx.data(), p);
            if (h < 1) sc *= rb.hc2 ? 1 / std::sqrt(1 - h) : 1 / (1 - h);
        }
        if (rb.clustvar) {
            int g, i = blk.obs[q];
            if (rb.clustring) {
                skorvu_data(rb.clustvar, i, mt.sbuf);
                g = mt.gstr.emplace(mt.sbuf, static_cast<int>(mt.gstr.size())).first->second;
            } else {
                double key = korvu_data(rb.clustvar, i);
                g = mt.gnum.emplace(key, static_cast<int>(mt.gnum.size())).first->second;
            }
            if (static_cast<size_t>(g + 1) * p > mt.U.size())
                mt.U.resize(static_cast<size_t>(g + 1) * p, 0.0);
            double f = fw ? blk.w[q] : 1;
            for (int a = 0; a < p; ++a) mt.U[static_cast<size_t>(g) * p + a] += f * sc * mt.xi[a];
        } else {
            double f = fw ? std::sqrt(blk.w[q]) : 1;
            for (int a = 0; a < p; ++a)
                mt.z[static_cast<size_t>(a) * ACC_BLOCK + m] = f * sc * mt.xi[a];
            ++m;
        }
    }
    if (m) {
        cblas_dsyrk(CblasRowMajor, CblasLower, CblasNoTrans, p, m, 1.0, mt.z.data(), ACC_BLOCK, 0.0,
                    mt.c.data(), p);
        for (int a = 0; a < p; ++a)
            for (int q = 0; q <= a; ++q) {
                size_t at = static_cast<size_t>(a) * p + q;
                accumerr(&mt.ms[at], &mt.me[at], mt.c[at]);
            }
    }
    return 0;
}

// Residual sum of squares, the residuals' cross-products with the
// regressors and, when robust, the meat and the number of clusters.
int ess_pass(const std::vector<int>& vars, const std::vector<double>& b, bool cons,
             const std::vector<double>& V0, double wscale, const Robust& rb, double* rss,
             std::vector<double>* meat, int* nclust, std::vector<double>* xr) {
    int k = static_cast<int>(vars.size()) - 1;
    int p = k + (cons ? 1 : 0);
    Meat mt;
    mt.rb = &rb, mt.V0 = &V0, mt.p = p, mt.cons = cons;
    if (rb.on) {
        mt.ms.assign(static_cast<size_t>(p) * p, 0.0);
        mt.me.assign(mt.ms.size(), 0.0);
        mt.c.assign(mt.ms.size(), 0.0);
        mt.z.assign(static_cast<size_t>(p) * ACC_BLOCK, 0.0);
        mt.xi.assign(p, 0.0);
        mt.vx.assign(p, 0.0);
    }
    if (int rc = resid_pass(vars, b, cons, wscale, rb.clustvar, rss, xr,
                            rb.on ? meat_block : nullptr, &mt))
        return rc;
    if (!rb.on) return 0;
    if (rb.clustvar) {
        int G = static_cast<int>(rb.clustring ? mt.gstr.size() : mt.gnum.size());
        *nclust = G;
        for (int g = 0; g < G; ++g)
            for (int a = 0; a < p; ++a)
                for (int q = 0; q <= a; ++q) {
                    size_t at = static_cast<size_t>(a) * p + q;
                    accumerr(&mt.ms[at], &mt.me[at],
                             mt.U[static_cast<size_t>(g) * p + a] *
                                 mt.U[static_cast<size_t>(g) * p + q]);
                }
    }
    meat->assign(static_cast<size_t>(p) * p, 0.0);
    for (int a = 0; a < p; ++a)
        for (int q = 0; q <= a; ++q) {
            size_t at = static_cast<size_t>(a) * p + q;
            (*meat)[at] = (*meat)[static_cast<size_t>(q) * p + a] = mt.ms[at] + mt.me[at];
        }
    return 0;
}

// V0 M V0 with compensated sums.
std::vector<double> sandwich(const std::vector<double>& V0, const std::vector<double>& M, int p) {
    std::vector<double> T(static_cast<size_t>(p) * p), R(T.size());
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j)
            T[static_cast<size_t>(i) * p + j] = cdot(&V0[static_cast<size_t>(i) * p], &M[j], p, p);
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < p; ++j)
            R[static_cast<size_t>(i) * p + j] = cdot(&T[static_cast<size_t>(i) * p], &V0[j], p, p);
    for (int i = 0; i < p; ++i)
        for (int j = 0; j < i; ++j) {
            double a = (R[static_cast<size_t>(i) * p + j] + R[static_cast<size_t>(j) * p + i]) / 2;
            R[static_cast<size_t>(i) * p + j] = R[static_cast<size_t>(j) * p + i] = a;
        }
    return R;
}

// The Wald statistic that the slopes are zero: b' V^-1 b over the slopes
// not dropped; its rank in *rank. Missing when nothing can be tested.
double tzero(const std::vector<double>& b, const std::vector<double>& V, int p, int ns, int* rank) {
    std::vector<int> keep;
    for (int j = 0; j < ns; ++j)
        if (V[static_cast<size_t>(j) * p + j] > 0) keep.push_back(j);
    int r = static_cast<int>(keep.size());
    *rank = 0;
    if (!r) return misval;
    std::vector<double> a(static_cast<size_t>(r) * r);
    for (int i = 0; i < r; ++i)
        for (int j = 0; j < r; ++j)
            a[static_cast<size_t>(i) * r + j] = V[static_cast<size_t>(keep[i]) * p + keep[j]];
    std::vector<int> order;
    for (int i = 0; i < r; ++i) order.push_back(i);
    if (sweep_in_order(a.data(), r, 0, r - 1, order)) return misval;
    std::vector<double> bb(r);
    for (int i = 0; i < r; ++i) bb[i] = b[keep[i]];
    double s = 0, e = 0;
    for (int i = 0; i < r; ++i) {
        if (a[static_cast<size_t>(i) * r + i] != 0) ++*rank;
        for (int j = 0; j < r; ++j)
            accumerr(&s, &e, bb[i] * a[static_cast<size_t>(i) * r + j] * bb[j]);
    }
    return s + e;
}

// The instruments' group of `regress y x1 x2 (z1 z2 x2)`: its text is taken
// out of the line (left as blanks) before the rest is parsed.
int take_instruments(std::string* text, bool* iv) {
    char* p = peektok_chr();
    *iv = false;
    char quote = 0;
    char* open = nullptr;
    for (char* c = p; *c; ++c) {
        if (quote) {
            if (*c == quote) quote = 0;
            continue;
        }
        if (*c == '"') quote = '"';
        if (*c == ',' && !open) return 0;
        if (*c == '(') {
            if (open) return error(198);
            // an operator's list (L(1/2).x) or an expression is not a group
            if (c > p && (std::isalnum(static_cast<unsigned char>(c[-1])) || c[-1] == '.'))
                return 0;
            open = c;
        } else if (*c == ')' && open) {
            text->assign(open + 1, c);
            for (char* q = open; q <= c; ++q) *q = ' ';
            *iv = true;
            return 0;
        }
    }
    return open ? error(198) : 0;
}

// The instruments' variables, read with the command's state kept.
int read_instruments(const std::string& text, std::vector<int>* out) {
    std::vector<char> buf(text.begin(), text.end());
    buf.push_back(0);
    TokState saved;
    borrow_gettok(&saved);
    settok(buf.data());
    int32_t svn = lnvar;
    std::vector<int> keep(varlist_vr, varlist_vr + lnvar);
    int rc = ssvlist(prsestd, 0);
    if (!rc) out->assign(varlist_vr, varlist_vr + lnvar);
    lnvar = svn;
    for (int j = 0; j < svn; ++j) varlist_vr[j] = keep[j];
    return_gettok(&saved);
    return rc;
}

int parse_opts(Opts* o) {
    o->beta = findopt("beta", 1, 0);
    o->header = findopt("header", 2, 1);
    o->plus = findopt("plus", 4, 0);
    if (int rc = findlevel(1)) return rc;
    o->level = cilevel;
    char buf[200] = "";
    findargasis("eform", 2, buf, sizeof buf);
    o->eform = buf;
    double d;
    if (findoptv("dof", 3, &d, 1, 0)) {
        if (d <= 0 || d >= 2147483647.0) return error(198);
        o->dof = d;
    }
    o->rssmat = findopt("rssmat", 6, 0);
    o->bmat = findopt("bmat", 4, 0);
    o->means = findopt("means", 1, 0);
    o->nocons = findopt("noconstant", 1, 0);
    o->hascons = findopt("hascons", 1, 0);
    o->mse1 = findopt("mse1", 2, 0);
    o->checkorder = findopt("checkorder", 10, 0);
    o->tsscons = findopt("tsscons", 7, 0);
    buf[0] = 0;
    findargn("depname", 3, buf, sizeof buf, 1);
    o->depname = buf;
    // the robust family
    o->robust = findopt("robust", 1, 0);
    buf[0] = 0;
    findargn("cluster", 2, buf, sizeof buf, 1);
    o->cluster = buf;
    char score[200] = "";
    findargn("score", 2, score, sizeof score, 4);
    o->hc2 = findopt("hc2", 3, 0);
    o->hc3 = findopt("hc3", 3, 0);
    if (o->tsscons) o->rssmat = true;
    if (int rc = chkopt()) return rc;
    if (score[0]) {
        std::string_view sv(score);
        if (sv.find(' ') != std::string_view::npos) return error(103);
        if (chkname(score, 1)) return 198;
        if (sysfindvar(score)) return errorf(110, "%s already defined", score);
        o->score = score;
    }
    if (o->hc2 && o->hc3) return errtext(198, "options hc2 and hc3 may not be combined");
    return 0;
}

} // namespace

int regresscmd(int) {
    std::string ivtext;
    bool iv = false;
    if (int rc = take_instruments(&ivtext, &iv)) return rc;
    vable = 0;
    byable = opable = wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW | WGT_PW;
    if (int rc = parse()) return rc;
    std::vector<int> mainvars(varlist_vr, varlist_vr + lnvar);
    Opts o;
    o.wexp = wgtexptext;
    if (int rc = parse_opts(&o)) return rc;
    std::vector<int> zvars;
    if (iv) {
        if (int rc = read_instruments(ivtext, &zvars)) return rc;
        lnvar = static_cast<int>(mainvars.size());
        for (int j = 0; j < lnvar; ++j) varlist_vr[j] = mainvars[j];
        if (lnvar == 0) return error(102);
    }
    if (lnvar == 0) {
        if (o.nocons) return error(102);
        return redisplay(o);
    }
    if (weclause)
        if (int rc = wgtdflt(WGT_AW)) return rc;
    if (!o.cluster.empty() && o.beta)
        return errtext(184, "options cluster() and beta may not be combined");
    if (o.hc2 || o.hc3) o.robust = true;
    if (!o.cluster.empty()) o.robust = true, o.hc2 = o.hc3 = false;
    if (weclause && wgttype == WGT_PW) o.robust = true;
    if (o.robust && weclause && wgttype == WGT_IW) return error(5101);
    if (o.hascons) o.nocons = true;
    if (iv && (o.hascons || !o.cluster.empty() || o.hc2 || o.hc3)) o.hc2 = o.hc3 = false;
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    for (int v : vars)
        if (isstrtype(typlist[v - 1])) return errtext(109, "type mismatch");
    for (int v : zvars)
        if (isstrtype(typlist[v - 1])) return errtext(109, "type mismatch");
    // the instruments not among the regressors follow them in the pass
    std::vector<int> allvars = vars;
    for (int v : zvars)
        if (std::find(allvars.begin() + 1, allvars.end(), v) == allvars.end()) allvars.push_back(v);
    if (static_cast<int>(allvars.size()) > matsize - 2) return error(908);
    Robust rb;
    rb.on = o.robust;
    rb.hc2 = o.hc2, rb.hc3 = o.hc3;
    if (!o.cluster.empty()) {
        int cv = korvu_findvar(o.cluster.c_str(), 0, 0);
        if (cv < 0) return -cv;
        rb.clustvar = cv;
        rb.clustring = isstrtype(typlist[cv - 1]);
    }
    int k = lnvar - 1;
    bool cons = !o.nocons;
    bool dev = cons && !o.hascons;
    std::string depvar = o.depname.empty() ? std::string(varname(vars[0])) : o.depname;
    std::vector<std::string> names;
    for (int j = 1; j <= k; ++j) names.push_back(varname(vars[j]));
    if (cons) names.push_back("_cons");
    int p = k + (cons ? 1 : 0);
    if (p == 0) return error(102);
    std::string clustname = rb.clustvar ? varname(rb.clustvar) : "";
    initialize_xeq();
    // Nothing has changed so far. From here a failure leaves no estimates.
    ab_est(0);
    std::vector<uint8_t> used;
    AccRequest want;
    want.vars = allvars;
    want.deviations = dev;
    want.used = &used;
    want.markout = rb.clustvar;
    AccResult acc;
    if (int rc = accum_data(want, &acc)) return ab_est(1), rc;
    if (weclause && (wgttype == WGT_AW || wgttype == WGT_PW)) show_sumwgt(acc.sumw);
    if (int rc = check_n(acc.N)) return ab_est(1), rc;
    double N = acc.N;
    int K = k + 1;
    auto A = [&](int i, int j) { return acc.at(i, j); };
    // the regressors' block, its inverse by the sweep in order
    std::vector<double> xx(static_cast<size_t>(k) * k), inv;
    std::vector<double> xy(k);
    for (int i = 0; i < k; ++i) {
        xy[i] = A(i + 2, 1);
        for (int j = 0; j < k; ++j) xx[static_cast<size_t>(i) * k + j] = A(i + 2, j + 2);
    }
    if (iv && k) {
        // two-stage least squares: X'Z (Z'Z)^-1 Z'X and X'Z (Z'Z)^-1 Z'y
        int nz = static_cast<int>(zvars.size());
        std::vector<int> zpos;
        for (int v : zvars)
            zpos.push_back(
                static_cast<int>(std::find(allvars.begin(), allvars.end(), v) - allvars.begin()) +
                1);
        std::vector<double> zz(static_cast<size_t>(nz) * nz), ord;
        for (int i = 0; i < nz; ++i)
            for (int j = 0; j < nz; ++j) zz[static_cast<size_t>(i) * nz + j] = A(zpos[i], zpos[j]);
        std::vector<int> order;
        for (int i = 0; i < nz; ++i) order.push_back(i);
        if (nz && sweep_in_order(zz.data(), nz, 0, nz - 1, order)) return ab_est(1), 1;
        // T = (Z'Z)^-1 Z'X (nz x k) and t = (Z'Z)^-1 Z'y
        std::vector<double> T(static_cast<size_t>(nz) * k), tz(nz);
        for (int a = 0; a < nz; ++a) {
            double s1 = 0, e1 = 0;
            for (int c = 0; c < nz; ++c)
                accumerr(&s1, &e1, zz[static_cast<size_t>(a) * nz + c] * A(zpos[c], 1));
            tz[a] = s1 + e1;
            for (int j = 0; j < k; ++j) {
                double s2 = 0, e2 = 0;
                for (int c = 0; c < nz; ++c)
                    accumerr(&s2, &e2, zz[static_cast<size_t>(a) * nz + c] * A(zpos[c], j + 2));
                T[static_cast<size_t>(a) * k + j] = s2 + e2;
            }
        }
        for (int i = 0; i < k; ++i) {
            double s1 = 0, e1 = 0;
            for (int a = 0; a < nz; ++a) accumerr(&s1, &e1, A(i + 2, zpos[a]) * tz[a]);
            xy[i] = s1 + e1;
            for (int j = 0; j < k; ++j) {
                double s2 = 0, e2 = 0;
                for (int a = 0; a < nz; ++a)
                    accumerr(&s2, &e2, A(i + 2, zpos[a]) * T[static_cast<size_t>(a) * k + j]);
                xx[static_cast<size_t>(i) * k + j] = s2 + e2;
            }
        }
        for (int i = 0; i < k; ++i)
            for (int j = 0; j < i; ++j) {
                double v =
                    (xx[static_cast<size_t>(i) * k + j] + xx[static_cast<size_t>(j) * k + i]) / 2;
                xx[static_cast<size_t>(i) * k + j] = xx[static_cast<size_t>(j) * k + i] = v;
            }
    }
    inv = xx;
    if (k) {
        std::vector<int> order;
        for (int i = 0; i < k; ++i) order.push_back(i);
        if (sweep_in_order(inv.data(), k, 0, k - 1, order)) return ab_est(1), 1;
    }
    std::vector<double> bs(k, 0.0);
    for (int i = 0; i < k; ++i) bs[i] = cdot(&inv[static_cast<size_t>(i) * k], xy.data(), k);
    // refinement on the normal equations, each step gaining what the
    // inverse's own accuracy allows
    for (int step = 0; k && step < 4; ++step) {
        std::vector<double> r(k), d(k);
        for (int i = 0; i < k; ++i) {
            double s = xy[i], e = 0;
            for (int j = 0; j < k; ++j)
                accumerr(&s, &e, -xx[static_cast<size_t>(i) * k + j] * bs[j]);
            r[i] = s + e;
        }
        for (int i = 0; i < k; ++i) d[i] = cdot(&inv[static_cast<size_t>(i) * k], r.data(), k);
        for (int i = 0; i < k; ++i)
            if (inv[static_cast<size_t>(i) * k + i] != 0) bs[i] += d[i];
    }
    int rank = 0;
    for (int i = 0; i < k; ++i) rank += inv[static_cast<size_t>(i) * k + i] != 0;
    // coefficients and the unscaled variance, the constant rebuilt from the means
    std::vector<double> b(p, 0.0), V0(static_cast<size_t>(p) * p, 0.0);
    for (int i = 0; i < k; ++i) {
        b[i] = inv[static_cast<size_t>(i) * k + i] != 0 ? bs[i] : 0;
        for (int j = 0; j < k; ++j)
            V0[static_cast<size_t>(i) * p + j] = inv[static_cast<size_t>(i) * k + j];
    }
    const std::vector<double>& mu = acc.mean; // mu[0] is y
    if (cons) {
        double s = mu[0], e = 0;
        for (int j = 0; j < k; ++j) accumerr(&s, &e, -mu[j + 1] * b[j]);
        b[p - 1] = s + e;
        for (int i = 0; i < k; ++i) {
            if (inv[static_cast<size_t>(i) * k + i] == 0) continue;
            double t = 0, te = 0;
            for (int j = 0; j < k; ++j)
                accumerr(&t, &te, -mu[j + 1] * inv[static_cast<size_t>(i) * k + j]);
            V0[static_cast<size_t>(i) * p + p - 1] = V0[static_cast<size_t>(p - 1) * p + i] =
                t + te;
        }
        double t = 1 / N, te = 0;
        for (int i = 0; i < k; ++i)
            accumerr(&t, &te, -mu[i + 1] * V0[static_cast<size_t>(i) * p + p - 1]);
        V0[static_cast<size_t>(p) * p - 1] = t + te;
        ++rank;
    }
    Fit f;
    f.p = p, f.names = names, f.cons = cons, f.depvar = depvar, f.N = N;
    // tsscons: sums of squares about the mean even without a constant, so
    // that R-squared and F compare the fit with the constant-only model
    bool aboutmean = cons || o.hascons || o.tsscons;
    f.df_m = rank - (aboutmean ? 1 : 0);
    if (f.df_m < 0) f.df_m = 0;
    f.df_r = o.dof > 0 ? o.dof : N - rank;
    double sumy = dev ? mu[0] * N : A(1, 0);
    double T = A(1, 1); // y'y, about the mean in deviation form
    double S = cdot(bs.data(), xy.data(), k);
    double tss, rss, mss;
    double wscale = 1;
    if (weclause && (wgttype == WGT_AW || wgttype == WGT_PW) && acc.sumw != 0)
        wscale = acc.nobs / acc.sumw;
    std::vector<double> meat;
    int nclust = 0;
    if (!dev) {
        bool hc = o.hascons || o.tsscons;
        tss = hc ? T - sumy * sumy / N : T;
        rss = T - S;
        if (rss < 0) {
            rss = 0;
            mss = tss;
        } else {
            mss = hc ? S - sumy * sumy / N : S;
        }
        if (mss < 0) mss = 0;
        if (rb.on || iv) {
            // two-stage least squares: y'y - b'X'y is not the residual sum,
            // which comes from the pass over the data
            double ess;
            std::vector<double> xr;
            if (int rc = ess_pass(vars, b, cons, V0, wscale, rb, &ess, &meat, &nclust, &xr))
                return ab_est(1), rc;
            if (iv) rss = ess, mss = tss - rss;
        }
    } else {
        tss = T;
        std::vector<double> xr;
        if (int rc = ess_pass(vars, b, cons, V0, wscale, rb, &rss, &meat, &nclust, &xr))
            return ab_est(1), rc;
        // the residuals' cross-products with the regressors refine b once more,
        // and the sum of squares with it
        std::vector<double> db(p);
        for (int i = 0; i < p; ++i) db[i] = cdot(&V0[static_cast<size_t>(i) * p], xr.data(), p);
        double rs = rss, re = 0;
        for (int i = 0; i < p && !iv; ++i) {
            if (V0[static_cast<size_t>(i) * p + i] == 0) continue;
            b[i] += db[i];
            accumerr(&rs, &re, -db[i] * xr[i]);
        }
        rss = rs + re;
        if (rss < 0) rss = 0;
        mss = tss - rss;
        // Two-stage least squares can leave residuals larger than the total:
        // the residual sum stands, since the variance is built on it, and the
        // model sum is negative (R-squared and F then missing).
        if (mss < 0 && !iv) mss = 0, rss = tss;
        if (k == 0) mss = 0, rss = tss;
    }
    double mse = f.df_r >= 1 ? rss / f.df_r : 0;
    if (o.mse1) mse = 1;
    double r2 = misval;
    if (tss > 0) {
        r2 = 1 - rss / tss;
        if (r2 > 0.99999999999999) {
            r2 = 1, mss = tss, rss = 0;
            mse = o.mse1 ? 1 : 0;
        }
        if (r2 < 0) r2 = misval;
    }
    double F = 0;
    if (f.df_m > 0 || k > 0) {
        F = (mse > 0 && f.df_m > 0) ? (mss / f.df_m) / mse : misval;
        if (F < 0) F = misval;
    }
    double r2a = misval;
    if (r2 < misval && f.df_r > 0) r2a = 1 - (1 - r2) * (aboutmean ? N - 1 : N) / f.df_r;
    f.V.assign(static_cast<size_t>(p) * p, 0.0);
    for (size_t i = 0; i < f.V.size(); ++i) f.V[i] = V0[i] * mse;
    if (rb.on) {
        double nk = N - rank;
        double scale = 1;
        if (rb.clustvar)
            scale = nclust > 1 && nk > 0 ? (N - 1) / nk * nclust / (nclust - 1.0) : misval;
        else if (!rb.hc2 && !rb.hc3)
            scale = nk > 0 ? N / nk : misval;
        f.V = sandwich(V0, meat, p);
        for (double& x : f.V) x = scale < misval ? x * scale : 0;
        int wr;
        double W = tzero(b, f.V, p, k, &wr);
        F = (W < misval && wr > 0 && wr >= f.df_m && f.df_m > 0) ? W / wr : misval;
        f.vcetype = rb.hc2 ? "Robust HC2" : rb.hc3 ? "Robust HC3" : "Robust";
        f.clustvar = clustname;
        f.nclust = nclust;
    }
    f.b = b;
    f.F = F, f.r2 = r2, f.rmse = std::sqrt(mse), f.mss = mss, f.rss = rss, f.r2_a = r2a;
    if (rss > 0 && rss < misval) {
        f.ll = -0.5 * N * (std::log(2 * M_PI) + std::log(rss / N) + 1);
        // the constant-only model's: its residual sum of squares is the total
        // about the mean, also when the fit without a constant is worse
        double rss0 = (o.tsscons && !cons && !o.hascons) ? tss : rss + mss;
        if (aboutmean) f.ll_0 = -0.5 * N * (std::log(2 * M_PI) + std::log(rss0 / N) + 1);
    }
    // standard deviations for beta
    double denom = N > 1 ? N - 1 : 1;
    auto sdof = [&](int pos) {
        double v = dev ? A(pos, pos) : A(pos, pos) - A(pos, 0) * A(pos, 0) / N;
        return v > 0 ? std::sqrt(v / denom) : 0.0;
    };
    f.sdy = sdof(1);
    for (int j = 0; j < k; ++j) f.sdx.push_back(sdof(j + 2));
    (void)K;
    // post
    DenseMat eb, eV;
    eb.rows = 1, eb.cols = p, eb.x = b, eb.rownames = {"y1"}, eb.colnames = names;
    eV.rows = eV.cols = p, eV.x = f.V, eV.rownames = names, eV.colnames = names;
    eV.symmetric_storage = true;
    if (matlink.save("_b", ET_RECORD, eb) || matlink.save("VCE", ET_RECORD, eV))
        return ab_est(1), error(950);
    std::vector<double> sds;
    sds.push_back(f.sdy);
    sds.insert(sds.end(), f.sdx.begin(), f.sdx.end());
    dmsave("regsd", ET_RECORD, static_cast<int>(sds.size()), sds.data(),
           sizeof(double) * sds.size());
    RegRecord rec{};
    rec.sumy = sumy, rec.sumyy = dev ? T + sumy * sumy / N : T, rec.N = N;
    rec.hascons = cons, rec.hascons_decl = o.hascons;
    rec.notfreq = weclause && wgttype != WGT_FW;
    snprintf(rec.depname, sizeof rec.depname, "%s", depvar.c_str());
    rec.k = p;
    rec.sdy = f.sdy;
    dmsave("regress", ET_RECORD, 0, &rec, sizeof rec);
    dmsave("regV0", ET_RECORD, p * p, V0.data(), sizeof(double) * V0.size());
    // the sample marker: the old one is refilled (nothing moves), or a new
    // one goes at the end
    int mark = esample_var();
    if (!mark || typlist[mark - 1] != KV_BYTE) {
        if (int rc = marker_new(&mark)) return ab_est(1), rc;
    }
    for (int i = 1; i <= nobs; ++i) bstore(mark, i, used[i - 1]);
    // the score of each observation's equation, d lnL / d xb = e / s^2: what
    // _robust takes to rebuild a sandwich over the model-based variance
    if (!o.score.empty()) {
        if (int rc = addvar(o.score.c_str(), KV_DOUBLE)) return rc;
        int sv = nvar;
        i_nvar = nvar; // a variable of the user's, kept after the command
        double* out = reinterpret_cast<double*>(colbase_w(sv, nullptr));
        for (int i = 1; i <= nobs; ++i) {
            double v = misval;
            if (used[i - 1] && mse > 0) {
                double xb = 0, xe = 0;
                for (int j = 0; j < k; ++j) accumerr(&xb, &xe, b[j] * korvu_data(vars[j + 1], i));
                if (cons) accumerr(&xb, &xe, b[p - 1]);
                v = (korvu_data(vars[0], i) - (xb + xe)) / mse;
            }
            out[i - 1] = v;
        }
    }
    lastest = 18;
    lastest_op = 0;
    estval_reset_scalar("N", N);
    estval_reset_scalar("df_m", f.df_m);
    estval_reset_scalar("df_r", f.df_r);
    estval_reset_scalar("F", F);
    estval_reset_scalar("r2", r2);
    estval_reset_scalar("rmse", f.rmse);
    estval_reset_scalar("mss", mss);
    estval_reset_scalar("rss", rss);
    estval_reset_scalar("r2_a", r2a);
    estval_reset_scalar("ll", f.ll);
    estval_reset_scalar("ll_0", f.ll_0);
    if (rb.clustvar) {
        estval_save_N_clust(nclust);
        estval_save_clustvar(clustname.c_str());
    }
    estval_reset_local("depvar", depvar.c_str());
    estval_reset_local("model", iv ? "iv" : "ols");
    estval_reset_local("estat_cmd", "regress_estat");
    estval_reset_local("predict", iv ? "regriv_p" : "regres_p");
    if (!o.score.empty()) estval_reset_local("scorevars", o.score.c_str());
    if (iv) {
        std::string zl, il;
        for (int v : zvars) zl += (zl.empty() ? "" : " ") + std::string(varname(v));
        for (int j = 1; j < static_cast<int>(vars.size()); ++j)
            if (std::find(zvars.begin(), zvars.end(), vars[j]) == zvars.end())
                il += (il.empty() ? "" : " ") + std::string(varname(vars[j]));
        estval_reset_local("insts", zl.c_str());
        estval_reset_local("instd", il.c_str());
    }
    estval_reset_local("properties", "b V");
    if (matlink.drop) matlink.drop("means", ET_MATRIX); // a former fit's
    if (o.means && k > 0) {
        // the regressors' (weighted) means over the estimation sample
        DenseMat em;
        em.rows = 1, em.cols = k, em.rownames = {"mean"};
        for (int j = 0; j < k; ++j) {
            em.x.push_back(dev ? mu[j + 1] : (N != 0 ? A(j + 2, 0) / N : 0));
            em.colnames.push_back(names[j]);
        }
        if (int rc = matlink.save("means", ET_MATRIX, em)) return ab_est(1), error(rc);
    }
    if (rb.on) estval_resave_vcetype(f.vcetype.c_str());
    if (weclause) {
        static const char* wn[] = {"", "aweight", "fweight", "", "pweight", "", "", "", "iweight"};
        estval_reset_local("wtype", wn[wgttype]);
        estval_reset_local("wexp", ("= " + o.wexp).c_str());
    }
    if (s_outlev > 2) return 0;
    iv_title = iv;
    if (o.header) reg3_header(f, !rb.on);
    iv_title = false;
    reg3_table(f, o);
    if (iv) iv_footer();
    return 0;
}

namespace {

// _b[name] and _se[name] in expressions: the coefficient or its standard
// error from the last estimates; 301 without them, 111 for a name not there.
int coefvalue(int se, const char* name, double* out) {
    std::string want;
    for (const char* c = name; *c; ++c)
        if (*c != ' ') want += *c;
    if (!lastest || !matlink.load) return error(301), 301;
    DenseMat b, V;
    if (matlink.load("_b", ET_RECORD, &b)) return error(301), 301;
    for (int j = 0; j < b.cols; ++j) {
        const std::string& n = b.colnames[j];
        size_t c = n.find(':');
        bool match = n == want || (c != std::string::npos && want.find(':') == std::string::npos &&
                                   n.compare(c + 1, std::string::npos, want) == 0);
        if (!match) continue;
        if (!se) return *out = b.x[j], 0;
        if (matlink.load("VCE", ET_RECORD, &V)) return *out = misval, 0;
        double v = V.at(j, j);
        *out = v > 0 && v < misval ? std::sqrt(v) : (v == 0 ? 0 : misval);
        return 0;
    }
    return errorf(111, "[%s] not found", want.c_str());
}

} // namespace

void link_regress() {
    // one thread: the small products of a block gain nothing from more
    openblas_set_num_threads(1);
    exphooks.coef = coefvalue;
    matrix_accum_hooks[0] = accumcmd;
    matrix_accum_hooks[1] = glsaccumcmd;
    matrix_accum_hooks[2] = opaccumcmd;
    matrix_accum_hooks[3] = vecaccumcmd;
}

} // namespace korvu
