// summarize: the table of counts, means, standard deviations and extremes,
// its r() results, and the `detail` form with percentiles and moments.
#include "results/summarize.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/stores.h"

namespace korvu {

namespace {

constexpr int CHUNK = 4096;

// Any value at or above missing, or not finite, is reported as `.`.
double guard(double x) {
    return (x >= misval || !std::isfinite(x)) ? misval : x;
}

void killus() {
    retval_clear();
}

// What one pass keeps for a variable.
struct Pass {
    int64_t n = 0;
    double sumw = 0, sumw_e = 0;
    double sum = 0, sum_e = 0;
    double min = misval, max = -misval;
};

// Observations i0..i0+m-1 of numeric variable v, decoded, read straight
// from the variable's column.
void column_chunk(int v, int i0, int m, double* out) {
    int type;
    const uint8_t* col = static_cast<const uint8_t*>(colbase(v, &type));
    const int w = bytlenc(type);
    col += static_cast<int64_t>(i0 - 1) * w;
    switch (type) {
    case KV_DOUBLE: std::memcpy(out, col, static_cast<size_t>(m) * 8); break;
    case KV_FLOAT:
        for (int j = 0; j < m; ++j) out[j] = decode_cell(col + 4 * j, KV_FLOAT);
        break;
    case KV_LONG:
        for (int j = 0; j < m; ++j) out[j] = decode_cell(col + 4 * j, KV_LONG);
        break;
    case KV_INT:
        for (int j = 0; j < m; ++j) out[j] = decode_cell(col + 2 * j, KV_INT);
        break;
    case KV_BYTE:
        for (int j = 0; j < m; ++j) out[j] = decode_cell(col + j, KV_BYTE);
        break;
    default:
        for (int j = 0; j < m; ++j) out[j] = decode_cell(col + j * w, type);
    }
}

// Selection and weights of observations i0..i1 into sel and w (CHUNK long).
// 0, or 402 for a negative weight that is not an importance weight.
int chunk_select(int i0, int i1, std::vector<double>& buf, std::vector<uint8_t>& sel,
                 std::vector<double>& w) {
    int m = i1 - i0 + 1;
    if (ifclause) {
        xeqblock(&ifpgm, i0, i1, buf.data());
        for (int j = 0; j < m; ++j) sel[j] = buf[j] != 0;
    } else {
        std::fill(sel.begin(), sel.begin() + m, 1);
    }
    if (!weclause) {
        std::fill(w.begin(), w.begin() + m, 1.0);
        return 0;
    }
    xeqblock(&wepgm, i0, i1, w.data());
    for (int j = 0; j < m; ++j) {
        if (!sel[j]) continue;
        double x = w[j];
        if (x >= misval || x == 0) {
            sel[j] = 0;
            continue;
        }
        if (x < 0 && wgttype != WGT_IW) return 402;
    }
    return 0;
}

// Calls f(x, w) for each selected observation of v in range whose value is
// not missing, block by block; 1 on a break, or the weight's error.
template <class F> int each_selected(int v, F&& f) {
    std::vector<double> buf(CHUNK), w(CHUNK), xs(CHUNK);
    std::vector<uint8_t> sel(CHUNK);
    for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        int i1 = std::min(nobs2, i0 + CHUNK - 1);
        if (kvpollstd()) return 1;
        if (int rc = chunk_select(i0, i1, buf, sel, w)) return error(rc);
        column_chunk(v, i0, i1 - i0 + 1, xs.data());
        for (int j = 0; j <= i1 - i0; ++j) {
            if (!sel[j]) continue;
            double x = xs[j];
            if (x >= misval) continue;
            f(x, w[j]);
        }
    }
    return 0;
}

// The first pass, also gathering the used values (and weights) when asked.
int first_pass(int v, Pass& p, std::vector<double>* vals, std::vector<double>* wts) {
    if (!ifclause && !weclause) {
        // every observation in range, unit weights: the count is the weight sum
        double xs[CHUNK];
        for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
            int i1 = std::min(nobs2, i0 + CHUNK - 1);
            if (kvpollstd()) return 1;
            double s = p.sum, e = p.sum_e, mn = p.min, mx = p.max;
            int64_t n = p.n;
            column_chunk(v, i0, i1 - i0 + 1, xs);
            for (int j = 0; j <= i1 - i0; ++j) {
                double x = xs[j];
                if (x >= misval) continue;
                accumerr(&s, &e, x);
                mn = x < mn ? x : mn;
                mx = x > mx ? x : mx;
                ++n;
                if (vals) vals->push_back(x);
            }
            p.sum = s, p.sum_e = e, p.min = mn, p.max = mx, p.n = n;
        }
        p.sumw = static_cast<double>(p.n);
        p.sumw_e = 0;
        return 0;
    }
    return each_selected(v, [&](double x, double wj) {
        accumerr(&p.sumw, &p.sumw_e, wj);
        accumerr(&p.sum, &p.sum_e, wj * x);
        if (x < p.min) p.min = x;
        if (x > p.max) p.max = x;
        ++p.n;
        if (vals) vals->push_back(x);
        if (wts && weclause) wts->push_back(wj);
    });
}

