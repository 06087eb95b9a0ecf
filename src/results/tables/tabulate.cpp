// tabulate: one-way tables of frequencies (with the summary of a second
// variable in the cells on request) and two-way tables with percentages,
// tests and measures of association.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/groups/groups.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/distrib/distrib.h"
#include "results/matrix/matrix.h"
#include "results/stores.h"
#include "results/summarize.h"
#include "results/tables/tables.h"
#include "results/tables/tables_internal.h"

namespace korvu {

namespace {

// The categories of one variable over the sample, in sorted order, and the
// means to find the category of any value (-1: none, or a missing value left
// out). Nothing is kept per observation: the passes read the data again.
struct Classes {
    int var = 0;
    bool isstr = false;
    bool withmissing = false;
    std::vector<double> vals;      // numeric categories, ascending (missing last)
    std::vector<std::string> strs; // string categories, in byte order
    int nonmiss = 0;               // categories before the missing ones
    bool dense = false;            // whole numbers: idx[x - lo]
    double lo = 0;
    std::vector<int> idx;
    std::unordered_map<std::string, int> smap;
    int k() const { return static_cast<int>(isstr ? strs.size() : vals.size()); }
    int code(double x) const {
        if (x >= misval) {
            if (!withmissing) return -1;
            for (size_t j = nonmiss; j < vals.size(); j++)
                if (vals[j] == x) return static_cast<int>(j);
            return -1;
        }
        if (dense) {
            double d = x - lo;
            if (d < 0 || d >= static_cast<double>(idx.size()) || x != std::floor(x)) return -1;
            return idx[static_cast<size_t>(d)];
        }
        auto e = vals.begin() + nonmiss;
        auto it = std::lower_bound(vals.begin(), e, x);
        return it != e && *it == x ? static_cast<int>(it - vals.begin()) : -1;
    }
    int code(const char* s) const {
        if (!*s && !withmissing) return -1;
        auto it = smap.find(s);
        return it == smap.end() ? -1 : it->second;
    }
    // the category of observation i
    int codeof(int i, char* buf) const {
        if (isstr) return code(skorvu_data(var, i, buf));
        return code(korvu_data(var, i));
    }
};

// Finds the categories; with `counts` also the sum of the weights in each
// (done in the last pass where the categories allow it, else in one more).
int classify(int v, const Sample& S, bool withmissing, Classes* cl, std::vector<double>* counts) {
    cl->var = v;
    cl->isstr = isstrtype(typlist[v - 1]);
    cl->withmissing = withmissing;
    size_t n = S.size();
    std::vector<char> buf(KV_STRMAX + 2);
    bool counted = false;
    if (cl->isstr) {
        std::vector<double> raw; // weights by first-seen id
        for (size_t k = 0; k < n; k++) {
            if ((k & 0xffff) == 0 && kvpollstd()) return 1;
            skorvu_data(v, S.at(k), buf.data());
            if (!buf[0] && !withmissing) continue;
            auto it = cl->smap.find(buf.data());
            if (it == cl->smap.end()) {
                it = cl->smap.emplace(buf.data(), static_cast<int>(cl->strs.size())).first;
                cl->strs.emplace_back(buf.data());
                raw.push_back(0);
            }
            raw[it->second] += S.wt(k);
        }
        std::vector<int> order(cl->strs.size());
        for (size_t j = 0; j < order.size(); j++) order[j] = static_cast<int>(j);
        std::sort(order.begin(), order.end(),
                  [&](int a, int b) { return cl->strs[a] < cl->strs[b]; });
        std::vector<std::string> sorted(order.size());
        if (counts) counts->assign(order.size(), 0);
        for (size_t j = 0; j < order.size(); j++) {
            sorted[j] = cl->strs[order[j]];
            cl->smap[sorted[j]] = static_cast<int>(j);
            if (counts) (*counts)[j] = raw[order[j]];
        }
        cl->strs.swap(sorted);
        return 0;
    }
    // whole numbers of a small range over all observations: counted in one
    // pass straight from the column through the direct table of the groups
    if (S.all && counts) {
        GDirect d;
        int rc = gdirect_make(&d, v, S.i0, S.i1, nullptr, true);
        if (rc > 0) return rc;
        if (rc == 0 && !(withmissing && d.hasmiss)) {
            std::vector<double> c(static_cast<size_t>(d.span));
            if (int rc2 = gdirect_stat(d, GStatReq{GS_TOTALOBS, 0}, nullptr, nullptr, 0, nullptr,
                                       c.data(), nullptr))
                return rc2;
            cl->dense = true;
            cl->lo = d.lo;
            cl->idx.assign(c.size(), -1);
            counts->clear();
            for (size_t s = 0; s < c.size(); s++)
                if (c[s] > 0) {
                    cl->idx[s] = static_cast<int>(cl->vals.size());
                    cl->vals.push_back(d.lo + static_cast<double>(s));
                    counts->push_back(c[s]);
                }
            cl->nonmiss = static_cast<int>(cl->vals.size());
            return 0;
        }
    }
    // numbers: the range, whether all are whole, and the missing values seen
    double mn = 0, mx = 0;
    bool whole = true, any = false;
    std::vector<double> miss;
    for (size_t k = 0; k < n; k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        double t = korvu_data(v, S.at(k));
        if (t >= misval) {
            if (withmissing && std::find(miss.begin(), miss.end(), t) == miss.end())
                miss.push_back(t);
            continue;
        }
        if (!any) mn = mx = t, any = true;
        mn = t < mn ? t : mn;
        mx = t > mx ? t : mx;
        if (whole && t != std::floor(t)) whole = false;
    }
    std::sort(miss.begin(), miss.end());
    if (any && whole && mx - mn < 2e7) {
        // whole values in a modest range: presence marked in place, and the
        // weights summed beside it when the range is small
        size_t span = static_cast<size_t>(mx - mn) + 1;
        cl->dense = true;
        cl->lo = mn;
        cl->idx.assign(span, -1);
        bool count_here = counts && span <= (size_t(1) << 20);
        std::vector<double> dc(count_here ? span : 0, 0.0);
        std::vector<double> mc(miss.size(), 0.0);
        for (size_t k = 0; k < n; k++) {
            if ((k & 0xffff) == 0 && kvpollstd()) return 1;
            double t = korvu_data(v, S.at(k));
            if (t >= misval) {
                if (count_here && withmissing)
                    mc[std::find(miss.begin(), miss.end(), t) - miss.begin()] += S.wt(k);
                continue;
            }
            size_t d = static_cast<size_t>(t - mn);
            cl->idx[d] = 0;
            if (count_here) dc[d] += S.wt(k);
        }
        for (size_t d = 0; d < span; d++)
            if (cl->idx[d] == 0) {
                cl->idx[d] = static_cast<int>(cl->vals.size());
                cl->vals.push_back(mn + static_cast<double>(d));
                if (count_here) counts->push_back(dc[d]);
            }
        if (count_here) {
            for (double c : mc) counts->push_back(c);
            counted = true;
        }
    } else if (any) {
        std::unordered_set<double> seen;
        for (size_t k = 0; k < n; k++) {
            if ((k & 0xffff) == 0 && kvpollstd()) return 1;
            double t = korvu_data(v, S.at(k));
            if (t < misval) seen.insert(t);
        }
        cl->vals.assign(seen.begin(), seen.end());
        std::sort(cl->vals.begin(), cl->vals.end());
    }
    cl->nonmiss = static_cast<int>(cl->vals.size());
    for (double m : miss) cl->vals.push_back(m);
    if (counts && !counted) {
        counts->assign(cl->vals.size(), 0);
        for (size_t k = 0; k < n; k++) {
            if ((k & 0xffff) == 0 && kvpollstd()) return 1;
            int j = cl->code(korvu_data(v, S.at(k)));
            if (j >= 0) (*counts)[j] += S.wt(k);
        }
    }
    return 0;
}

// The text of category j: its value label, or the value in the variable's
// format (or the string itself).
std::string cattext(const Classes& cl, int j, bool nolabel) {
    if (cl.isstr) return cl.strs[j];
    double x = cl.vals[j];
    if (!nolabel && lblname(cl.var)[0]) {
        const char* t = vl_lookup(lblname(cl.var), x);
        if (t) return t;
    }
    std::string s = safereforms(fmtname(cl.var), x);
    size_t b = s.find_first_not_of(' ');
    s = b == std::string::npos ? "" : s.substr(b);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    if (s.size() > 12) {
        s = safereforms("%12.0g", x);
        b = s.find_first_not_of(' ');
        s = s.substr(b);
    }
    return s;
}

std::string title_of(int v) {
    const char* lab = ptrvarlab(v);
    return lab && *lab ? lab : varname(v);
}

std::string num(const char* fmt, double x) {
    return safereforms(fmt, x);
}

// Frequencies: whole numbers as they are, others with two decimals.
std::string freq(double x, int w) {
    char b[64];
    if (x == std::floor(x) && std::fabs(x) < 1e15)
        snprintf(b, sizeof b, "%*.0f", w, x);
    else
        snprintf(b, sizeof b, "%*.2f", w, x);
    return b;
}

std::string pct(double x, int w) {
    char b[64];
    if (x >= misval)
        snprintf(b, sizeof b, "%*s", w, ".");
    else
        snprintf(b, sizeof b, "%*.2f", w, x);
    return b;
}

// The labels of the rows: width of the first column.
int stubwidth(const Classes& cl, const std::string& head, bool nolabel, bool total) {
    int w = static_cast<int>(head.size());
    for (int j = 0; j < cl.k(); j++)
        w = std::max(w, static_cast<int>(cattext(cl, j, nolabel).size()));
    if (total) w = std::max(w, 5);
    return std::clamp(w, 10, 24);
}

// Posts the names of categories as text for matrix stripes: a number's own
// text, or "r1"-style names for strings and labels that make no name.
std::vector<std::string> stripe_names(const Classes& cl, char prefix) {
    std::vector<std::string> v;
    for (int j = 0; j < cl.k(); j++) {
        if (!cl.isstr && cl.vals[j] < misval && cl.vals[j] == std::floor(cl.vals[j]) &&
            std::fabs(cl.vals[j]) < 1e9) {
            char b[32];
            snprintf(b, sizeof b, "%.0f", cl.vals[j]);
            v.emplace_back(b);
        } else {
            char b[32];
            snprintf(b, sizeof b, "%c%d", prefix, j + 1);
            v.emplace_back(b);
        }
    }
    return v;
}

struct Opts {
    bool missing, nolabel, row, col, cell, nofreq, chi2, lr, exact, v, gamma, taub, sortfreq;
    bool nokey;
    std::string gen, matcell, matrow, matcol;
    int sumvar = 0;
};

// ---- one-way ----------------------------------------------------------------------

int oneway(const Classes& cl, const std::vector<double>& f, bool weighted, const Opts& o) {
    int K = cl.k();
    double N = 0;
    for (double x : f) N += x;
    std::vector<int> order(K);
    for (int j = 0; j < K; j++) order[j] = j;
    if (o.sortfreq)
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return f[a] > f[b]; });
    retval_clear();
    retval_set_scalar("N", weighted && wgttype == WGT_FW ? kvround(N) : N);
    retval_set_scalar("r", K);
    if (!o.matcell.empty()) {
        std::vector<double> m(K);
        for (int j = 0; j < K; j++) m[j] = f[order[j]];
        std::vector<std::string> rn = stripe_names(cl, 'r'), rn2(K);
        for (int j = 0; j < K; j++) rn2[j] = rn[order[j]];
        if (int rc = tab_postmat(o.matcell.c_str(), DM_MATRIX, m, K, 1, rn2, {"c1"})) return rc;
    }
    if (!o.matrow.empty() && !cl.isstr) {
        std::vector<double> m(K);
        for (int j = 0; j < K; j++) m[j] = cl.vals[order[j]];
        std::vector<std::string> rn(K);
        for (int j = 0; j < K; j++) rn[j] = "r" + std::to_string(j + 1);
        if (int rc = tab_postmat(o.matrow.c_str(), DM_MATRIX, m, K, 1, rn, {"c1"})) return rc;
    }
    if (s_outlev > 2) return 0;
    if (N == 0) {
        tab_txt("no observations\n");
        return 0;
    }
    std::string head = title_of(cl.var);
    int sw = stubwidth(cl, head, o.nolabel, true);
    if (static_cast<int>(head.size()) > sw) head = head.substr(0, sw);
    tab_txt("\n");
    tab_txt(rjust(head, sw) + " {c |}      Freq.     Percent        Cum.\n");
    tab_txt("{hline " + std::to_string(sw + 1) + "}{c +}{hline 35}\n");
    double cum = 0;
    for (int jj = 0; jj < K; jj++) {
        if ((jj & 0xff) == 0 && kvpollstd()) return 1;
        int j = order[jj];
        cum += f[j];
        std::string lab = cattext(cl, j, o.nolabel);
        if (static_cast<int>(lab.size()) > sw) lab = lab.substr(0, sw);
        tab_txt(rjust(lab, sw) + " {c |}");
        tab_res(freq(f[j], 11) + pct(100 * f[j] / N, 12) + pct(100 * cum / N, 12));
        newline();
    }
    tab_txt("{hline " + std::to_string(sw + 1) + "}{c +}{hline 35}\n");
    tab_txt(rjust("Total", sw) + " {c |}");
    tab_res(freq(N, 11) + pct(100.0, 12));
    newline();
    return 0;
}

