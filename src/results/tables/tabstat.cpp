// tabstat: a table of chosen statistics of several variables, overall and
// by the groups of one variable.
//   tabstat varlist [if] [in] [weight] [, statistics(names) by(var)
//           columns(variables|statistics) format(%fmt) nototal missing]
// Statistics: mean, count (n), sum, sd, variance, min, max, range, semean,
// cv, skewness, kurtosis, median, iqr and the percentiles p1 p5 p10 p25 p50
// p75 p90 p95 p99. r(StatTotal) holds the overall table (statistics by
// variables); with by(), r(Stat1), r(Stat2), ... each group's, whose values
// are in r(name1), r(name2), ...
#include <algorithm>
#include <cmath>
#include <map>

#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/stores.h"
#include "results/summarize.h"
#include "results/tables/tables.h"
#include "results/tables/tables_internal.h"

namespace korvu {

namespace {

struct StatDef {
    const char* name;
    int minlen;
    const char* head; // column or row heading
    double pct;       // percentile, or 0
};
// The statistics by name; `n` and `count` are the same, so are `median` and `p50`.
constexpr StatDef statdefs[] = {
    {"mean", 2, "mean", 0},
    {"count", 2, "N", 0},
    {"n", 1, "N", 0},
    {"sum", 2, "sum", 0},
    {"sd", 2, "sd", 0},
    {"variance", 3, "variance", 0},
    {"min", 3, "min", 0},
    {"max", 3, "max", 0},
    {"range", 1, "range", 0},
    {"semean", 3, "se(mean)", 0},
    {"cv", 2, "cv", 0},
    {"skewness", 2, "skewness", 0},
    {"kurtosis", 1, "kurtosis", 0},
    {"median", 3, "p50", 50},
    {"iqr", 3, "iqr", 0},
    {"p1", 2, "p1", 1},
    {"p5", 2, "p5", 5},
    {"p10", 3, "p10", 10},
    {"p25", 3, "p25", 25},
    {"p50", 3, "p50", 50},
    {"p75", 3, "p75", 75},
    {"p90", 3, "p90", 90},
    {"p95", 3, "p95", 95},
    {"p99", 3, "p99", 99},
};

// All statistics of one set of values with weights.
struct Stats {
    double n = 0, sum = 0, mean = misval, sd = misval, var = misval, min = misval, max = misval,
           skew = misval, kurt = misval;
    std::vector<double> v, w; // the values and weights, for percentiles
};

void finish(Stats* s, bool weighted, bool fw) {
    size_t n = s->v.size();
    if (!n) return;
    double W = 0, S = 0, E = 0;
    for (size_t k = 0; k < n; k++) {
        double w = weighted ? s->w[k] : 1;
        W += w;
        accumerr(&S, &E, w * s->v[k]);
    }
    S += E;
    s->sum = S;
    s->mean = S / W;
    double s2 = 0, e2 = 0, s3 = 0, e3 = 0, s4 = 0, e4 = 0;
    for (size_t k = 0; k < n; k++) {
        double w = weighted ? s->w[k] : 1;
        double d = s->v[k] - s->mean, d2 = d * d;
        accumerr(&s2, &e2, w * d2);
        accumerr(&s3, &e3, w * d2 * d);
        accumerr(&s4, &e4, w * d2 * d2);
    }
    double ss = s2 + e2, m2 = ss / W;
    s->n = weighted && fw ? W : static_cast<double>(n);
    double denom = (weighted && fw ? W : static_cast<double>(n)) - 1;
    s->var = denom > 0 ? ss / W * (weighted && fw ? W : static_cast<double>(n)) / denom : misval;
    s->sd = s->var < misval ? std::sqrt(s->var) : misval;
    s->skew = m2 > 0 ? (s3 + e3) / W / std::pow(m2, 1.5) : misval;
    s->kurt = m2 > 0 ? (s4 + e4) / W / (m2 * m2) : misval;
    s->min = *std::min_element(s->v.begin(), s->v.end());
    s->max = *std::max_element(s->v.begin(), s->v.end());
}

double pct(Stats& s, bool weighted, double p) {
    if (s.v.empty()) return misval;
    if (weighted) return pctile_weighted(s.v.data(), s.w.data(), s.v.size(), p);
    std::vector<double> c = s.v;
    return pctile_unweighted(c.data(), c.size(), p);
}

double statof(Stats& s, const StatDef& d, bool weighted) {
    std::string nm = d.name;
    if (d.pct > 0) return pct(s, weighted, d.pct);
    if (nm == "mean") return s.mean;
    if (nm == "count" || nm == "n") return s.n;
    if (nm == "sum") return s.v.empty() ? 0 : s.sum;
    if (nm == "sd") return s.sd;
    if (nm == "variance") return s.var;
    if (nm == "min") return s.min;
    if (nm == "max") return s.max;
    if (nm == "range") return s.v.empty() ? misval : s.max - s.min;
    if (nm == "semean") return s.sd < misval && s.n > 0 ? s.sd / std::sqrt(s.n) : misval;
    if (nm == "cv") return s.sd < misval && s.mean != 0 ? s.sd / s.mean : misval;
    if (nm == "skewness") return s.skew;
    if (nm == "kurtosis") return s.kurt;
    if (nm == "iqr") {
        double a = pct(s, weighted, 75), b = pct(s, weighted, 25);
        return a < misval && b < misval ? a - b : misval;
    }
    return misval;
}

std::string cell(const std::string& fmt, double x, int w) {
    std::string t = safereforms(fmt.c_str(), x);
    size_t a = t.find_first_not_of(' ');
    t = a == std::string::npos ? "" : t.substr(a);
    return rjust(t, w);
}

void rulel(int stubw, int ncol, int colw) {
    tab_txt("{hline " + std::to_string(stubw + 1) + "}{c +}{hline " +
            std::to_string(ncol * (colw + 1) + 1) + "}\n");
}
void rulebottom(int stubw, int ncol, int colw) {
    tab_txt("{hline " + std::to_string(stubw + 1) + "}{c BT}{hline " +
            std::to_string(ncol * (colw + 1) + 1) + "}\n");
}

} // namespace

int tabstatcmd(int) {
    vable = 1;
    opable = 0;
    byable = 3;
    wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW;
    if (int rc = parse()) return rc;
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    char sbuf[2000] = "", cbuf[100] = "", fbuf[60] = "";
    findargn("statistics", 1, sbuf, sizeof sbuf, 100);
    int byv[2];
    int nby = findvlist("by", 2, byv, 2);
    findargn("columns", 1, cbuf, sizeof cbuf, 1);
    findargasis("format", 1, fbuf, sizeof fbuf);
    bool nototal = findopt("nototal", 3, 0);
    bool withmissing = findopt("missing", 1, 0);
    if (int rc = chkopt()) return rc;
    if (nby > 1) return errtext(103, "by() takes one variable\n");
    for (int v : vars)
        if (!isnumtype(typlist[v - 1]))
            return errorf(109, "%s is a text variable: statistics need numbers\n", varname(v));
    std::vector<const StatDef*> stats;
    {
        std::string s = sbuf;
        size_t i = 0;
        while (i < s.size()) {
            while (i < s.size() && s[i] == ' ') i++;
            size_t j = i;
            while (j < s.size() && s[j] != ' ') j++;
            if (j > i) {
                std::string w = s.substr(i, j - i);
                const StatDef* hit = nullptr;
                for (const StatDef& d : statdefs)
                    if (cmdcmp(w.c_str(), d.name, d.minlen)) {
                        hit = &d;
                        break;
                    }
                if (!hit) return errorf(198, "statistic %s not known\n", w.c_str());
                stats.push_back(hit);
            }
            i = j;
        }
        if (stats.empty()) stats.push_back(&statdefs[0]);
    }
    bool bystat = false;
    if (cbuf[0]) {
        if (cmdcmp(cbuf, "statistics", 1))
            bystat = true;
        else if (!cmdcmp(cbuf, "variables", 1))
            return errtext(198, "columns() takes variables or statistics\n");
    }
    std::string fmt = fbuf[0] ? fbuf : "%9.0g";
    FmtDesc fd;
    if (chkfmt(fmt.c_str(), 1, &fd)) return errorf(120, "%s invalid numeric format\n", fmt.c_str());
    if (weclause)
        if (int rc = wgtdflt(WGT_AW)) return rc;
    Sample S;
    if (int rc = tab_sample(&S)) return rc;
    bool weighted = S.weighted, fw = wgttype == WGT_FW;
    // groups of the by variable, in order of value
    int bv = nby ? byv[0] : 0;
    bool bstr = bv && !isnumtype(typlist[bv - 1]);
    std::vector<char> buf(KV_STRMAX + 2);
    std::map<std::pair<double, std::string>, int> gid;
    std::vector<int> gof(S.size(), -1);
    if (bv) {
        for (size_t k = 0; k < S.size(); k++) {
            int i = S.at(k);
            std::pair<double, std::string> key{0, ""};
            if (bstr)
                key.second = skorvu_data(bv, i, buf.data());
            else
                key.first = korvu_data(bv, i);
            bool miss = bstr ? key.second.empty() : key.first >= misval;
            if (miss && !withmissing) continue;
            gid.emplace(key, 0);
            gof[k] = 1;
        }
        int g = 0;
        for (auto& kv : gid) kv.second = g++;
        for (size_t k = 0; k < S.size(); k++) {
            if (gof[k] < 0) continue;
            int i = S.at(k);
            std::pair<double, std::string> key{0, ""};
            if (bstr)
                key.second = skorvu_data(bv, i, buf.data());
            else
                key.first = korvu_data(bv, i);
            gof[k] = gid[key];
        }
    }
    int G = static_cast<int>(gid.size());
    // the values: [group][var], the total last
    std::vector<std::vector<Stats>> st(G + 1, std::vector<Stats>(vars.size()));
    for (size_t k = 0; k < S.size(); k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        if (bv && gof[k] < 0) continue;
        int i = S.at(k);
        for (size_t m = 0; m < vars.size(); m++) {
            double x = korvu_data(vars[m], i);
            if (x >= misval) continue;
            for (int g : {bv ? gof[k] : -1, G}) {
                if (g < 0) continue;
                st[g][m].v.push_back(x);
                if (weighted) st[g][m].w.push_back(S.wt(k));
            }
        }
    }
    // values[g][s][m]
    std::vector<std::vector<std::vector<double>>> val(
        G + 1, std::vector<std::vector<double>>(stats.size(), std::vector<double>(vars.size())));
    for (int g = 0; g <= G; g++)
        for (size_t m = 0; m < vars.size(); m++) {
            finish(&st[g][m], weighted, fw);
            for (size_t s = 0; s < stats.size(); s++)
                val[g][s][m] = statof(st[g][m], *stats[s], weighted);
        }
    // group names
    std::vector<std::string> gname(G);
    for (const auto& kv : gid) {
        std::string t;
        if (bstr) {
            t = kv.first.second;
        } else {
            const char* l = lblname(bv)[0] ? vl_lookup(lblname(bv), kv.first.first) : nullptr;
            if (l) {
                t = l;
            } else {
                t = safereforms("%9.0g", kv.first.first);
                size_t a = t.find_first_not_of(' ');
                t = a == std::string::npos ? "" : t.substr(a);
            }
        }
        gname[kv.second] = t;
    }
    // the table
    const int colw = std::max(9, fd.width);
    std::vector<std::string> colhead, rowhead;
    for (int v : vars) colhead.push_back(varname(v));
    for (const StatDef* d : stats) rowhead.push_back(d->head);
    if (bystat) std::swap(colhead, rowhead);
    // the stub: the row heading, and with by() the group's name before it
    int rw = 5;
    for (const std::string& r : rowhead) rw = std::max(rw, static_cast<int>(r.size()));
    rw = std::min(rw, 12);
    int gw = 0;
    if (bv) {
        gw = std::max(5, static_cast<int>(std::string(varname(bv)).size()));
        for (const std::string& g : gname) gw = std::max(gw, static_cast<int>(g.size()));
        gw = std::min(gw, 16);
    }
    bool onerow = rowhead.size() == 1; // with by(): the group's name is the heading
    int stubw = bv ? (onerow ? gw : gw + 1 + rw) : std::max(rw, bystat ? 8 : 5);
    int ncol = static_cast<int>(colhead.size());
    auto cellat = [&](int g, int r, int c) { return bystat ? val[g][c][r] : val[g][r][c]; };
    tab_txt("\n");
    if (bv) {
        std::string vn;
        for (int v : vars) vn += (vn.empty() ? "" : " ") + std::string(varname(v));
        tab_txt("Summary for variables: ");
        tab_res(vn + "\n");
        tab_txt("     by categories of: ");
        tab_res(std::string(varname(bv)) + "\n");
        tab_txt("\n");
    }
    // chunks of columns that fit the line
    int perline = std::max(1, (korvu_linewidth - 2 - stubw - 3) / (colw + 1));
    for (int c0 = 0; c0 < ncol; c0 += perline) {
        int c1 = std::min(ncol, c0 + perline);
        std::string h;
        if (bv)
            h = onerow ? rjust(varname(bv), stubw)
                       : ljust(varname(bv), gw) + " " + std::string(rw, ' ');
        else
            h = rjust(bystat ? "variable" : "stats", stubw);
        h += " {c |}";
        for (int c = c0; c < c1; c++) {
            std::string t = colhead[c];
            if (static_cast<int>(t.size()) > colw) t = abvar(t.c_str(), colw);
            h += " " + rjust(t, colw);
        }
        tab_txt(h + "\n");
        rulel(stubw, c1 - c0, colw);
        int ng = bv ? G + (nototal ? 0 : 1) : 1;
        for (int gi = 0; gi < ng; gi++) {
            int g = bv ? gi : G;
            for (size_t r = 0; r < rowhead.size(); r++) {
                std::string stub;
                std::string rh = rowhead[r].substr(0, rw);
                if (bv) {
                    std::string gn = (g == G ? std::string("Total") : gname[g]).substr(0, gw);
                    stub = onerow ? rjust(gn, stubw)
                                  : ljust(r == 0 ? gn : "", gw) + " " + rjust(rh, rw);
                } else {
                    stub = rjust(rh, stubw);
                }
                tab_txt(stub + " {c |}");
                std::string line;
                for (int c = c0; c < c1; c++) {
                    // counts are whole numbers whatever the format
                    const StatDef* sd = stats[bystat ? c : r];
                    bool count = sd->head[0] == 'N' && !sd->head[1];
                    line +=
                        " " + cell(count ? "%9.0g" : fmt, cellat(g, static_cast<int>(r), c), colw);
                }
                tab_res(line + "\n");
            }
            if (bv && !onerow && gi + 1 < ng) rulel(stubw, c1 - c0, colw);
            if (bv && onerow && gi + 1 == G && ng > G) rulel(stubw, c1 - c0, colw);
        }
        rulebottom(stubw, c1 - c0, colw);
        if (c1 < ncol) tab_txt("\n");
    }
    // results
    retval_clear();
    std::vector<std::string> sn, vn;
    for (const StatDef* d : stats) sn.push_back(d->head);
    for (int v : vars) vn.push_back(varname(v));
    auto post = [&](const std::string& name, int g) {
        std::vector<double> m;
        for (size_t s = 0; s < stats.size(); s++)
            for (size_t k = 0; k < vars.size(); k++) m.push_back(val[g][s][k]);
        return tab_postmat(name.c_str(), RT_MATRIX, m, static_cast<int>(stats.size()),
                           static_cast<int>(vars.size()), sn, vn);
    };
    if (int rc = post("StatTotal", G)) return rc;
    for (int g = 0; g < G; g++) {
        if (int rc = post("Stat" + std::to_string(g + 1), g)) return rc;
        retval_set_local(("name" + std::to_string(g + 1)).c_str(), gname[g].c_str());
    }
    return 0;
}

} // namespace korvu