// Sums of w * (x - mean) and w * (x - mean)^2 over the same observations:
// the first corrects the mean of the first pass, the second gives the
// sum of squares about the corrected mean.
int second_pass(int v, double mean, double sumw, double* meanout, double* ss) {
    double s = 0, e = 0, s1 = 0, e1 = 0;
    if (!ifclause && !weclause) {
        double xs[CHUNK];
        for (int i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
            int i1 = std::min(nobs2, i0 + CHUNK - 1);
            if (kvpollstd()) return 1;
            column_chunk(v, i0, i1 - i0 + 1, xs);
            for (int j = 0; j <= i1 - i0; ++j) {
                double x = xs[j];
                if (x >= misval) continue;
                double d = x - mean;
                accumerr(&s1, &e1, d);
                accumerr(&s, &e, d * d);
            }
        }
        double r = s1 + e1;
        *meanout = mean + r / sumw;
        *ss = (s + e) - r * r / sumw;
        if (*ss < 0) *ss = 0;
        return 0;
    }
    if (int rc = each_selected(v, [&](double x, double wj) {
            double d = x - mean, wd = wj * d;
            accumerr(&s1, &e1, wd);
            accumerr(&s, &e, wd * d);
        }))
        return rc;
    double r = s1 + e1;
    *meanout = mean + r / sumw;
    *ss = (s + e) - r * r / sumw;
    if (*ss < 0) *ss = 0;
    return 0;
}

// Variance by the weight kind; `.` when it cannot be formed.
double variance(double ss, double sumw, double n) {
    if (n <= 1) return misval;
    if (wgttype == WGT_AW) return ss / sumw * n / (n - 1);
    if (sumw - 1 == 0) return misval;
    return ss / (sumw - 1);
}

// The N reported: the rounded sum of frequency weights, otherwise the count.
double reported_n(const Pass& p, double sumw) {
    if (weclause && wgttype == WGT_FW) return kvround(sumw);
    return static_cast<double>(p.n);
}

bool weightcol() {
    return weclause && (wgttype == WGT_AW || wgttype == WGT_IW);
}

const char* num(const char* fmt, double x) {
    return safereforms(fmt, x);
}

// A statistic in a 9-column field: the variable's own format when asked and
// when it fits, else %9.0g.
std::string cell(double x, int v, bool useformat) {
    if (useformat) {
        const char* f = fmtname(v);
        FmtDesc d;
        if (!chkfmt(f, 0, &d) && d.kind != 's') {
            std::string s = safereforms(f, x);
            while (!s.empty() && s.front() == ' ') s.erase(0, 1);
            while (!s.empty() && s.back() == ' ') s.pop_back();
            if (s.size() <= 9) return std::string(9 - s.size(), ' ') + s;
        }
    }
    return num("%9.0g", x);
}