// tabulate x, summarize(y): mean, standard deviation and frequency of y in
// each category of x.
int onewaysum(const Classes& cl, const Sample& S, const Opts& o) {
    int K = cl.k(), y = o.sumvar;
    bool weighted = S.weighted;
    if (isstrtype(typlist[y - 1])) return errtext(109, "summarize() needs a numeric variable\n");
    std::vector<double> sw(K + 1, 0), sx(K + 1, 0), se(K + 1, 0), nn(K + 1, 0);
    std::vector<char> buf(KV_STRMAX + 2);
    size_t n = S.size();
    // two passes: the means, then the sums of squares about them
    for (size_t k = 0; k < n; k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        int j = cl.codeof(S.at(k), buf.data());
        double yk = korvu_data(y, S.at(k));
        if (j < 0 || yk >= misval) continue;
        double wk = S.wt(k);
        for (int g : {j, K}) {
            accumerr(&sw[g], &se[g], wk);
            sx[g] += wk * yk;
            nn[g] += 1;
        }
    }
    std::vector<double> mean(K + 1), ss(K + 1, 0), sse(K + 1, 0);
    for (int g = 0; g <= K; g++) mean[g] = sw[g] > 0 ? sx[g] / (sw[g] + se[g]) : misval;
    for (size_t k = 0; k < n; k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        int j = cl.codeof(S.at(k), buf.data());
        double yk = korvu_data(y, S.at(k));
        if (j < 0 || yk >= misval) continue;
        double wk = S.wt(k);
        for (int g : {j, K}) {
            double d = yk - mean[g];
            accumerr(&ss[g], &sse[g], wk * d * d);
        }
    }
    auto sd = [&](int g) {
        double W = sw[g] + se[g];
        if (nn[g] < 2) return misval;
        double v = weighted && wgttype == WGT_AW ? (ss[g] + sse[g]) / W * nn[g] / (nn[g] - 1)
                                                 : (ss[g] + sse[g]) / (W - 1);
        return v >= 0 ? std::sqrt(v) : misval;
    };
    retval_clear();
    retval_set_scalar("N", sw[K] + se[K]);
    retval_set_scalar("r", K);
    if (s_outlev > 2) return 0;
    std::string head = title_of(cl.var);
    int w0 = stubwidth(cl, head, o.nolabel, true);
    if (static_cast<int>(head.size()) > w0) head = head.substr(0, w0);
    tab_txt("\n");
    tab_txt(std::string(w0 + 1, ' ') + "{c |}  Summary of " + title_of(y) + "\n");
    tab_txt(rjust(head, w0) + " {c |}        Mean   Std. Dev.       Freq.\n");
    tab_txt("{hline " + std::to_string(w0 + 1) + "}{c +}{hline 36}\n");
    for (int g = 0; g <= K; g++) {
        if (g == K) tab_txt("{hline " + std::to_string(w0 + 1) + "}{c +}{hline 36}\n");
        std::string lab = g == K ? "Total" : cattext(cl, g, o.nolabel);
        if (static_cast<int>(lab.size()) > w0) lab = lab.substr(0, w0);
        tab_txt(rjust(lab, w0) + " {c |}");
        tab_res(" " + num("%11.0g", mean[g]) + " " + num("%11.0g", sd(g)) + " " +
                freq(sw[g] + se[g], 11));
        newline();
    }
    return 0;
}

