// tabulate: one-way tables of frequencies (with the summary of a second
// variable in the cells on request) and two-way tables with percentages,
// tests and measures of association.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
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
// category of each sampled observation (-1: left out for a missing value).
struct Classes {
    int var = 0;
    bool isstr = false;
    std::vector<double> vals;      // numeric categories, ascending (missing last)
    std::vector<std::string> strs; // string categories, in byte order
    std::vector<int> code;         // per sampled observation
    int k() const { return static_cast<int>(isstr ? strs.size() : vals.size()); }
};

int classify(int v, const std::vector<int>& obs, bool withmissing, Classes* cl) {
    cl->var = v;
    cl->isstr = isstrtype(typlist[v - 1]);
    size_t n = obs.size();
    cl->code.assign(n, -1);
    if (cl->isstr) {
        std::unordered_map<std::string, int> seen;
        std::vector<int> raw(n, -1);
        std::vector<char> buf(KV_STRMAX + 2);
        for (size_t k = 0; k < n; k++) {
            if ((k & 0xffff) == 0 && kvpollstd()) return 1;
            skorvu_data(v, obs[k], buf.data());
            if (!buf[0] && !withmissing) continue;
            auto it = seen.find(buf.data());
            if (it == seen.end()) {
                int id = static_cast<int>(cl->strs.size());
                it = seen.emplace(buf.data(), id).first;
                cl->strs.emplace_back(buf.data());
            }
            raw[k] = it->second;
        }
        std::vector<int> order(cl->strs.size());
        for (size_t j = 0; j < order.size(); j++) order[j] = static_cast<int>(j);
        std::sort(order.begin(), order.end(),
                  [&](int a, int b) { return cl->strs[a] < cl->strs[b]; });
        std::vector<int> rank(order.size());
        std::vector<std::string> sorted(order.size());
        for (size_t j = 0; j < order.size(); j++)
            rank[order[j]] = static_cast<int>(j), sorted[j] = cl->strs[order[j]];
        cl->strs.swap(sorted);
        for (size_t k = 0; k < n; k++)
            if (raw[k] >= 0) cl->code[k] = rank[raw[k]];
        return 0;
    }
    // numbers: whole values in a modest range are counted in place; others
    // are sorted and found by bisection
    std::vector<double> x(n);
    double mn = 0, mx = 0;
    bool whole = true, any = false;
    for (size_t k = 0; k < n; k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        double t = korvu_data(v, obs[k]);
        x[k] = t;
        if (t >= misval) continue;
        if (!any) mn = mx = t, any = true;
        mn = t < mn ? t : mn;
        mx = t > mx ? t : mx;
        if (whole && t != std::floor(t)) whole = false;
    }
    std::vector<double> miss; // distinct missing values seen
    if (withmissing)
        for (size_t k = 0; k < n; k++)
            if (x[k] >= misval && std::find(miss.begin(), miss.end(), x[k]) == miss.end())
                miss.push_back(x[k]);
    std::sort(miss.begin(), miss.end());
    if (any && whole && mx - mn < 2e7) {
        size_t span = static_cast<size_t>(mx - mn) + 1;
        std::vector<int> idx(span, -1);
        for (size_t k = 0; k < n; k++)
            if (x[k] < misval) idx[static_cast<size_t>(x[k] - mn)] = 0;
        for (size_t s = 0; s < span; s++)
            if (idx[s] == 0) {
                idx[s] = static_cast<int>(cl->vals.size());
                cl->vals.push_back(mn + static_cast<double>(s));
            }
        for (size_t k = 0; k < n; k++)
            if (x[k] < misval) cl->code[k] = idx[static_cast<size_t>(x[k] - mn)];
    } else if (any) {
        std::vector<double> u;
        u.reserve(n);
        for (double t : x)
            if (t < misval) u.push_back(t);
        std::sort(u.begin(), u.end());
        u.erase(std::unique(u.begin(), u.end()), u.end());
        cl->vals = u;
        for (size_t k = 0; k < n; k++)
            if (x[k] < misval)
                cl->code[k] =
                    static_cast<int>(std::lower_bound(u.begin(), u.end(), x[k]) - u.begin());
    }
    int base = static_cast<int>(cl->vals.size());
    for (double m : miss) cl->vals.push_back(m);
    if (!miss.empty())
        for (size_t k = 0; k < n; k++)
            if (x[k] >= misval)
                cl->code[k] = base + static_cast<int>(std::find(miss.begin(), miss.end(), x[k]) -
                                                      miss.begin());
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

void txt(const std::string& s) {
    c_outlev = 1;
    spoutptl(s.c_str());
}
void res(const std::string& s) {
    c_outlev = 0;
    spout21(s.c_str());
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

int oneway(const Classes& cl, const std::vector<double>& w, bool weighted, const Opts& o) {
    int K = cl.k();
    std::vector<double> f(K, 0);
    for (size_t k = 0; k < cl.code.size(); k++)
        if (cl.code[k] >= 0) f[cl.code[k]] += weighted ? w[k] : 1.0;
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
        txt("no observations\n");
        return 0;
    }
    std::string head = title_of(cl.var);
    int sw = stubwidth(cl, head, o.nolabel, true);
    if (static_cast<int>(head.size()) > sw) head = head.substr(0, sw);
    txt("\n");
    txt(rjust(head, sw) + " {c |}      Freq.     Percent        Cum.\n");
    txt("{hline " + std::to_string(sw + 1) + "}{c +}{hline 35}\n");
    double cum = 0;
    for (int jj = 0; jj < K; jj++) {
        if ((jj & 0xff) == 0 && kvpollstd()) return 1;
        int j = order[jj];
        cum += f[j];
        std::string lab = cattext(cl, j, o.nolabel);
        if (static_cast<int>(lab.size()) > sw) lab = lab.substr(0, sw);
        txt(rjust(lab, sw) + " {c |}");
        res(freq(f[j], 11) + pct(100 * f[j] / N, 12) + pct(100 * cum / N, 12));
        newline();
    }
    txt("{hline " + std::to_string(sw + 1) + "}{c +}{hline 35}\n");
    txt(rjust("Total", sw) + " {c |}");
    res(freq(N, 11) + pct(100.0, 12));
    newline();
    return 0;
}

// tabulate x, summarize(y): mean, standard deviation and frequency of y in
// each category of x.
int onewaysum(const Classes& cl, const std::vector<int>& obs, const std::vector<double>& w,
              bool weighted, const Opts& o) {
    int K = cl.k(), y = o.sumvar;
    if (isstrtype(typlist[y - 1])) return errtext(109, "summarize() needs a numeric variable\n");
    std::vector<double> sw(K + 1, 0), sx(K + 1, 0), se(K + 1, 0), nn(K + 1, 0);
    std::vector<double> yv(obs.size());
    for (size_t k = 0; k < obs.size(); k++) yv[k] = korvu_data(y, obs[k]);
    // two passes: the means, then the sums of squares about them
    for (size_t k = 0; k < obs.size(); k++) {
        int j = cl.code[k];
        if (j < 0 || yv[k] >= misval) continue;
        double wk = weighted ? w[k] : 1.0;
        for (int g : {j, K}) {
            accumerr(&sw[g], &se[g], wk);
            sx[g] += wk * yv[k];
            nn[g] += 1;
        }
    }
    std::vector<double> mean(K + 1), ss(K + 1, 0), sse(K + 1, 0);
    for (int g = 0; g <= K; g++) mean[g] = sw[g] > 0 ? sx[g] / (sw[g] + se[g]) : misval;
    for (size_t k = 0; k < obs.size(); k++) {
        int j = cl.code[k];
        if (j < 0 || yv[k] >= misval) continue;
        double wk = weighted ? w[k] : 1.0;
        for (int g : {j, K}) {
            double d = yv[k] - mean[g];
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
    txt("\n");
    txt(std::string(w0 + 1, ' ') + "{c |}  Summary of " + title_of(y) + "\n");
    txt(rjust(head, w0) + " {c |}        Mean   Std. Dev.       Freq.\n");
    txt("{hline " + std::to_string(w0 + 1) + "}{c +}{hline 36}\n");
    for (int g = 0; g <= K; g++) {
        if (g == K) txt("{hline " + std::to_string(w0 + 1) + "}{c +}{hline 36}\n");
        std::string lab = g == K ? "Total" : cattext(cl, g, o.nolabel);
        if (static_cast<int>(lab.size()) > w0) lab = lab.substr(0, w0);
        txt(rjust(lab, w0) + " {c |}");
        res(" " + num("%11.0g", mean[g]) + " " + num("%11.0g", sd(g)) + " " +
            freq(sw[g] + se[g], 11));
        newline();
    }
    return 0;
}

// ---- two-way ------------------------------------------------------------------------

int twoway(const Classes& a, const Classes& b, const std::vector<double>& w, bool weighted,
           const Opts& o) {
    int R = a.k(), C = b.k();
    std::vector<double> n(static_cast<size_t>(R) * C, 0);
    for (size_t k = 0; k < a.code.size(); k++)
        if (a.code[k] >= 0 && b.code[k] >= 0)
            n[static_cast<size_t>(a.code[k]) * C + b.code[k]] += weighted ? w[k] : 1.0;
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
        txt("no observations\n");
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
        txt("\n+-------------------+\n| Key               |\n|-------------------|\n");
        for (int l : lines) {
            std::string k = keys[l];
            int pad = 19 - static_cast<int>(k.size());
            txt("|" + std::string(pad / 2, ' ') + k + std::string(pad - pad / 2, ' ') + "|\n");
        }
        txt("+-------------------+\n");
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
        txt("\n");
        // the inner width runs to the bar before the totals (one blank more)
        int inner = last ? width + 1 : width;
        std::string ch = chead;
        if (static_cast<int>(ch.size()) > inner) ch = ch.substr(0, inner);
        int lead = (inner - static_cast<int>(ch.size())) / 2;
        txt(std::string(sw + 1, ' ') + "{c |}" + std::string(lead, ' ') + ch +
            std::string(inner - lead - static_cast<int>(ch.size()), ' ') + (last ? "{c |}" : "") +
            "\n");
        std::string hl = rjust(rhead, sw) + " {c |}";
        for (int j = c0; j < c1; j++) {
            std::string lab = cattext(b, ci[j], o.nolabel);
            if (static_cast<int>(lab.size()) > cw - 1) lab = lab.substr(0, cw - 1);
            hl += rjust(lab, cw);
        }
        if (last) hl += " {c |}" + rjust("Total", cw - 1);
        txt(hl + "\n");
        std::string rule =
            "{hline " + std::to_string(sw + 1) + "}{c +}{hline " + std::to_string(inner) + "}";
        if (last) rule += "{c +}{hline " + std::to_string(cw - 1) + "}";
        txt(rule + "\n");
        for (int i = 0; i <= r; i++) {
            if ((i & 0xff) == 0 && kvpollstd()) return 1;
            if (i == r) txt(rule + "\n");
            bool tot = i == r;
            for (size_t li = 0; li < lines.size(); li++) {
                int l = lines[li];
                std::string lab;
                if (li == 0) lab = tot ? "Total" : cattext(a, ri[i], o.nolabel);
                if (static_cast<int>(lab.size()) > sw) lab = lab.substr(0, sw);
                txt(rjust(lab, sw) + " {c |}");
                std::string cells;
                for (int j = c0; j < c1; j++) {
                    double x = tot ? ct[j] : t[i * c + j];
                    cells += cellval(l, x, tot ? N : rt[i], ct[j]);
                }
                res(cells);
                if (last) {
                    txt(" {c |}");
                    double x = tot ? N : rt[i];
                    std::string s = cellval(l, x, tot ? N : rt[i], N);
                    res(s.substr(1));
                }
                newline();
            }
            if (lines.size() > 1 && i < r - 1)
                txt(std::string(sw + 1, ' ') + "{c |}" + std::string(inner, ' ') +
                    (last ? "{c |}" : "") + "\n");
        }
    }
    bool any = o.chi2 || o.lr || o.v || o.gamma || o.taub || o.exact;
    if (any) txt("\n");
    auto statline = [&](const char* name, int df, double v, const char* tag, double p) {
        std::string lab = name;
        if (df >= 0) lab += "(" + std::to_string(df) + ")";
        txt(rjust(lab, 27) + " = ");
        res(num("%9.4f", v));
        if (tag) {
            txt(std::string("   ") + tag + " = ");
            res(num(tag[0] == 'P' ? "%5.3f" : "%6.4f", p));
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
            txt("           Fisher's exact = (not computed: the table is too large)\n");
        } else if (exrc == 3) {
            txt("           Fisher's exact = (not computed: the counts are not whole numbers)\n");
        } else if (r >= 2 && c >= 2) {
            txt(rjust("Fisher's exact", 27) + " =                 ");
            res(num("%5.3f", pex));
            newline();
            if (r == 2 && c == 2) {
                txt(rjust("1-sided Fisher's exact", 27) + " =                 ");
                res(num("%5.3f", p1ex));
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
    if (two && (!o.gen.empty() || o.sumvar))
        return errtext(198, "generate() and summarize() take one variable\n");
    for (const std::string* m : {&o.matcell, &o.matrow, &o.matcol})
        if (!m->empty() && chkname(m->c_str(), 1)) return 198;
    std::vector<int> obs;
    std::vector<double> w;
    bool weighted;
    if (int rc = tab_sample(obs, w, &weighted)) return rc;
    Classes a, b;
    if (int rc = classify(varlist_vr[0], obs, o.missing, &a)) return rc;
    if (two) {
        if (int rc = classify(varlist_vr[1], obs, o.missing, &b)) return rc;
        return twoway(a, b, w, weighted, o);
    }
    if (!o.gen.empty()) {
        if (a.k() > 1000) return errtext(134, "too many values for indicator variables\n");
        if (int rc = makeindicators(a, o.gen, o.missing, o.nolabel)) return rc;
    }
    if (o.sumvar) return onewaysum(a, obs, w, weighted, o);
    return oneway(a, w, weighted, o);
}

} // namespace korvu