void header(bool wcol) {
    c_outlev = 1;
    spoutptl("\n");
    if (wcol)
        spoutptl("    Variable {c |}     Obs      Weight        Mean   Std. Dev.       Min        "
                 "Max\n");
    else
        spoutptl("    Variable {c |}       Obs        Mean    Std. Dev.       Min        Max\n");
    rule(wcol, false);
}

} // namespace

void rule(bool wcol, bool end) {
    c_outlev = 1;
    spoutptlf("{hline 13}%s{hline %d}\n", end ? "{c BT}" : "{c +}", wcol ? 65 : 56);
}

namespace {

void row(int v, double n, double sumw, double mean, double sd, double mn, double mx, bool wcol,
         bool useformat) {
    c_outlev = 1;
    spoutptlf("%12s {c |}", abvar(varname(v), 12));
    c_outlev = 0;
    std::string line;
    if (wcol) {
        line = num("%8.0g", n);
        line += " ";
        line += num("%11.0g", sumw);
    } else {
        line = num("%10.0g", n);
    }
    if (n > 0) {
        line += wcol ? "   " : "   ";
        line += cell(mean, v, useformat);
        line += wcol ? "   " : "    ";
        line += cell(sd, v, useformat);
        line += " ";
        line += cell(mn, v, useformat);
        line += "  ";
        line += cell(mx, v, useformat);
    }
    spout21(line.c_str());
    newline();
}

// --- percentiles -------------------------------------------------------------------

// Weighted selection over [lo, hi) of (x, w) pairs by three-way partition:
// the first value whose cumulative weight reaches P, averaged with the next
// value when it meets P exactly. `next` is the least value after the range.
double wselect(std::vector<std::pair<double, double>>& a, size_t lo, size_t hi, double P,
               double next, bool hasnext) {
    while (hi - lo > 0) {
        double piv = a[lo + (hi - lo) / 2].first;
        size_t lt = lo, i = lo, gt = hi;
        while (i < gt) {
            if (a[i].first < piv)
                std::swap(a[lt++], a[i++]);
            else if (a[i].first > piv)
                std::swap(a[i], a[--gt]);
            else
                ++i;
        }
        double wl = 0, we = 0;
        for (size_t k = lo; k < lt; ++k) wl += a[k].second;
        for (size_t k = lt; k < gt; ++k) we += a[k].second;
        if (P <= wl && lt > lo) {
            hi = lt;
            next = piv;
            hasnext = true;
            continue;
        }
        if (P < wl + we) return piv;
        if (P == wl + we) {
            if (gt < hi) {
                double m = a[gt].first;
                for (size_t k = gt; k < hi; ++k) m = std::min(m, a[k].first);
                return (piv + m) / 2;
            }
            return hasnext ? (piv + next) / 2 : piv;
        }
        if (gt == hi) return piv; // rounding left P just beyond the total
        P -= wl + we;
        lo = gt;
    }
    return next;
}

const double pcts[9] = {1, 5, 10, 25, 50, 75, 90, 95, 99};

} // namespace

// The order statistics (1-based) that percentile p needs: k and k + 1 when
// n*p/100 is a whole k below n, else the next one alone (second is 0).
static void pctile_ranks(size_t n, double p, size_t* first, size_t* second) {
    double P = static_cast<double>(n) * p / 100.0;
    double fl = std::floor(P);
    *second = 0;
    if (fl == P && fl >= 1 && fl < static_cast<double>(n)) {
        *first = static_cast<size_t>(fl);
        *second = *first + 1;
        return;
    }
    size_t k = fl == P ? static_cast<size_t>(fl) : static_cast<size_t>(fl) + 1;
    *first = k < 1 ? 1 : k > n ? n : k;
}