// ---- two-way ------------------------------------------------------------------------

int twoway(const Classes& a, const Classes& b, const Sample& S, const Opts& o) {
    int R = a.k(), C = b.k();
    bool weighted = S.weighted;
    if (static_cast<double>(R) * C > 1e8) return errtext(134, "too many values\n");
    std::vector<double> n(static_cast<size_t>(R) * C, 0);
    std::vector<char> buf(KV_STRMAX + 2);
    for (size_t k = 0, m = S.size(); k < m; k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        int i = S.at(k);
        int ca = a.codeof(i, buf.data());
        if (ca < 0) continue;
        int cb = b.codeof(i, buf.data());
        if (cb >= 0) n[static_cast<size_t>(ca) * C + cb] += S.wt(k);
    }
    // categories seen only where the other variable is missing drop out
    std::vector<double> rs(R, 0), cs(C, 0);
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) rs[i] += n[i * C + j], cs[j] += n[i * C + j];
    std::vector<int> ri, ci;
    for (int i = 0; i < R; i++)
        if (rs[i] != 0) ri.push_back(i);
    for (int j = 0; j < C; j++)
        if (cs[j] != 0) ci.push_back(j);
    int r = static_cast<int>(ri.size()), c = static_cast<int>(ci.size());
    std::vector<double> t(static_cast<size_t>(r) * c);
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) t[i * c + j] = n[ri[i] * C + ci[j]];
    std::vector<double> rt(r, 0), ct(c, 0);
    double N = 0;
    for (int i = 0; i < r; i++)
        for (int j = 0; j < c; j++) rt[i] += t[i * c + j], ct[j] += t[i * c + j], N += t[i * c + j];

    TwoWay st;
    twoway_stats(t, r, c, &st);
    double pex = misval, p1ex = misval;
    int exrc = 0;
    bool whole = true;
    for (double x : t)
        if (x != std::floor(x)) whole = false;
    if (o.exact && r >= 2 && c >= 2) {
        if (!whole)
            exrc = 3;
        else
            exrc = fisher_exact(t, r, c, &pex, &p1ex);
        if (exrc == 1) return 1;
    }
    retval_clear();
    retval_set_scalar("N", weighted && wgttype == WGT_FW ? kvround(N) : N);
    retval_set_scalar("r", r);
    retval_set_scalar("c", c);
    if (o.chi2) retval_set_scalar("chi2", st.chi2), retval_set_scalar("p", st.p);
    if (o.lr) retval_set_scalar("chi2_lr", st.chi2_lr), retval_set_scalar("p_lr", st.p_lr);
    if (o.v) retval_set_scalar("CramersV", st.cramersv);
    if (o.gamma) retval_set_scalar("gamma", st.gamma), retval_set_scalar("ase_gam", st.ase_gam);
    if (o.taub) retval_set_scalar("taub", st.taub), retval_set_scalar("ase_taub", st.ase_taub);
    if (o.exact) {
        retval_set_scalar("p_exact", pex);
        if (r == 2 && c == 2) retval_set_scalar("p1_exact", p1ex);
    }
    std::vector<std::string> rn0 = stripe_names(a, 'r'), cn0 = stripe_names(b, 'c'), rn, cn;
    for (int i : ri) rn.push_back(rn0[i]);
    for (int j : ci) cn.push_back(cn0[j]);
    if (!o.matcell.empty())
        if (int rc = tab_postmat(o.matcell.c_str(), DM_MATRIX, t, r, c, rn, cn)) return rc;
    if (!o.matrow.empty() && !a.isstr) {
        std::vector<double> m(r);
        std::vector<std::string> nm(r);
        for (int i = 0; i < r; i++) m[i] = a.vals[ri[i]], nm[i] = "r" + std::to_string(i + 1);
        if (int rc = tab_postmat(o.matrow.c_str(), DM_MATRIX, m, r, 1, nm, {"c1"})) return rc;
    }
    if (!o.matcol.empty() && !b.isstr) {
        std::vector<double> m(c);
        std::vector<std::string> nm(c);
        for (int j = 0; j < c; j++) m[j] = b.vals[ci[j]], nm[j] = "c" + std::to_string(j + 1);
        if (int rc = tab_postmat(o.matcol.c_str(), DM_MATRIX, m, 1, c, {"r1"}, nm)) return rc;
    }
    if (s_outlev > 2) return 0;
    if (N == 0) {
        tab_txt("no observations\n");
        return 0;
    }

    // what each cell shows
    std::vector<int> lines;
    if (!o.nofreq) lines.push_back(0);
    if (o.row) lines.push_back(1);
    if (o.col) lines.push_back(2);
    if (o.cell) lines.push_back(3);
    std::string rhead = title_of(a.var), chead = title_of(b.var);
    int sw = std::clamp(static_cast<int>(rhead.size()), 10, 24);
    for (int i : ri)
        sw = std::max(sw, std::min(24, static_cast<int>(cattext(a, i, o.nolabel).size())));
    if (static_cast<int>(rhead.size()) > sw) rhead = rhead.substr(0, sw);
    const int cw = 11; // width of a column
    int avail = std::max(1, (korvu_linewidth - sw - 2 - cw - 2) / cw);
    if (!lines.empty() && lines.size() > 1 && !o.nokey) {
        static const char* keys[4] = {"frequency", "row percentage", "column percentage",
                                      "cell percentage"};
        tab_txt("\n+-------------------+\n| Key               |\n|-------------------|\n");
        for (int l : lines) {
            std::string k = keys[l];
            int pad = 19 - static_cast<int>(k.size());
            tab_txt("|" + std::string(pad / 2, ' ') + k + std::string(pad - pad / 2, ' ') + "|\n");
        }
        tab_txt("+-------------------+\n");
    }
    auto cellval = [&](int l, double x, double rowt, double colt) {
        switch (l) {
        case 0: return freq(x, cw);
        case 1: return pct(rowt > 0 ? 100 * x / rowt : misval, cw);
        case 2: return pct(colt > 0 ? 100 * x / colt : misval, cw);
        default: return pct(100 * x / N, cw);
        }
    };
    for (int c0 = 0; c0 < c; c0 += avail) {
        int c1 = std::min(c, c0 + avail);
        bool last = c1 == c;
        int width = (c1 - c0) * cw;
        tab_txt("\n");
        // the inner width runs to the bar before the totals (one blank more)
        int inner = last ? width + 1 : width;
        std::string ch = chead;
        if (static_cast<int>(ch.size()) > inner) ch = ch.substr(0, inner);
        int lead = (inner - static_cast<int>(ch.size())) / 2;
        tab_txt(std::string(sw + 1, ' ') + "{c |}" + std::string(lead, ' ') + ch +
                std::string(inner - lead - static_cast<int>(ch.size()), ' ') +
                (last ? "{c |}" : "") + "\n");
        std::string hl = rjust(rhead, sw) + " {c |}";
        for (int j = c0; j < c1; j++) {
            std::string lab = cattext(b, ci[j], o.nolabel);
            if (static_cast<int>(lab.size()) > cw - 1) lab = lab.substr(0, cw - 1);
            hl += rjust(lab, cw);
        }
        if (last) hl += " {c |}" + rjust("Total", cw - 1);
        tab_txt(hl + "\n");
        std::string rule =
            "{hline " + std::to_string(sw + 1) + "}{c +}{hline " + std::to_string(inner) + "}";
        if (last) rule += "{c +}{hline " + std::to_string(cw - 1) + "}";
        tab_txt(rule + "\n");
        for (int i = 0; i <= r; i++) {
            if ((i & 0xff) == 0 && kvpollstd()) return 1;
            if (i == r) tab_txt(rule + "\n");
            bool tot = i == r;
            for (size_t li = 0; li < lines.size(); li++) {
                int l = lines[li];
                std::string lab;
                if (li == 0) lab = tot ? "Total" : cattext(a, ri[i], o.nolabel);
                if (static_cast<int>(lab.size()) > sw) lab = lab.substr(0, sw);
                tab_txt(rjust(lab, sw) + " {c |}");
                std::string cells;
                for (int j = c0; j < c1; j++) {
                    double x = tot ? ct[j] : t[i * c + j];
                    cells += cellval(l, x, tot ? N : rt[i], ct[j]);
                }
                tab_res(cells);
                if (last) {
                    tab_txt(" {c |}");
                    double x = tot ? N : rt[i];
                    std::string s = cellval(l, x, tot ? N : rt[i], N);
                    tab_res(s.substr(1));
                }
                newline();
            }
            if (lines.size() > 1 && i < r - 1)
                tab_txt(std::string(sw + 1, ' ') + "{c |}" + std::string(inner, ' ') +
                        (last ? "{c |}" : "") + "\n");
        }
    }
    bool any = o.chi2 || o.lr || o.v || o.gamma || o.taub || o.exact;
    if (any) tab_txt("\n");
    auto statline = [&](const char* name, int df, double v, const char* tag, double p) {
        std::string lab = name;
        if (df >= 0) lab += "(" + std::to_string(df) + ")";
        tab_txt(rjust(lab, 27) + " = ");
        tab_res(num("%9.4f", v));
        if (tag) {
            tab_txt(std::string("   ") + tag + " = ");
            tab_res(num(tag[0] == 'P' ? "%5.3f" : "%6.4f", p));
        }
        newline();
    };
    if (o.chi2) statline("Pearson chi2", st.df, st.chi2, "Pr", st.p);
    if (o.lr) statline("likelihood-ratio chi2", st.df, st.chi2_lr, "Pr", st.p_lr);
    if (o.v) statline("Cramer's V", -1, st.cramersv, nullptr, 0);
    if (o.gamma) statline("gamma", -1, st.gamma, "ASE", st.ase_gam);
    if (o.taub) statline("Kendall's tau-b", -1, st.taub, "ASE", st.ase_taub);
    if (o.exact) {
        if (exrc == 2) {
            tab_txt("           Fisher's exact = (not computed: the table is too large)\n");
        } else if (exrc == 3) {
            tab_txt(
                "           Fisher's exact = (not computed: the counts are not whole numbers)\n");
        } else if (r >= 2 && c >= 2) {
            tab_txt(rjust("Fisher's exact", 27) + " =                 ");
            tab_res(num("%5.3f", pex));
            newline();
            if (r == 2 && c == 2) {
                tab_txt(rjust("1-sided Fisher's exact", 27) + " =                 ");
                tab_res(num("%5.3f", p1ex));
                newline();
            }
        }
    }
    return 0;
}

