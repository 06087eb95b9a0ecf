// inspect: for each variable, how many of its values are negative, zero and
// positive, whole or not, missing, and how many distinct values it takes.
// codebook: a description of each variable: type, labels, range, units,
// distinct and missing values, and its mean and percentiles, its table of
// values when there are few, or examples of its texts.
#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/select/generate.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/stores.h"
#include "results/summarize.h"
#include "results/tables/tables.h"
#include "results/tables/tables_internal.h"

namespace korvu {

namespace {

std::string g9(double x, const char* fmt = "%9.0g") {
    std::string t = safereforms(fmt, x);
    size_t a = t.find_first_not_of(' ');
    return a == std::string::npos ? "" : t.substr(a);
}
std::string cnt(double x, int w) {
    return rjust(g9(x, "%12.0f"), w);
}
} // namespace

int inspectcmd(int) {
    vable = 2;
    byable = 0;
    if (int rc = parse()) return rc;
    if (int rc = chkopt()) return rc;
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    if (vars.empty())
        for (int v = 1; v <= nvar; v++) vars.push_back(v);
    std::vector<char> buf(KV_STRMAX + 2);
    for (int v : vars) {
        double nneg = 0, nzero = 0, npos = 0, negint = 0, posint = 0, nmiss = 0;
        std::set<double> uniq;
        std::set<std::string> suniq;
        bool isstr = !isnumtype(typlist[v - 1]);
        for (int i = nobs1; i <= nobs2; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            if (ifclause && !selobs(i)) continue;
            if (isstr) {
                skorvu_data(v, i, buf.data());
                if (!buf[0]) {
                    nmiss++;
                    continue;
                }
                npos++; // counted as present
                if (suniq.size() <= 100000) suniq.insert(buf.data());
                continue;
            }
            double x = korvu_data(v, i);
            if (x >= misval) {
                nmiss++;
                continue;
            }
            bool whole = x == std::floor(x);
            if (x < 0)
                nneg++, negint += whole;
            else if (x == 0)
                nzero++;
            else
                npos++, posint += whole;
            if (uniq.size() <= 100000) uniq.insert(x);
        }
        double total = nneg + nzero + npos;
        std::string lab = ptrvarlab(v) ? ptrvarlab(v) : "";
        tab_txt("\n");
        tab_res(std::string(varname(v)) + ":");
        tab_txt((lab.empty() ? "" : "  " + lab) + "\n");
        if (isstr) {
            tab_txt("   text variable: ");
            tab_res(g9(total, "%12.0f"));
            tab_txt(" non-empty, ");
            tab_res(g9(nmiss, "%12.0f"));
            tab_txt(" empty, ");
            tab_res(g9(static_cast<double>(suniq.size()), "%12.0f"));
            tab_txt(" distinct\n");
        } else {
            tab_txt("{col 25}Number of observations\n");
            tab_txt("{col 25}{hline 30}\n");
            tab_txt("{col 25}     Total  Integers   Nonintegers\n");
            auto row = [&](const char* name, double t, double in, bool ints) {
                tab_txt(std::string("   ") + ljust(name, 21));
                std::string s = cnt(t, 10);
                if (ints) s += cnt(in, 10) + cnt(t - in, 14);
                tab_res(s + "\n");
            };
            row("Negative", nneg, negint, true);
            row("Zero", nzero, nzero, true);
            row("Positive", npos, posint, true);
            tab_txt("{col 25}     {hline 5}     {hline 5}         {hline 5}\n");
            row("Total", total, negint + nzero + posint, true);
            row("Missing", nmiss, 0, false);
            tab_txt("{col 25}     {hline 5}\n");
            row("", total + nmiss, 0, false);
            std::string u = uniq.size() > 100000 ? "more than 100000"
                                                 : g9(static_cast<double>(uniq.size()), "%12.0f");
            tab_txt("   (" + u + " distinct " + (uniq.size() == 1 ? "value" : "values") + ")\n");
        }
        retval_clear();
        retval_set_scalar("N", total);
        retval_set_scalar("N_neg", nneg);
        retval_set_scalar("N_0", nzero);
        retval_set_scalar("N_pos", npos);
        retval_set_scalar("N_negint", negint);
        retval_set_scalar("N_posint", posint);
        retval_set_scalar("N_miss", nmiss);
        double nu = isstr ? static_cast<double>(suniq.size()) : static_cast<double>(uniq.size());
        retval_set_scalar("N_unique", nu > 100000 ? misval : nu);
    }
    return 0;
}

int codebookcmd(int) {
    vable = 2;
    opable = 0;
    if (int rc = parse()) return rc;
    double tabmax = 9;
    findoptv("tabulate", 3, &tabmax, 1, 0);
    if (int rc = chkopt()) return rc;
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    if (vars.empty())
        for (int v = 1; v <= nvar; v++) vars.push_back(v);
    std::vector<char> buf(KV_STRMAX + 2);
    for (int v : vars) {
        bool isstr = !isnumtype(typlist[v - 1]);
        std::vector<double> x;
        std::map<double, double> freq;
        std::map<std::string, double> sfreq;
        double N = 0, nmiss = 0;
        for (int i = nobs1; i <= nobs2; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            if (ifclause && !selobs(i)) continue;
            N++;
            if (isstr) {
                skorvu_data(v, i, buf.data());
                if (!buf[0])
                    nmiss++;
                else
                    sfreq[buf.data()]++;
            } else {
                double y = korvu_data(v, i);
                if (y >= misval)
                    nmiss++;
                else
                    x.push_back(y), freq[y]++;
            }
        }
        std::string lab = ptrvarlab(v) ? ptrvarlab(v) : "";
        tab_txt("\n{hline}\n");
        tab_res(std::string(varname(v)));
        tab_txt((lab.empty() ? std::string() : "{col 30}" + lab) + "\n{hline}\n\n");
        auto field = [&](const std::string& name, const std::string& value) {
            tab_txt(rjust(name, 22) + ":  ");
            tab_res(value + "\n");
        };
        if (isstr) {
            field("type", "text (str" + std::to_string(typlist[v - 1]) + ")");
            tab_txt("\n");
            field("distinct values", g9(static_cast<double>(sfreq.size()), "%12.0f"));
            field("empty \"\"", g9(nmiss, "%12.0f") + "/" + g9(N, "%12.0f"));
            if (!sfreq.empty() && static_cast<double>(sfreq.size()) <= tabmax) {
                tab_txt("\n" + rjust("tabulation", 22) + ":  Freq.  Value\n");
                for (const auto& kv : sfreq) {
                    tab_txt(std::string(24, ' '));
                    tab_res(cnt(kv.second, 6) + "  \"" + kv.first + "\"\n");
                }
            } else if (!sfreq.empty()) {
                // examples: values at the 10th, 30th, 50th, 70th and 90th percent of the order
                std::vector<std::string> all;
                for (const auto& kv : sfreq) all.push_back(kv.first);
                tab_txt("\n" + rjust("examples", 22) + ":  ");
                bool first = true;
                for (double q : {0.1, 0.3, 0.5, 0.7, 0.9}) {
                    size_t k = std::min(all.size() - 1,
                                        static_cast<size_t>(q * static_cast<double>(all.size())));
                    if (!first) tab_txt(std::string(25, ' '));
                    tab_res("\"" + all[k] + "\"\n");
                    first = false;
                }
            }
            continue;
        }
        std::string t = std::string("numeric (") + typename_of(typlist[v - 1]) + ")";
        field("type", t);
        if (lblname(v)[0]) field("label", lblname(v));
        tab_txt("\n");
        if (x.empty()) {
            field("range", "none: every value is missing");
            field("missing .", g9(nmiss, "%12.0f") + "/" + g9(N, "%12.0f"));
            continue;
        }
        double lo = *std::min_element(x.begin(), x.end()),
               hi = *std::max_element(x.begin(), x.end());
        // units: the largest power of ten that divides every value
        double units = 0;
        for (int k = 7; k >= -8 && units == 0; k--) {
            double u = std::pow(10.0, k);
            bool ok = true;
            for (double y : x) {
                double q = y / u;
                if (std::fabs(q - std::nearbyint(q)) > 1e-7 * std::max(1.0, std::fabs(q))) {
                    ok = false;
                    break;
                }
            }
            if (ok) units = u;
        }
        field("range", "[" + g9(lo) + "," + g9(hi) + "]");
        field("units", units > 0 ? g9(units) : "none found");
        field("distinct values", g9(static_cast<double>(freq.size()), "%12.0f"));
        field("missing .", g9(nmiss, "%12.0f") + "/" + g9(N, "%12.0f"));
        double sum = 0, err = 0;
        for (double y : x) accumerr(&sum, &err, y);
        double mean = (sum + err) / static_cast<double>(x.size());
        double ss = 0, e2 = 0;
        for (double y : x) accumerr(&ss, &e2, (y - mean) * (y - mean));
        double sd =
            x.size() > 1 ? std::sqrt((ss + e2) / static_cast<double>(x.size() - 1)) : misval;
        tab_txt("\n");
        field("mean", g9(mean));
        field("std. dev.", g9(sd));
        if (static_cast<double>(freq.size()) <= tabmax) {
            tab_txt("\n" + rjust("tabulation", 22) + ":  Freq.   Value\n");
            for (const auto& kv : freq) {
                tab_txt(std::string(24, ' '));
                std::string s = cnt(kv.second, 6) + "  " + rjust(g9(kv.first), 6);
                const char* l = lblname(v)[0] ? vl_lookup(lblname(v), kv.first) : nullptr;
                if (l) s += "  " + std::string(l);
                tab_res(s + "\n");
            }
            if (nmiss) {
                tab_txt(std::string(24, ' '));
                tab_res(cnt(nmiss, 6) + "       .\n");
            }
        } else {
            double p[5] = {10, 25, 50, 75, 90}, out[5];
            std::vector<double> c = x;
            pctiles_unweighted(c.data(), c.size(), p, 5, out);
            tab_txt("\n" + rjust("percentiles", 22) + ":  ");
            std::string h, r;
            for (int k = 0; k < 5; k++) h += rjust(g9(p[k]) + "%", 10);
            tab_txt(h + "\n" + std::string(25, ' '));
            for (int k = 0; k < 5; k++) r += rjust(g9(out[k]), 10);
            tab_res(r + "\n");
        }
    }
    return 0;
}

} // namespace korvu