void pctiles_unweighted(double* v, size_t n, const double* p, int np, double* out) {
    if (!n) {
        for (int j = 0; j < np; ++j) out[j] = misval;
        return;
    }
    // every rank wanted, in ascending order; each selection works only on
    // what lies above the one before it
    std::vector<size_t> ranks;
    for (int j = 0; j < np; ++j) {
        size_t a, b;
        pctile_ranks(n, p[j], &a, &b);
        ranks.push_back(a);
        if (b) ranks.push_back(b);
    }
    std::sort(ranks.begin(), ranks.end());
    ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
    size_t lo = 0;
    for (size_t r : ranks) {
        std::nth_element(v + lo, v + (r - 1), v + n);
        lo = r;
    }
    for (int j = 0; j < np; ++j) {
        size_t a, b;
        pctile_ranks(n, p[j], &a, &b);
        out[j] = b ? (v[a - 1] + v[b - 1]) / 2 : v[a - 1];
    }
}

double pctile_unweighted(double* v, size_t n, double p) {
    double out;
    pctiles_unweighted(v, n, &p, 1, &out);
    return out;
}

double pctile_weighted(const double* x, const double* w, size_t n, double p) {
    if (!n) return misval;
    std::vector<std::pair<double, double>> a(n);
    double W = 0;
    for (size_t i = 0; i < n; ++i) a[i] = {x[i], w[i]}, W += w[i];
    return wselect(a, 0, n, W * p / 100.0, 0, false);
}