// Indicator variables stub1, stub2, ... of the categories (checked first:
// nothing is made unless every name is free).
int makeindicators(const Classes& cl, const std::string& stub, bool withmissing, bool nolabel) {
    int K = cl.k();
    std::vector<std::string> names;
    for (int j = 0; j < K; j++) {
        std::string nm = stub + std::to_string(j + 1);
        if (nm.size() > 32) return errorf(198, "%s invalid name\n", nm.c_str());
        if (chkname(nm.c_str(), 1)) return 198;
        if (sysfindvar(nm.c_str())) return errorf(110, "%s already defined\n", nm.c_str());
        names.push_back(nm);
    }
    std::vector<char> buf(KV_STRMAX + 2);
    for (int j = 0; j < K; j++) {
        if (int rc = addvar(names[j].c_str(), KV_BYTE)) return error(rc);
        int nv = nvar;
        std::string lab = std::string(varname(cl.var)) + "==" + cattext(cl, j, true);
        if (!nolabel && !cl.isstr && lblname(cl.var)[0] && vl_lookup(lblname(cl.var), cl.vals[j]))
            lab = std::string(varname(cl.var)) + "==" + vl_lookup(lblname(cl.var), cl.vals[j]);
        putvarlab(nv, lab.c_str());
        for (int i = 1; i <= nobs; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            double y;
            if (cl.isstr) {
                skorvu_data(cl.var, i, buf.data());
                y = (!buf[0] && !withmissing) ? misval : (cl.strs[j] == buf.data() ? 1 : 0);
            } else {
                double x = korvu_data(cl.var, i);
                y = (x >= misval && !withmissing) ? misval : (x == cl.vals[j] ? 1 : 0);
            }
            store(nv, i, y);
        }
        i_nvar = nvar; // the new variables stay when the command ends
    }
    return 0;
}

} // namespace