// ---- tabdisp and table: cells classified by up to three variables ----------
//   tabdisp rowvar [colvar [supercolvar]] [if] [in], cellvar(varlist)
//           [format(%fmt) missing]
//   table rowvar [colvar [supercolvar]] [if] [in] [weight]
//           [, contents(stat [var] ...) format(%fmt) row col scol center left
//           missing]
// tabdisp shows the values of up to five variables, each combination of the
// classifying variables holding one observation; table shows up to five
// statistics (freq, mean, sd, sum, count, min, max, median, iqr, p#) of
// the observations of each combination.

namespace korvu {

namespace {

struct Axis {
    int var = 0;
    bool str = false;
    std::vector<std::pair<double, std::string>> cats; // sorted
    std::vector<int> of;                              // category of each sample row, -1 left out
    bool total = false;                               // a "Total" category after the others
    std::string name(size_t k) const {
        if (k == cats.size()) return "Total";
        const auto& c = cats[k];
        if (str) return c.second;
        const char* l = lblname(var)[0] ? vl_lookup(lblname(var), c.first) : nullptr;
        if (l) return l;
        std::string t = safereforms("%9.0g", c.first);
        size_t a = t.find_first_not_of(' ');
        return a == std::string::npos ? "" : t.substr(a);
    }
    size_t k() const { return var ? cats.size() : 1; }
    size_t n() const { return k() + (var && total ? 1 : 0); } // with the total
};

enum { ALIGN_RIGHT, ALIGN_CENTER, ALIGN_LEFT };

std::string align(const std::string& s, int w, int how) {
    if (how == ALIGN_LEFT) return ljust(s, w);
    if (how == ALIGN_CENTER && static_cast<int>(s.size()) < w) {
        int pad = w - static_cast<int>(s.size());
        return std::string(pad - pad / 2, ' ') + s + std::string(pad / 2, ' ');
    }
    return rjust(s, w);
}

void classify_axis(Axis* a, const Sample& S, bool withmissing) {
    a->of.assign(S.size(), 0);
    if (!a->var) return;
    a->str = !isnumtype(typlist[a->var - 1]);
    std::vector<char> buf(KV_STRMAX + 2);
    std::map<std::pair<double, std::string>, int> m;
    std::vector<std::pair<double, std::string>> key(S.size());
    for (size_t k = 0; k < S.size(); k++) {
        int i = S.at(k);
        if (a->str)
            key[k] = {0, skorvu_data(a->var, i, buf.data())};
        else
            key[k] = {korvu_data(a->var, i), ""};
        bool miss = a->str ? key[k].second.empty() : key[k].first >= misval;
        if (miss && !withmissing) {
            a->of[k] = -1;
            continue;
        }
        m.emplace(key[k], 0);
    }
    int g = 0;
    for (auto& kv : m) {
        kv.second = g++;
        a->cats.push_back(kv.first);
    }
    for (size_t k = 0; k < S.size(); k++)
        if (a->of[k] >= 0) a->of[k] = m[key[k]];
}

struct Content {
    const StatDef* stat = nullptr; // null for freq, or for a cell value (tabdisp)
    int var = 0;
    std::string head;
};

// One panel of the table: the columns j0 to j1 - 1, counted across the
// supercolumns (or the contents without a column variable).
void draw_panel(const Axis& R, const Axis& C, const Axis& SC, const std::vector<Content>& cont,
                const std::vector<std::string>& cells, int colw, int how, int stubw, size_t j0,
                size_t j1) {
    size_t NR = R.n(), NC = C.n(), K = cont.size();
    auto rule = [&](bool bottom) {
        tab_txt("{hline " + std::to_string(stubw + 1) + "}" + (bottom ? "{c BT}" : "{c +}") +
                "{hline " + std::to_string((j1 - j0) * (colw + 1) + 1) + "}\n");
    };
    tab_txt("\n");
    if (SC.var) {
        std::string h = std::string(stubw + 1, ' ') + "{c |}";
        std::string t = std::string(varname(SC.var)) + " and " + varname(C.var);
        tab_txt(h + " " + t + "\n");
        std::string l = std::string(stubw + 1, ' ') + "{c |}";
        for (size_t s = j0 / NC; s * NC < j1; s++) {
            std::string nm = SC.name(s);
            size_t a = std::max(j0, s * NC), b = std::min(j1, (s + 1) * NC);
            int w = static_cast<int>(b - a) * (colw + 1);
            // centred in its columns, each a blank and the cell: w wide in all
            nm = nm.substr(0, std::max(0, w - 1));
            int pad = w - static_cast<int>(nm.size());
            int lead = std::min(pad, pad / 2 + 1);
            l += std::string(lead, ' ') + nm + std::string(pad - lead, ' ');
        }
        while (!l.empty() && l.back() == ' ') l.pop_back();
        tab_txt(l + "\n");
    } else if (C.var) {
        tab_txt(std::string(stubw + 1, ' ') + "{c |} " + varname(C.var) + "\n");
    }
    std::string h = rjust(varname(R.var), stubw) + " {c |}";
    for (size_t j = j0; j < j1; j++)
        h += " " + rjust((C.var ? C.name(j % NC) : cont[j].head).substr(0, colw), colw);
    tab_txt(h + "\n");
    rule(false);
    for (size_t r = 0; r < NR; r++) {
        if (R.var && R.total && r + 1 == NR) rule(false); // before the total row
        size_t lines = C.var ? K : 1;
        for (size_t k = 0; k < lines; k++) {
            std::string stub = k == 0 ? R.name(r).substr(0, stubw) : "";
            tab_txt(rjust(stub, stubw) + " {c |}");
            std::string line;
            for (size_t j = j0; j < j1; j++) // j = s * NC + c
                line += " " + align(C.var ? cells[(r * NC * SC.n() + j) * K + k] : cells[r * K + j],
                                    colw, how);
            while (!line.empty() && line.back() == ' ') line.pop_back();
            tab_res(line + "\n");
        }
    }
    rule(true);
}

// Draws the table: cells[(r * C + c) * K + k] as text.
// Each axis with its total counts one category more; `how` aligns the cells.
void draw(const Axis& R, const Axis& C, const Axis& SC, const std::vector<Content>& cont,
          const std::vector<std::string>& cells, int colw, int how = ALIGN_RIGHT) {
    size_t NR = R.n(), NC = C.n(), NS = SC.n(), K = cont.size();
    int stubw = static_cast<int>(std::string(varname(R.var)).size());
    for (size_t r = 0; r < NR; r++) stubw = std::max(stubw, static_cast<int>(R.name(r).size()));
    stubw = std::min(std::max(stubw, 8), 20);
    for (const std::string& t : cells) colw = std::max(colw, static_cast<int>(t.size()));
    if (!C.var)
        for (const Content& c : cont) colw = std::max(colw, static_cast<int>(c.head.size()));
    else
        for (size_t c = 0; c < NC; c++) colw = std::max(colw, static_cast<int>(C.name(c).size()));
    colw = std::min(colw, 20);
    // The columns go out in panels that fit the line; with a supercolumn
    // variable a panel holds whole supercolumns when one fits.
    size_t ncols = C.var ? NC * NS : K;
    size_t per = ncols;
    int avail = korvu_linewidth - stubw - 3;
    if (static_cast<int>(ncols) * (colw + 1) > avail) {
        per = static_cast<size_t>(std::max(1, avail / (colw + 1)));
        if (SC.var && NC <= per) per = per / NC * NC;
    }
    for (size_t j0 = 0; j0 < ncols; j0 += per) {
        size_t j1 = std::min(ncols, j0 + per);
        draw_panel(R, C, SC, cont, cells, colw, how, stubw, j0, j1);
    }
}

int read_axes(Axis* R, Axis* C, Axis* SC) {
    if (lnvar < 1) return errtext(102, "too few variables specified\n");
    if (lnvar > 3) return errtext(103, "too many variables specified: at most three classify\n");
    R->var = varlist_vr[0];
    if (lnvar > 1) C->var = varlist_vr[1];
    if (lnvar > 2) SC->var = varlist_vr[2];
    return 0;
}

std::string fmtcell(const std::string& fmt, double x) {
    std::string t = safereforms(fmt.c_str(), x);
    size_t a = t.find_first_not_of(' ');
    t = a == std::string::npos ? "" : t.substr(a);
    while (!t.empty() && t.back() == ' ') t.pop_back();
    return t;
}

} // namespace

int tabdispcmd(int) {
    vable = 1;
    opable = 0;
    byable = 0;
    if (int rc = parse()) return rc;
    int cv[6];
    int ncv = findvlist("cellvar", 4, cv, 6);
    char fbuf[60] = "";
    findargasis("format", 1, fbuf, sizeof fbuf);
    bool withmissing = findopt("missing", 1, 0);
    if (int rc = chkopt()) return rc;
    Axis R, C, SC;
    if (int rc = read_axes(&R, &C, &SC)) return rc;
    if (ncv < 1) return errtext(198, "option cellvar() required\n");
    if (ncv > 5) return errtext(103, "cellvar() takes at most five variables\n");
    std::string fmt = fbuf[0] ? fbuf : "";
    FmtDesc fd;
    if (!fmt.empty() && chkfmt(fmt.c_str(), 1, &fd))
        return errorf(120, "%s invalid numeric format\n", fmt.c_str());
    Sample S;
    if (int rc = tab_sample(&S)) return rc;
    for (Axis* a : {&R, &C, &SC}) classify_axis(a, S, withmissing);
    size_t NR = R.k(), NC = C.k(), NS = SC.k(), K = static_cast<size_t>(ncv);
    std::vector<Content> cont(K);
    for (size_t q = 0; q < K; q++) cont[q].var = cv[q], cont[q].head = varname(cv[q]);
    std::vector<std::string> cells(NR * NS * NC * K);
    std::vector<int> seen(NR * NS * NC, 0);
    std::vector<char> buf(KV_STRMAX + 2);
    for (size_t k = 0; k < S.size(); k++) {
        if (R.of[k] < 0 || C.of[k] < 0 || SC.of[k] < 0) continue;
        size_t cell = (static_cast<size_t>(R.of[k]) * NS + SC.of[k]) * NC + C.of[k];
        int i = S.at(k);
        if (seen[cell]++) {
            std::string names = varname(R.var);
            if (C.var) names += std::string(SC.var ? ", " : " and ") + varname(C.var);
            if (SC.var) names += std::string(" and ") + varname(SC.var);
            return errorf(459,
                          "%s %s not identify the observations: observation %d repeats a cell\n",
                          names.c_str(), C.var ? "do" : "does", i);
        }
        for (size_t q = 0; q < K; q++) {
            int v = cv[q];
            std::string t;
            if (!isnumtype(typlist[v - 1])) {
                t = skorvu_data(v, i, buf.data());
            } else {
                double x = korvu_data(v, i);
                const char* l = lblname(v)[0] ? vl_lookup(lblname(v), x) : nullptr;
                t = l ? l : fmtcell(fmt.empty() ? fmtname(v) : fmt, x);
            }
            cells[cell * K + q] = t;
        }
    }
    draw(R, C, SC, cont, cells, 9);
    return 0;
}

int tablecmd(int) {
    vable = 1;
    opable = 0;
    byable = 3;
    wgtable = 0;
    wgtallowt = WGT_AW | WGT_FW;
    if (int rc = parse()) return rc;
    char cbuf[2000] = "", fbuf[60] = "";
    findargasis("contents", 1, cbuf, sizeof cbuf);
    findargasis("format", 1, fbuf, sizeof fbuf);
    bool withmissing = findopt("missing", 1, 0);
    bool rowtot = findopt("row", 3, 0), coltot = findopt("col", 3, 0),
         scoltot = findopt("scol", 4, 0);
    bool center = findopt("center", 3, 0), left = findopt("left", 4, 0);
    if (int rc = chkopt()) return rc;
    if (center && left) return errtext(198, "options center and left may not be combined\n");
    int how = center ? ALIGN_CENTER : left ? ALIGN_LEFT : ALIGN_RIGHT;
    Axis R, C, SC;
    if (int rc = read_axes(&R, &C, &SC)) return rc;
    // a total needs its classifying variable; without it there is nothing to add up
    R.total = rowtot;
    C.total = coltot;
    SC.total = scoltot;
    std::string fmt = fbuf[0] ? fbuf : "%9.0g";
    FmtDesc fd;
    if (chkfmt(fmt.c_str(), 1, &fd)) return errorf(120, "%s invalid numeric format\n", fmt.c_str());
    // contents: freq, or a statistic and a variable
    std::vector<Content> cont;
    {
        std::vector<std::string> w;
        std::string t = cbuf;
        size_t i = 0;
        while (i < t.size()) {
            while (i < t.size() && t[i] == ' ') i++;
            size_t j = i;
            while (j < t.size() && t[j] != ' ') j++;
            if (j > i) w.push_back(t.substr(i, j - i));
            i = j;
        }
        if (w.empty()) w.push_back("freq");
        for (size_t k = 0; k < w.size(); k++) {
            Content c;
            if (cmdcmp(w[k].c_str(), "freq", 1)) {
                c.head = "Freq.";
                cont.push_back(c);
                continue;
            }
            for (const StatDef& d : statdefs)
                if (cmdcmp(w[k].c_str(), d.name, d.minlen)) {
                    c.stat = &d;
                    break;
                }
            if (!c.stat) return errorf(198, "contents(): %s is not a statistic\n", w[k].c_str());
            if (k + 1 >= w.size())
                return errorf(198, "contents(): %s needs a variable\n", w[k].c_str());
            int v = korvu_findvar(w[++k].c_str(), 1, 0);
            if (v < 0) return -v;
            if (!isnumtype(typlist[v - 1]))
                return errorf(109, "%s is a text variable: statistics need numbers\n", varname(v));
            c.var = v;
            c.head = std::string(c.stat->name) + "(" + varname(v) + ")";
            cont.push_back(c);
        }
        if (cont.size() > 5) return errtext(103, "contents() takes at most five statistics\n");
    }
    if (weclause)
        if (int rc = wgtdflt(WGT_FW)) return rc;
    Sample S;
    if (int rc = tab_sample(&S)) return rc;
    bool weighted = S.weighted, fw = wgttype == WGT_FW;
    for (Axis* a : {&R, &C, &SC}) classify_axis(a, S, withmissing);
    // each axis with its total category last: an observation falls in its own
    // category and in the total of every axis that has one
    size_t NR = R.n(), NC = C.n(), NS = SC.n(), K = cont.size();
    size_t NCELL = NR * NS * NC;
    std::vector<std::vector<Stats>> st(NCELL, std::vector<Stats>(K));
    std::vector<double> freq(NCELL, 0);
    for (size_t k = 0; k < S.size(); k++) {
        if ((k & 0xffff) == 0 && kvpollstd()) return 1;
        if (R.of[k] < 0 || C.of[k] < 0 || SC.of[k] < 0) continue;
        size_t rr[2] = {static_cast<size_t>(R.of[k]), NR - 1},
               cc[2] = {static_cast<size_t>(C.of[k]), NC - 1},
               ss[2] = {static_cast<size_t>(SC.of[k]), NS - 1};
        int nr = R.n() > R.k() ? 2 : 1, nc = C.n() > C.k() ? 2 : 1, ns = SC.n() > SC.k() ? 2 : 1;
        int i = S.at(k);
        for (int a = 0; a < nr; a++)
            for (int b = 0; b < ns; b++)
                for (int c = 0; c < nc; c++) {
                    size_t cell = (rr[a] * NS + ss[b]) * NC + cc[c];
                    freq[cell] += weighted && fw ? S.wt(k) : 1;
                    for (size_t q = 0; q < K; q++) {
                        if (!cont[q].var) continue;
                        double x = korvu_data(cont[q].var, i);
                        if (x >= misval) continue;
                        st[cell][q].v.push_back(x);
                        if (weighted) st[cell][q].w.push_back(S.wt(k));
                    }
                }
    }
    std::vector<std::string> cells(NCELL * K);
    for (size_t cell = 0; cell < NCELL; cell++) {
        if (freq[cell] == 0) continue; // an empty combination shows blank
        for (size_t q = 0; q < K; q++) {
            if (!cont[q].var) {
                cells[cell * K + q] = fmtcell("%12.0g", freq[cell]);
                continue;
            }
            finish(&st[cell][q], weighted, fw);
            double x = statof(st[cell][q], *cont[q].stat, weighted);
            bool count = cont[q].stat->head[0] == 'N' && !cont[q].stat->head[1];
            cells[cell * K + q] = fmtcell(count ? "%12.0g" : fmt, x);
        }
    }
    draw(R, C, SC, cont, cells, 9, how);
    return 0;
}

} // namespace korvu
