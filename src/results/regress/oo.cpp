// The coefficient table shared by the estimators, and `ereturn display`
// through it.
#include <cmath>
#include <cstring>
#include <string>

#include "data/area/missing.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/distrib/distrib.h"
#include "results/matlink.h"
#include "results/regress/regress.h"
#include "results/settings.h"
#include "results/stores.h"

namespace korvu {

namespace {

std::string cell(const char* f, double x) {
    if (x >= misval) {
        std::string s = safereforms(f, 0);
        return std::string(s.size() > 0 ? s.size() - 1 : 0, ' ') + ".";
    }
    return safereforms(f, x);
}

// The level as text: "95", "99.5".
std::string leveltext(double level) {
    char buf[32];
    snprintf(buf, sizeof buf, "%g", level);
    if (dpcomma || kset.dp_comma)
        for (char* c = buf; *c; ++c)
            if (*c == '.') *c = ',';
    return buf;
}

double critical(const OoState& st) {
    double a = (1 - st.level / 100) / 2;
    return st.df < 0 ? inormal(1 - a) : invttail(st.df, a);
}

} // namespace

void oo_init() {
    c_outlev = 1;
    spoutptl("{hline 13}{c TT}{hline 64}\n");
}

void oo_init_straightline() {
    c_outlev = 1;
    spoutptl("{hline 78}\n");
}

void oo_stub(const char* name) {
    c_outlev = 1;
    spoutptlf("%12s {c |}", abvar(name, 12));
}

void oo_sep() {
    c_outlev = 1;
    spoutptl("{hline 13}{c +}{hline 64}\n");
}

void oo_close() {
    c_outlev = 1;
    spoutptl("{hline 13}{c BT}{hline 64}\n");
}

void oo_rchdr(const OoState& st, const char* depvar) {
    c_outlev = 1;
    if (!st.vcetype.empty()) {
        int n = 18 - static_cast<int>(st.vcetype.size()) / 2;
        spoutptlf("%13s{c |}%*s%s\n", "", n < 0 ? 0 : n, "", st.vcetype.c_str());
    }
    char letter = st.df < 0 ? 'z' : 't';
    std::string title = st.eform.empty() ? "Coef." : st.eform;
    spoutptlf("%12s {c |}%11s   Std. Err.      %c    P>|%c|", abvar(depvar, 12), title.c_str(),
              letter, letter);
    if (st.beta) {
        spoutptl(std::string(21, ' ').c_str());
        spoutptl("Beta\n");
        return;
    }
    std::string lt = leveltext(st.level);
    int pad = 7 - static_cast<int>(lt.size());
    spoutptlf("%*s[%s%% Conf. Interval]\n", pad < 1 ? 1 : pad, "", lt.c_str());
}

void oo_coefrow(const OoState& st, const char* name, double b, double se, double beta) {
    oo_stub(name);
    c_outlev = 0;
    if (b == 0 && se >= misval) {
        spout21("  (dropped)");
        newline();
        return;
    }
    double t = se > 0 && se < misval ? b / se : misval;
    double p = misval;
    if (t < misval) p = st.df < 0 ? 2 * stnormal(-std::fabs(t)) : 2 * ttail(st.df, std::fabs(t));
    double crit = critical(st);
    double lo = se < misval ? b - crit * se : misval, hi = se < misval ? b + crit * se : misval;
    double cb = b, cse = se;
    if (!st.eform.empty()) {
        cb = std::exp(b);
        cse = se < misval ? cb * se : misval;
        lo = lo < misval ? std::exp(lo) : misval;
        hi = hi < misval ? std::exp(hi) : misval;
    }
    std::string line = "  " + cell(st.cfmt.c_str(), cb) + "  " + cell(st.cfmt.c_str(), cse);
    line += " " + cell("%8.2f", std::fabs(t) > 9999 ? misval : t);
    line += "   " + cell(st.pfmt.c_str(), p);
    if (st.beta) {
        if (beta < misval) line += std::string(16, ' ') + cell("%9.0g", beta);
    } else {
        line += "    " + cell(st.cfmt.c_str(), lo) + "   " + cell(st.cfmt.c_str(), hi);
    }
    spout21(line.c_str());
    newline();
}

// ereturn display [, level(#) eform(string)]
int ereturn_display() {
    vable = ifable = oable = wgtable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    if (int rc = findlevel(1)) return rc;
    char ef[200] = "";
    findargasis("eform", 2, ef, sizeof ef);
    if (int rc = chkopt()) return rc;
    if (!lastest) return error(301), 301;
    DenseMat b, V;
    if (!matlink.load || matlink.load("_b", ET_RECORD, &b)) return error(301), 301;
    bool hv = !matlink.load("VCE", ET_RECORD, &V);
    OoState st;
    st.level = cilevel;
    st.eform = ef;
    double dfr = estval_get_double("df_r");
    st.df = dfr < misval ? static_cast<int>(dfr) : -1;
    char buf[80];
    estval_use_vcetype(buf, sizeof buf);
    st.vcetype = buf;
    estuseshort("depvar", buf, sizeof buf);
    if (s_outlev > 2) return 0;
    oo_init();
    oo_rchdr(st, buf);
    std::string lasteq = "";
    bool first = true;
    for (int j = 0; j < b.cols; ++j) {
        std::string n = b.colnames[j], eq;
        size_t c = n.find(':');
        if (c != std::string::npos) eq = n.substr(0, c), n = n.substr(c + 1);
        if (first || eq != lasteq) {
            oo_sep();
            if (!eq.empty()) {
                c_outlev = 1;
                spoutptlf("%-12s {c |}\n", abvar(eq.c_str(), 12));
            }
        }
        first = false;
        lasteq = eq;
        if (n == "_cons" && !st.eform.empty()) continue;
        double v = hv ? V.at(j, j) : misval;
        double se = v < misval && v > 0 ? std::sqrt(v) : (v == 0 ? misval : misval);
        if (v < misval && v > 0) se = std::sqrt(v);
        oo_coefrow(st, n.c_str(), b.x[j], se, misval);
    }
    oo_close();
    return 0;
}

} // namespace korvu