namespace {

struct Detail {
    double n, sumw, mean, var, sd, skew, kurt, sum, min, max;
    double p[9];
    double small[4], large[4];
    int nsmall;
};

int detail_one(int v, Detail& d) {
    std::vector<double> vals, wts;
    vals.reserve(static_cast<size_t>(std::max(0, nobs2 - nobs1 + 1)));
    Pass p;
    if (int rc = first_pass(v, p, &vals, &wts)) return rc;
    double sumw = p.sumw + p.sumw_e;
    double sum = p.sum + p.sum_e;
    double mean = p.n ? sum / sumw : misval;
    double s1 = 0, e1 = 0;
    for (size_t i = 0; i < vals.size(); ++i) {
        if ((i & 0xffff) == 0 && kvpollstd()) return 1;
        accumerr(&s1, &e1, (weclause ? wts[i] : 1.0) * (vals[i] - mean));
    }
    if (p.n) mean += (s1 + e1) / sumw;
    double s2 = 0, e2 = 0, s3 = 0, e3 = 0, s4 = 0, e4 = 0;
    for (size_t i = 0; i < vals.size(); ++i) {
        if ((i & 0xffff) == 0 && kvpollstd()) return 1;
        double w = weclause ? wts[i] : 1.0;
        double dv = vals[i] - mean, d2 = dv * dv;
        accumerr(&s2, &e2, w * d2);
        accumerr(&s3, &e3, w * d2 * dv);
        accumerr(&s4, &e4, w * d2 * d2);
    }
    double ss = s2 + e2, m2 = ss / sumw, m3 = (s3 + e3) / sumw, m4 = (s4 + e4) / sumw;
    d.n = reported_n(p, sumw);
    d.sumw = sumw;
    d.mean = mean;
    d.sum = sum;
    d.var = p.n ? variance(ss, sumw, static_cast<double>(p.n)) : misval;
    d.sd = d.var < misval ? std::sqrt(d.var) : misval;
    d.skew = p.n && m2 > 0 ? m3 / std::pow(m2, 1.5) : misval;
    d.kurt = p.n && m2 > 0 ? m4 / (m2 * m2) : misval;
    d.min = p.n ? p.min : misval;
    d.max = p.n ? p.max : misval;
    size_t n = vals.size();
    if (weclause)
        for (int k = 0; k < 9; ++k) d.p[k] = pctile_weighted(vals.data(), wts.data(), n, pcts[k]);
    else
        pctiles_unweighted(vals.data(), n, pcts, 9, d.p);
    d.nsmall = static_cast<int>(std::min<size_t>(4, n));
    if (n) {
        size_t k = std::min<size_t>(4, n);
        std::nth_element(vals.begin(), vals.begin() + (k - 1), vals.end());
        std::sort(vals.begin(), vals.begin() + k);
        for (size_t i = 0; i < k; ++i) d.small[i] = vals[i];
        std::nth_element(vals.begin(), vals.end() - k, vals.end());
        std::sort(vals.end() - k, vals.end());
        for (size_t i = 0; i < k; ++i) d.large[i] = vals[n - 1 - i];
    }
    return 0;
}

void post_detail(const Detail& d) {
    killus();
    retval_set_scalar("N", guard(d.n));
    retval_set_scalar("sum_w", guard(d.sumw));
    retval_set_scalar("mean", guard(d.mean));
    retval_set_scalar("Var", guard(d.var));
    retval_set_scalar("sd", guard(d.sd));
    retval_set_scalar("skewness", guard(d.skew));
    retval_set_scalar("kurtosis", guard(d.kurt));
    retval_set_scalar("sum", guard(d.n > 0 ? d.sum : 0));
    retval_set_scalar("min", guard(d.min));
    retval_set_scalar("max", guard(d.max));
    static const char* pn[9] = {"p1", "p5", "p10", "p25", "p50", "p75", "p90", "p95", "p99"};
    for (int k = 0; k < 9; ++k) retval_set_scalar(pn[k], guard(d.n > 0 ? d.p[k] : misval));
    for (int i = 0; i < 4; ++i) {
        char nm[16];
        snprintf(nm, sizeof nm, "smallest%d", i + 1);
        retval_set_scalar(nm, i < d.nsmall ? guard(d.small[i]) : misval);
    }
    for (int i = 0; i < 4; ++i) {
        char nm[16];
        snprintf(nm, sizeof nm, "largest%d", i + 1);
        retval_set_scalar(nm, i < d.nsmall ? guard(d.large[i]) : misval);
    }
}

void show_detail(int v, const Detail& d) {
    char lab[82];
    getvarlabshort(v, lab, 60);
    c_outlev = 1;
    spoutptlf("\n{txt}%s%s%s\n", varname(v), lab[0] ? ": " : "", lab);
    spoutptl("{hline 13}{c TT}{hline 48}\n");
    spoutptl("  Percentile {c |}      Value     Order     Smallest      Largest\n");
    spoutptl("{hline 13}{c +}{hline 48}\n");
    static const char* pl[9] = {"1%", "5%", "10%", "25%", "50%", "75%", "90%", "95%", "99%"};
    static const char* sl[7] = {"Obs",      "Sum of wgt.", "Mean",    "Std. Dev.",
                                "Variance", "Skewness",    "Kurtosis"};
    double sv[7] = {d.n, d.sumw, d.mean, d.sd, d.var, d.skew, d.kurt};
    for (int r = 0; r < 12; ++r) {
        std::string line;
        c_outlev = 1;
        if (r < 9)
            spoutptlf("%12s {c |}", pl[r]);
        else
            spoutptl("             {c |}");
        c_outlev = 0;
        if (r < 9)
            line = std::string(" ") + num("%10.0g", d.n > 0 ? guard(d.p[r]) : misval);
        else
            line = std::string(11, ' ');
        if (r < 4) {
            char o[16];
            snprintf(o, sizeof o, "%10d", r + 1);
            line += o;
            if (r < d.nsmall) {
                line += "   ";
                line += num("%10.0g", d.small[r]);
                line += "   ";
                line += num("%10.0g", d.large[r]);
            }
            spout21(line.c_str());
        } else if (r >= 5) {
            spout21(line.c_str());
            c_outlev = 1;
            spoutf("     %-12s", sl[r - 5]);
            c_outlev = 0;
            spout21(num("%10.0g", guard(sv[r - 5])));
        } else {
            spout21(line.c_str());
        }
        newline();
    }
    c_outlev = 1;
    spoutptl("{hline 13}{c BT}{hline 48}\n");
}

} // namespace

