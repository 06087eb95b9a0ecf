// The subcommands of `matrix` that meet the data or replace elements by name:
// `matrix score`, `matrix dissimilarity` and `matrix substitute`.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/select/generate.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "results/matrix/matexp.h"
#include "results/matrix/matrix.h"

namespace korvu {

extern int32_t matsize;

namespace {

std::string eqof(const std::string& stripe, int k) {
    const char* e = stripe.data() + static_cast<size_t>(k) * STRIPE_ENTRY;
    return std::string(e, strnlen(e, STRIPE_EQ));
}
std::string nameof(const std::string& stripe, int k) {
    const char* e = stripe.data() + static_cast<size_t>(k) * STRIPE_ENTRY + STRIPE_EQ;
    return std::string(e, strnlen(e, STRIPE_NAME));
}
std::string opof(const std::string& stripe, int k) {
    const char* e = stripe.data() + static_cast<size_t>(k) * STRIPE_ENTRY + STRIPE_EQ + STRIPE_NAME;
    return std::string(e, strnlen(e, STRIPE_OP));
}

// A matrix operand given by name: a user matrix, or r(x), e(x), e(b), e(V).
int loadoperand(const std::string& name, MVal* m) {
    if (name.size() > 3 && (name[0] == 'r' || name[0] == 'e') && name[1] == '(' &&
        name.back() == ')') {
        std::string inner = name.substr(2, name.size() - 3);
        int type = name[0] == 'r' ? DM_RMATRIX : DM_EMATRIX;
        if (!mvload(inner.c_str(), type, m, false)) return 0;
        if (type == DM_EMATRIX && !mvloadest(inner.c_str(), m)) return 0;
        return errorf(111, "matrix %s not found\n", name.c_str());
    }
    return mvload(name.c_str(), DM_MATRIX, m, true);
}

// Sets the command switches for parse(): if, in and options, with or without
// a varlist.
void switches(bool varlist) {
    ifable = oable = opable = 0;
    vable = varlist ? 0 : 3;
    wable = uable = wgtable = byable = rcpable = 3;
}

} // namespace

// matrix score [type] newvar = b [if] [in] [, equation(#|name) replace
//   forcezero missval(#)]: the linear combination of the variables named by
// the columns of b, with `_cons` a constant.
int matscore() {
    std::string first = gettok(prsestd);
    int type = deftype;
    static const struct {
        const char* w;
        int code;
    } types[] = {{"byte", KV_BYTE},
                 {"int", KV_INT},
                 {"long", KV_LONG},
                 {"float", KV_FLOAT},
                 {"double", KV_DOUBLE}};
    for (const auto& t : types)
        if (first == t.w) {
            type = t.code;
            first = gettok(prsestd);
        }
    std::string newvar = first;
    if (newvar.empty() || tokisstr(newvar.c_str())) return error(198);
    if (gtokis('=')) return error(198);
    std::string bname = gettok(prsestd);
    if (bname == "e" || bname == "r") { // e(b) comes as three tokens
        std::string open = gettok(prsestd), in = gettok(prsestd), close = gettok(prsestd);
        if (open != "(" || close != ")") return error(198);
        bname += "(" + in + ")";
    }
    if (bname.empty()) return error(198);
    switches(false);
    if (int rc = parse()) return rc;
    char eqarg[64] = "";
    findargasis("equation", 2, eqarg, sizeof eqarg);
    int replace = findopt("replace", 7, 0);
    int forcezero = findopt("forcezero", 5, 0);
    double missval = misval;
    bool hasmissval = findoptv("missval", 5, &missval, 1, 0) != 0;
    if (int rc = chkopt()) return rc;

    MVal b;
    if (int rc = loadoperand(bname, &b)) return rc;
    if (b.r != 1) return errtext(503, "matrix score: the coefficients must be a row vector\n");
    std::string cs = mvcolstripe(b);
    // the columns of the equation asked for, by default the first
    std::string eq = b.c ? eqof(cs, 0) : "";
    if (eqarg[0]) {
        if (eqarg[0] == '#') {
            int want = std::atoi(eqarg + 1), k = 0;
            std::string prev;
            eq = "\x01";
            for (int j = 0; j < b.c; j++) {
                if (j == 0 || eqof(cs, j) != prev) k++;
                prev = eqof(cs, j);
                if (k == want) {
                    eq = prev;
                    break;
                }
            }
            if (eq == "\x01") return eqnotfound(eqarg);
        } else {
            eq = eqarg;
            bool found = false;
            for (int j = 0; j < b.c && !found; j++) found = eqof(cs, j) == eq;
            if (!found) return eqnotfound(eqarg);
        }
    }
    std::vector<int> vars;
    std::vector<double> coefs;
    double cons = 0;
    for (int j = 0; j < b.c; j++) {
        if (eqof(cs, j) != eq) continue;
        std::string nm = nameof(cs, j);
        double c = b.at(0, j);
        if (!opof(cs, j).empty())
            return errorf(198, "matrix score: %s.%s: time-series operators not allowed\n",
                          opof(cs, j).c_str(), nm.c_str());
        if (nm == "_cons") {
            cons = c;
            continue;
        }
        int v = sysfindvar(nm.c_str());
        if (!v || v > nvar) {
            if (forcezero) continue;
            return errorf(111, "variable %s not found\n", nm.c_str());
        }
        if (isstrtype(typlist[v - 1])) return error(109);
        vars.push_back(v);
        coefs.push_back(c);
    }
    int target = 0;
    if (replace) {
        target = sysfindvar(newvar.c_str());
        if (!target || target > nvar) return errorf(111, "variable %s not found\n", newvar.c_str());
        if (isstrtype(typlist[target - 1])) return error(109);
    } else {
        if (int rc = chkname(newvar.c_str(), 1)) return rc;
        if (int rc = chkreserved(newvar.c_str())) return rc;
        int v = sysfindvar(newvar.c_str());
        if (v && v <= nvar) return error2(3, newvar.c_str());
    }
    // the values first, so that a break changes nothing
    initialize_xeq();
    std::vector<double> val(static_cast<size_t>(nobs) + 1, misval);
    std::vector<uint8_t> used(static_cast<size_t>(nobs) + 1, 0);
    int64_t nmiss = 0;
    size_t k = vars.size();
    for (int i = 1; i <= nobs; i++) {
        if (kvpollstd()) return 1;
        if (i < nobs1 || i > nobs2 || !selobs(i)) {
            nmiss++;
            continue;
        }
        used[static_cast<size_t>(i)] = 1;
        double s = cons;
        for (size_t j = 0; j < k; j++) {
            double x = korvu_data(vars[j], i);
            if (x >= misval) {
                if (!hasmissval) {
                    s = misval;
                    break;
                }
                x = missval;
            }
            s += coefs[j] * x;
        }
        if (s >= misval || !std::isfinite(s)) s = misval, nmiss++;
        val[static_cast<size_t>(i)] = s;
    }
    if (!replace) {
        if (int rc = addvar(newvar.c_str(), type)) return rc;
        target = nvar;
        i_nvar = nvar; // the new variable outlasts the command
    }
    for (int i = 1; i <= nobs; i++)
        if (!replace || used[static_cast<size_t>(i)]) store(target, i, val[static_cast<size_t>(i)]);
    if (!replace) missmsg(nmiss, 1);
    return 0;
}

// matrix dissimilarity D = varlist [if] [in] [, measure variables
//   observations names(varname)]: distances between observations (the
// default) or between variables, over the observations without a missing
// value in the varlist. Measures: L2 (Euclidean, the default), L2squared, L1
// (absolute, cityblock), Linfinity (maximum), Canberra.
int matdissim() {
    std::string target = gettok(prsestd);
    if (target.empty() || tokisstr(target.c_str())) return error(198);
    if (int rc = chkname(target.c_str(), 1)) return rc;
    if (gtokis('=')) return error(198);
    switches(true);
    if (int rc = parse()) return rc;
    enum { L2, L2SQ, L1, LINF, CANB } measure = L2;
    int nm = 0;
    if (findopt("L2", 2, 0) || findopt("Euclidean", 9, 0)) measure = L2, nm++;
    if (findopt("L2squared", 9, 0)) measure = L2SQ, nm++;
    if (findopt("L1", 2, 0) || findopt("absolute", 8, 0) || findopt("cityblock", 9, 0))
        measure = L1, nm++;
    if (findopt("Linfinity", 9, 0) || findopt("maximum", 7, 0)) measure = LINF, nm++;
    if (findopt("Canberra", 8, 0)) measure = CANB, nm++;
    int byvars = findopt("variables", 3, 0);
    int byobs = findopt("observations", 3, 0);
    char namesv[64] = "";
    findargasis("names", 5, namesv, sizeof namesv);
    if (int rc = chkopt()) return rc;
    if (nm > 1) return errtext(198, "only one dissimilarity measure may be given\n");
    if (byvars && byobs)
        return errtext(198, "options variables and observations may not be combined\n");
    if (byvars && namesv[0])
        return errtext(198, "option names() may not be combined with variables\n");
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    if (vars.empty())
        for (int v = 1; v <= nvar; v++)
            if (!ispatexempt(v)) vars.push_back(v);
    for (int v : vars)
        if (isstrtype(typlist[v - 1])) return error(109);
    int namev = 0;
    if (namesv[0]) {
        namev = sysfindvar(namesv);
        if (!namev || namev > nvar) return errorf(111, "variable %s not found\n", namesv);
    }
    // the observations used
    initialize_xeq();
    std::vector<int> obs;
    for (int i = nobs1; i <= nobs2; i++) {
        if (kvpollstd()) return 1;
        if (!selobs(i)) continue;
        bool ok = true;
        for (int v : vars)
            if (korvu_data(v, i) >= misval) ok = false;
        if (ok) obs.push_back(i);
    }
    if (obs.empty()) return errtext(2000, "no observations\n"); // a failure here
    int n = byvars ? static_cast<int>(vars.size()) : static_cast<int>(obs.size());
    int p = byvars ? static_cast<int>(obs.size()) : static_cast<int>(vars.size());
    if (n > matsize) return error(908);
    // the points, one row each
    std::vector<double> x(static_cast<size_t>(n) * p);
    for (size_t o = 0; o < obs.size(); o++)
        for (size_t v = 0; v < vars.size(); v++) {
            double val = korvu_data(vars[v], obs[o]);
            if (byvars)
                x[v * p + o] = val;
            else
                x[o * p + v] = val;
        }
    MVal d;
    d.r = d.c = n;
    d.sym = true;
    d.v.assign(static_cast<size_t>(n) * n, 0.0);
    for (int a = 0; a < n; a++) {
        if (kvpollrare()) return 1;
        const double* xa = &x[static_cast<size_t>(a) * p];
        for (int b = 0; b < a; b++) {
            const double* xb = &x[static_cast<size_t>(b) * p];
            double s = 0;
            for (int k = 0; k < p; k++) {
                double diff = std::fabs(xa[k] - xb[k]);
                switch (measure) {
                case L2:
                case L2SQ: s += diff * diff; break;
                case L1: s += diff; break;
                case LINF: s = std::max(s, diff); break;
                case CANB: {
                    double den = std::fabs(xa[k]) + std::fabs(xb[k]);
                    if (den > 0) s += diff / den;
                    break;
                }
                }
            }
            if (measure == L2) s = std::sqrt(s);
            d.at(a, b) = d.at(b, a) = s;
        }
    }
    // names: the variables, or the values of names(), or obs1, obs2, ...
    std::string stripe(static_cast<size_t>(n) * STRIPE_ENTRY, '\0');
    for (int k = 0; k < n; k++) {
        std::string s;
        if (byvars) {
            s = varname(vars[static_cast<size_t>(k)]);
        } else if (namev) {
            int i = obs[static_cast<size_t>(k)];
            if (isstrtype(typlist[namev - 1])) {
                char buf[260];
                s = skorvu_data(namev, i, buf);
            } else {
                char buf[40];
                double v = korvu_data(namev, i);
                if (v >= misval)
                    s = ".";
                else
                    snprintf(buf, sizeof buf, "%.15g", v), s = buf;
            }
            for (char& c : s)
                if (c == ' ' || c == ':' || c == '.') c = '_';
            if (s.empty()) s = "_";
            if (s.size() >= STRIPE_NAME) s.resize(STRIPE_NAME - 1);
        } else {
            s = "obs" + std::to_string(obs[static_cast<size_t>(k)]);
        }
        matputfullname(stripe.data(), k, "", s.c_str(), "");
    }
    d.rs = d.cs = stripe;
    return mvstore(target.c_str(), d);
}

// matrix substitute A = B: each element of B goes into the element of A whose
// row and column carry the same full names; a name of B that A lacks is 503.
int matsubst() {
    std::string target = gettok(prsestd);
    if (target.empty() || tokisstr(target.c_str())) return error(198);
    if (gtokis('=')) return error(198);
    std::string src = gettok(prsestd);
    if (src == "e" || src == "r") {
        std::string open = gettok(prsestd), in = gettok(prsestd), close = gettok(prsestd);
        if (open != "(" || close != ")") return error(198);
        src += "(" + in + ")";
    }
    if (src.empty() || gettok(prsestd)[0]) return error(198);
    MVal a, b;
    if (int rc = mvload(target.c_str(), DM_MATRIX, &a, true)) return rc;
    if (int rc = loadoperand(src, &b)) return rc;
    std::string ars = mvrowstripe(a), acs = mvcolstripe(a);
    std::string brs = mvrowstripe(b), bcs = mvcolstripe(b);
    auto find = [](const std::string& stripe, int n, const char* entry) {
        for (int k = 0; k < n; k++)
            if (!std::memcmp(stripe.data() + static_cast<size_t>(k) * STRIPE_ENTRY, entry,
                             STRIPE_ENTRY))
                return k;
        return -1;
    };
    std::vector<int> ri(b.r), ci(b.c);
    for (int i = 0; i < b.r; i++) {
        ri[i] = find(ars, a.r, brs.data() + static_cast<size_t>(i) * STRIPE_ENTRY);
        if (ri[i] < 0)
            return errorf(503, "row %s of %s not found in %s\n",
                          matgetfullname(brs.data(), i, 1).c_str(), src.c_str(), target.c_str());
    }
    for (int j = 0; j < b.c; j++) {
        ci[j] = find(acs, a.c, bcs.data() + static_cast<size_t>(j) * STRIPE_ENTRY);
        if (ci[j] < 0)
            return errorf(503, "column %s of %s not found in %s\n",
                          matgetfullname(bcs.data(), j, 1).c_str(), src.c_str(), target.c_str());
    }
    for (int i = 0; i < b.r; i++)
        for (int j = 0; j < b.c; j++) a.at(ri[i], ci[j]) = b.at(i, j);
    if (a.sym)
        for (int i = 0; i < a.r && a.sym; i++)
            for (int j = 0; j < i; j++)
                if (a.at(i, j) != a.at(j, i)) {
                    a.sym = false;
                    break;
                }
    a.rs = ars, a.cs = acs;
    return mvstore(target.c_str(), a);
}

} // namespace korvu