int tab_postmat(const char* name, int type, const std::vector<double>& m, int rows, int cols,
                const std::vector<std::string>& rn, const std::vector<std::string>& cn) {
    if (rows < 1 || cols < 1) return 0;
    if (rows > MAX_MATDIM || cols > MAX_MATDIM) return errtext(915, "matrix too large\n");
    for (int k = 0; k < 3; k++) dmrm(dmfind0(name, type + k));
    int save = dynmattype;
    dynmattype = type;
    void* it = matstors(name, 1, m.data(), cols, 0, rows - 1, 0, cols - 1);
    dynmattype = save;
    if (!it) return error(950);
    char* rs = stripedcl(name, type + 1, rows);
    char* cs = stripedcl(name, type + 2, cols);
    if (!rs || !cs) return error(950);
    for (int i = 0; i < rows; i++) matputfullname(rs, i, "", rn[i].c_str(), "");
    for (int j = 0; j < cols; j++) matputfullname(cs, j, "", cn[j].c_str(), "");
    return 0;
}

void tab_txt(const std::string& s) {
    c_outlev = 1;
    spoutptl(s.c_str());
}
void tab_res(const std::string& s) {
    c_outlev = 0;
    spout21(s.c_str());
}

std::string rjust(const std::string& s, int w) {
    if (static_cast<int>(s.size()) >= w) return s.substr(0, w);
    return std::string(w - s.size(), ' ') + s;
}
std::string ljust(const std::string& s, int w) {
    if (static_cast<int>(s.size()) >= w) return s.substr(0, w);
    return s + std::string(w - s.size(), ' ');
}