int summariz(int) {
    wgtallowt = WGT_AW | WGT_FW | WGT_IW;
    byable = opable = wgtable = rcpable = 0;
    vable = 0;
    if (int rc = parse()) return rc;
    int useformat = findopt("format", 1, 0);
    double sepv = 5;
    if (!findoptv("separator", 3, &sepv, 1, 0)) sepv = 5;
    findscal(1, 1);
    int detail = findopt("detail", 1, 0);
    int meanonly = detail ? 0 : findopt("meanonly", 4, 0);
    if (int rc = chkopt()) return rc;
    if (weclause)
        if (int rc = wgtdflt(WGT_AW)) return rc;
    if (detail && weclause && wgttype == WGT_IW) return notalow("iweight");
    int sep = sepv < 0 ? 0 : static_cast<int>(sepv);
    std::vector<int> vars;
    if (lnvar)
        vars.assign(varlist_vr, varlist_vr + lnvar);
    else
        for (int v = 1; v <= nvar; ++v)
            if (!ispatexempt(v)) vars.push_back(v);
    initialize_xeq();
    killus();
    bool show = s_outlev <= 2 && !meanonly;
    bool wcol = weightcol();
    if (detail) {
        for (int v : vars) {
            if (isstrtype(typlist[v - 1])) continue;
            Detail d{};
            if (int rc = detail_one(v, d)) {
                killus();
                return rc;
            }
            post_detail(d);
            if (s_outlev <= 2) show_detail(v, d);
        }
        return 0;
    }
    if (show && !vars.empty()) header(wcol);
    int shown = 0;
    for (size_t k = 0; k < vars.size(); ++k) {
        int v = vars[k];
        Pass p;
        bool isstr = isstrtype(typlist[v - 1]);
        if (!isstr)
            if (int rc = first_pass(v, p, nullptr, nullptr)) {
                killus();
                return rc;
            }
        double sumw = p.sumw + p.sumw_e, sum = p.sum + p.sum_e;
        double mean = p.n ? sum / sumw : misval;
        double n = reported_n(p, sumw);
        double mn = p.n ? p.min : misval, mx = p.n ? p.max : misval;
        if (meanonly) {
            killus();
            retval_set_scalar("N", guard(n));
            retval_set_scalar("sum_w", guard(sumw));
            retval_set_scalar("sum", guard(sum));
            retval_set_scalar("mean", guard(mean));
            retval_set_scalar("min", guard(mn));
            retval_set_scalar("max", guard(mx));
            continue;
        }
        double ss = 0;
        if (p.n)
            if (int rc = second_pass(v, mean, sumw, &mean, &ss)) {
                killus();
                return rc;
            }
        double var = p.n ? variance(ss, sumw, static_cast<double>(p.n)) : misval;
        double sd = var < misval ? std::sqrt(var) : misval;
        killus();
        retval_set_scalar("N", guard(n));
        retval_set_scalar("sum_w", guard(sumw));
        retval_set_scalar("mean", guard(mean));
        retval_set_scalar("Var", guard(var));
        retval_set_scalar("sd", guard(sd));
        retval_set_scalar("min", guard(mn));
        retval_set_scalar("max", guard(mx));
        retval_set_scalar("sum", guard(sum));
        if (!show) continue;
        if (sep && shown && shown % sep == 0) rule(wcol, false);
        row(v, n, sumw, guard(mean), guard(sd), mn, mx, wcol, useformat);
        ++shown;
    }
    if (show && shown) rule(wcol, true);
    return 0;
}

} // namespace korvu