int tabulatecmd(int) {
    vable = 1;
    byable = ifable = oable = opable = 0;
    wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW | WGT_IW;
    if (int rc = parse()) return rc;
    if (lnvar > 2) return errtext(103, "too many variables\n");
    Opts o{};
    o.missing = findopt("missing", 1, 0);
    o.nolabel = findopt("nolabel", 5, 0);
    o.row = findopt("row", 3, 0);
    o.col = findopt("column", 3, 0);
    o.cell = findopt("cell", 4, 0);
    o.nofreq = findopt("nofreq", 6, 0);
    o.nokey = findopt("nokey", 5, 0);
    bool all = findopt("all", 3, 0);
    o.chi2 = findopt("chi2", 2, 0) || all;
    o.lr = findopt("lrchi2", 3, 0) || all;
    o.exact = findopt("exact", 2, 0); // left out of all: it can take long
    o.v = findopt("V", 1, 0) || all;
    o.gamma = findopt("gamma", 2, 0) || all;
    o.taub = findopt("taub", 2, 0) || all;
    o.sortfreq = findopt("sort", 4, 0);
    char buf[200];
    o.gen = findargn("generate", 3, buf, sizeof buf, 1);
    o.matcell = findargn("matcell", 7, buf, sizeof buf, 1);
    o.matrow = findargn("matrow", 6, buf, sizeof buf, 1);
    o.matcol = findargn("matcol", 6, buf, sizeof buf, 1);
    int sv[2];
    int nsv = findvlist("summarize", 2, sv, 2);
    if (int rc = chkopt()) return rc;
    if (nsv > 1) return errtext(103, "summarize() takes one variable\n");
    if (nsv == 1) o.sumvar = sv[0];
    if (weclause)
        if (int rc = wgtdflt(WGT_FW)) return rc;
    bool two = lnvar == 2;
    if (!two && (o.row || o.col || o.cell || o.chi2 || o.lr || o.exact || o.v || o.gamma ||
                 o.taub || !o.matcol.empty()))
        return errtext(198, "row, column, cell and the statistics need two variables\n");
    if (byvar && !o.gen.empty()) return errtext(190, "generate() may not be combined with by\n");
    if (two && (!o.gen.empty() || o.sumvar))
        return errtext(198, "generate() and summarize() take one variable\n");
    for (const std::string* m : {&o.matcell, &o.matrow, &o.matcol})
        if (!m->empty() && chkname(m->c_str(), 1)) return 198;
    Sample S;
    if (int rc = tab_sample(&S)) return rc;
    Classes a, b;
    if (two) {
        if (int rc = classify(varlist_vr[0], S, o.missing, &a, nullptr)) return rc;
        if (int rc = classify(varlist_vr[1], S, o.missing, &b, nullptr)) return rc;
        return twoway(a, b, S, o);
    }
    std::vector<double> f;
    if (int rc = classify(varlist_vr[0], S, o.missing, &a, o.sumvar ? nullptr : &f)) return rc;
    if (!o.gen.empty()) {
        if (a.k() > 1000) return errtext(134, "too many values for indicator variables\n");
        if (int rc = makeindicators(a, o.gen, o.missing, o.nolabel)) return rc;
    }
    if (o.sumvar) return onewaysum(a, S, o);
    return oneway(a, f, S.weighted, o);
}

} // namespace korvu
