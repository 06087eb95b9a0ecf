// xgenerate: a new variable from a function of groups of observations or of
// the variables of each row.
//     xgenerate [type] newvar = fcn(arguments) [if] [in] [, by(varlist) options]
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/groups/groups_internal.h"
#include "data/labels/label.h"
#include "data/select/generate.h"
#include "data/vars/varlist.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

namespace korvu {

namespace {

enum Kind { K_STAT, K_RANK, K_STD, K_GROUP, K_TAG, K_SEQ, K_CUT, K_CONCAT, K_ROW };
enum RowFn { R_MEAN, R_TOTAL, R_MIN, R_MAX, R_MISS, R_NONMISS, R_ANYCOUNT, R_SD };

struct Fn {
    const char* word;
    Kind kind;
    int arg; // the statistic, or the row function
};
const Fn fns[] = {
    {"mean", K_STAT, GS_MEAN},
    {"total", K_STAT, GS_SUM},
    {"count", K_STAT, GS_COUNT},
    {"min", K_STAT, GS_MIN},
    {"max", K_STAT, GS_MAX},
    {"sd", K_STAT, GS_SD},
    {"median", K_STAT, GS_PCTILE},
    {"pctile", K_STAT, GS_PCTILE},
    {"iqr", K_STAT, GS_IQR},
    {"mode", K_STAT, GS_MODE},
    {"first", K_STAT, GS_FIRST},
    {"last", K_STAT, GS_LAST},
    {"firstnm", K_STAT, GS_FIRSTNM},
    {"lastnm", K_STAT, GS_LASTNM},
    {"rank", K_RANK, 0},
    {"std", K_STD, 0},
    {"group", K_GROUP, 0},
    {"tag", K_TAG, 0},
    {"seq", K_SEQ, 0},
    {"cut", K_CUT, 0},
    {"concat", K_CONCAT, 0},
    {"rowmean", K_ROW, R_MEAN},
    {"rowtotal", K_ROW, R_TOTAL},
    {"rowmin", K_ROW, R_MIN},
    {"rowmax", K_ROW, R_MAX},
    {"rowsd", K_ROW, R_SD},
    {"rowmiss", K_ROW, R_MISS},
    {"rownonmiss", K_ROW, R_NONMISS},
    {"anycount", K_ROW, R_ANYCOUNT},
};

// The argument as numbers over nobs1..nobs2: a variable read straight from
// its column, or an expression.
int argvalues(const std::string& text, const double** xp) {
    int64_t n = std::max(nobs2 - nobs1 + 1, 0);
    std::string t = text;
    while (!t.empty() && t.back() == ' ') t.pop_back();
    while (!t.empty() && t.front() == ' ') t.erase(t.begin());
    if (t.empty()) return errtext(198, "an argument is required\n");
    int v = 0;
    if (t.find_first_of(" +-*/^()[]<>=!~&|\"'") == std::string::npos) v = sysfindvar(t.c_str());
    if (v && !isstrtype(typlist[v - 1])) {
        *xp = groups_values(v, nobs1, nobs2, 1);
        return 0;
    }
    static ExpObj obj;
    zapexp(&obj);
    if (int rc = compexp_text(&obj, t.data(), t.data() + t.size(), 0, 0)) return rc;
    double* x = grp_scratch(1, static_cast<size_t>(n));
    constexpr int32_t CHUNK = 4096;
    for (int32_t i0 = nobs1; i0 <= nobs2; i0 += CHUNK) {
        if (kvpollstd()) return 1;
        int32_t i1 = std::min(nobs2, i0 + CHUNK - 1);
        xeqblock(&obj, i0, i1, x + (i0 - nobs1));
    }
    *xp = x;
    return 0;
}

// Text of a cell for concatenation: strings as they are, numbers through the
// variable's display format without the padding.
std::string celltext(int v, int32_t i) {
    char buf[260];
    if (isstrtype(typlist[v - 1])) return std::string(skorvu_data(v, i, buf));
    double x = korvu_data(v, i);
    fmtnum(buf, fmtname(v), x);
    const char* p = buf;
    while (*p == ' ') p++;
    std::string s(p);
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
}

// The points of cut(): those of at() in order, repeats merged; or for
// group(#) the smallest value taken, the quantiles at 1/#, 2/#, ... (the
// percentiles of the group statistics: the mean of two neighbouring order
// statistics where n*j/# is whole, else the next one) and the largest value,
// repeats merged.
int cutpoints(const double* x, int64_t n, const uint8_t* take, const std::vector<double>& at,
              int ngroup, std::vector<double>* cuts) {
    cuts->clear();
    if (!ngroup) {
        *cuts = at;
    } else {
        std::vector<double> v;
        for (int64_t k = 0; k < n; k++) {
            if ((k & 65535) == 0 && kvpollstd()) return 1;
            if (take[k] && x[k] < misval) v.push_back(x[k]);
        }
        if (v.empty()) return 0;
        std::sort(v.begin(), v.end());
        const int64_t m = static_cast<int64_t>(v.size());
        cuts->push_back(v.front());
        for (int j = 1; j < ngroup; j++) {
            // position j*m/ngroup, kept exact in integers
            int64_t num = static_cast<int64_t>(j) * m;
            int64_t i = num / ngroup;
            double c = num % ngroup == 0 ? (v[i - 1] + v[i]) / 2 : v[i];
            cuts->push_back(c);
        }
        cuts->push_back(v.back());
    }
    std::sort(cuts->begin(), cuts->end());
    cuts->erase(std::unique(cuts->begin(), cuts->end()), cuts->end());
    return 0;
}

// A number for a label: the shortest text that reads back to it, without
// an exponent where the number is whole and has fewer than 16 digits.
std::string cutnum(double x) {
    char b[40];
    // no fewer digits than the whole part has, so that 20 does not read 2e+01
    double ax = std::fabs(x);
    int d0 = ax >= 1 && ax < 1e15 ? static_cast<int>(std::floor(std::log10(ax))) + 1 : 1;
    for (int d = d0; d <= 17; d++) {
        std::snprintf(b, sizeof b, "%.*g", d, x);
        if (std::strtod(b, nullptr) == x) break;
    }
    return b;
}

// The value label of cut()'s codes, named as the new variable: code j reads
// "[c_j, c_j+1)", the last one of quantile groups "[c, d]".
int cutlabels(const std::string& name, const std::vector<double>& cuts, bool closed) {
    if (cuts.size() < 2) return 0;
    int32_t* t = vlallocate(name.c_str(), 0, 0);
    if (!t) return error(950);
    for (size_t j = 0; j + 1 < cuts.size(); j++) {
        bool last = j + 2 == cuts.size();
        std::string text =
            "[" + cutnum(cuts[j]) + ", " + cutnum(cuts[j + 1]) + (last && closed ? "]" : ")");
        int at = vlfindval(t, nullptr, 0, static_cast<double>(j));
        t = vladdlab(t, -at - 1, text.c_str(), static_cast<double>(j));
        if (!t) return error(vl_error ? vl_error : 950);
    }
    std::snprintf(lblname(nvar), NAMELEN1, "%s", name.c_str());
    return 0;
}

} // namespace

int grp_xgen() {
    // [type] newvar
    gettok(prsestd);
    int type = 0;
    if (!tokisstr(token) && (type = cvtype(token)) < 0) return error(198);
    if (!type) ungettok();
    gettok(prsestd);
    if (!token[0] || tokisstr(token)) return error(198);
    std::string name = token;
    if (int rc = chkname(name.c_str(), 1)) return rc;
    if (int rc = chkreserved(name.c_str())) return rc;
    if (sysfindvar(name.c_str())) return error2(3, name.c_str());
    gettok(prsestd);
    if (!tokis(token, "=")) return errtext(198, "= expected\n");
    gettok(prsestd);
    std::string fname = token;
    const Fn* fn = nullptr;
    for (const Fn& f : fns)
        if (fname == f.word) fn = &f;
    if (!fn) return errorf(133, "unknown xgenerate function %s()\n", fname.c_str());
    std::string args;
    if (int rc = grp_paren(args)) return rc;

    ifable = 0;
    oable = 0;
    if (int rc = parse_ifinopts()) return rc;
    std::vector<int32_t> keys = grp_byvars;
    bool byopt = false;
    std::string bytext = grp_optarg("by", 2, &byopt);
    std::vector<int32_t> byv;
    if (byopt) {
        if (int rc = grp_varlist(bytext, byv)) return rc;
        keys.insert(keys.end(), byv.begin(), byv.end());
    }
    // options of the functions
    bool given = false;
    double p = 50;
    std::string ptext = grp_optarg("p", 1, &given);
    if (given) {
        char* end;
        p = std::strtod(ptext.c_str(), &end);
        if (*end || !(p > 0 && p < 100))
            return errtext(198, "p() must be a number between 0 and 100\n");
    }
    int modeopt = findopt("minmode", 4, 0) ? 1 : (findopt("maxmode", 4, 0) ? 2 : 0);
    int rankopt = findopt("field", 5, 0) ? 1 : (findopt("track", 5, 0) ? 2 : 0);
    if (findopt("unique", 6, 0)) rankopt = 3;
    double stdmean = 0, stdsd = 1;
    std::string t1 = grp_optarg("mean", 4, &given);
    if (given && (cnvstoz(t1.c_str(), &stdmean) || stdmean >= misval)) return error(198);
    t1 = grp_optarg("sd", 2, &given);
    if (given && (cnvstoz(t1.c_str(), &stdsd) || stdsd >= misval)) return error(198);
    bool missingopt = findopt("missing", 4, 0);
    double from = 1, to = misval, block = 1;
    t1 = grp_optarg("from", 1, &given);
    if (given && cnvstoz(t1.c_str(), &from)) return error(198);
    t1 = grp_optarg("to", 1, &given);
    if (given && cnvstoz(t1.c_str(), &to)) return error(198);
    t1 = grp_optarg("block", 1, &given);
    if (given && (cnvstoz(t1.c_str(), &block) || block < 1 || block != std::floor(block)))
        return error(198);
    std::vector<double> at;
    bool atgiven = false;
    t1 = grp_optarg("at", 2, &atgiven);
    if (atgiven && grp_numlist(t1, at)) return 198;
    bool icodes = findopt("icodes", 5, 0);
    double ngroup = 0;
    bool groupgiven = false;
    t1 = grp_optarg("group", 5, &groupgiven);
    if (groupgiven && (cnvstoz(t1.c_str(), &ngroup) || ngroup < 1 || ngroup > 10000 ||
                       ngroup != std::floor(ngroup)))
        return errtext(198, "group() must be a whole number from 1 to 10,000\n");
    bool cutlabel = findopt("label", 5, 0);
    std::string punct = grp_optarg("punct", 1, &given);
    std::vector<double> values;
    t1 = grp_optarg("values", 1, &given);
    if (given && grp_numlist(t1, values)) return 198;
    if (fn->kind == K_ROW && fn->arg == R_ANYCOUNT && !given)
        return errtext(198, "option values() required\n");
    if (fn->kind == K_CUT) {
        if (atgiven == groupgiven) return errtext(198, "cut() needs one of at() and group()\n");
        if (!keys.empty()) return errtext(190, "cut() may not be combined with by\n");
        if (cutlabel) {
            if (vlfind(name.c_str()))
                return errorf(110, "value label %s already defined\n", name.c_str());
            icodes = true; // the labels go on the codes
        }
    }
    if (int rc = chkopt()) return rc;
    if (fn->kind == K_STAT && fn->arg == GS_PCTILE) {
        if (fname == "median") p = 50;
    }

    static std::vector<uint8_t> take; // kept across commands: no fresh pages
    if (int rc = grp_take(take, nullptr)) return rc;
    const int32_t n1 = nobs1, n2 = nobs2;
    const int64_t n = n2 >= n1 ? n2 - n1 + 1 : 0;
    // a sum or count by one numeric key of whole numbers in a small range
    // goes straight from the key's column into the new one
    static GDirect dg;
    std::vector<double> dgv;
    bool direct = false;
    if (fn->kind == K_STAT && keys.size() == 1 && gdirect_stat_ok(fn->arg)) {
        int rc = gdirect_make(&dg, keys[0], n1, n2, ifclause ? take.data() : nullptr, false);
        if (rc > 0) return rc;
        direct = rc == 0;
    }
    double* out = nullptr;
    if (!direct) {
        out = grp_scratch(2, static_cast<size_t>(n));
        std::fill(out, out + n, misval);
    }
    std::vector<std::string> sout; // concat
    std::vector<double> cuts;      // cut
    int deflt = deftype;

    if (fn->kind == K_ROW || fn->kind == K_CONCAT || fn->kind == K_GROUP || fn->kind == K_TAG) {
        std::vector<int32_t> vars;
        if (int rc = grp_varlist(args, vars)) return rc;
        if (vars.empty()) return error(102);
        if (fn->kind == K_GROUP || fn->kind == K_TAG) {
            std::vector<int32_t> k2 = grp_byvars;
            k2.insert(k2.end(), vars.begin(), vars.end());
            static Groups g;
            if (int rc = groups_make(&g, k2.data(), static_cast<int>(k2.size()), n1, n2,
                                     take.data(), GRP_ORDER | (missingopt ? 0 : GRP_NOMISS)))
                return rc;
            if (fn->kind == K_GROUP) {
                for (int64_t k = 0; k < n; k++)
                    if (g.gid[k] >= 0) out[k] = g.gid[k] + 1.0;
                deflt = g.ngroups <= maxbyte ? KV_BYTE : (g.ngroups <= maxint ? KV_INT : KV_LONG);
            } else {
                // 1 on the first observation of each group, 0 elsewhere
                for (int64_t k = 0; k < n; k++) out[k] = 0;
                for (int32_t r : g.rep) out[r - n1] = 1;
                deflt = KV_BYTE;
            }
        } else if (fn->kind == K_CONCAT) {
            sout.assign(static_cast<size_t>(n), std::string());
            for (int64_t k = 0; k < n; k++) {
                if ((k & 4095) == 0 && kvpollstd()) return 1;
                if (!take[k]) continue;
                std::string s;
                for (size_t q = 0; q < vars.size(); q++) {
                    if (q) s += punct;
                    s += celltext(vars[q], static_cast<int32_t>(k) + n1);
                }
                if (s.size() > KV_STRMAX) s.resize(KV_STRMAX);
                sout[k] = s;
            }
        } else {
            std::vector<double> col(static_cast<size_t>(n));
            std::vector<double> s(static_cast<size_t>(n), 0), c(static_cast<size_t>(n), 0),
                s2(static_cast<size_t>(n), 0);
            std::vector<double> ext(static_cast<size_t>(n), misval);
            for (int32_t v : vars) {
                if (kvpollstd()) return 1;
                bool str = isstrtype(typlist[v - 1]);
                if (str && fn->arg != R_MISS && fn->arg != R_NONMISS) return error(109);
                if (str) {
                    char buf[260];
                    for (int64_t k = 0; k < n; k++)
                        col[k] = skorvu_data(v, static_cast<int32_t>(k) + n1, buf)[0] ? 0 : misval;
                } else {
                    groups_column(v, n1, n2, col.data());
                }
                for (int64_t k = 0; k < n; k++) {
                    double x = col[k];
                    if (fn->arg == R_ANYCOUNT) {
                        if (x < misval &&
                            std::find(values.begin(), values.end(), x) != values.end())
                            s[k] += 1;
                        continue;
                    }
                    if (x >= misval) continue;
                    s[k] += x, c[k] += 1, s2[k] += x * x;
                    if (fn->arg == R_MIN && (ext[k] >= misval || x < ext[k])) ext[k] = x;
                    if (fn->arg == R_MAX && (ext[k] >= misval || x > ext[k])) ext[k] = x;
                }
            }
            double nv = static_cast<double>(vars.size());
            for (int64_t k = 0; k < n; k++) {
                if (!take[k]) continue;
                switch (fn->arg) {
                case R_MEAN: out[k] = c[k] > 0 ? s[k] / c[k] : misval; break;
                case R_TOTAL: out[k] = missingopt && c[k] == 0 ? misval : s[k]; break;
                case R_MIN:
                case R_MAX: out[k] = ext[k]; break;
                case R_MISS: out[k] = nv - c[k]; break;
                case R_NONMISS: out[k] = c[k]; break;
                case R_ANYCOUNT: out[k] = s[k]; break;
                case R_SD: {
                    if (c[k] < 2) break;
                    double m = s[k] / c[k];
                    double var = (s2[k] - c[k] * m * m) / (c[k] - 1);
                    out[k] = std::sqrt(std::max(0.0, var));
                    break;
                }
                }
            }
            if (fn->arg == R_MISS || fn->arg == R_NONMISS || fn->arg == R_ANYCOUNT)
                deflt = nv <= maxbyte ? KV_BYTE : KV_INT;
        }
    } else {
        const double* x = nullptr;
        if (fn->kind != K_SEQ)
            if (int rc = argvalues(args, &x)) return rc;
        static Groups g;
        bool members = fn->kind == K_RANK || fn->kind == K_SEQ ||
                       (fn->kind == K_STAT &&
                        (fn->arg == GS_PCTILE || fn->arg == GS_IQR || fn->arg == GS_MODE));
        if (fn->kind == K_CUT) {
            if (int rc = cutpoints(x, n, take.data(), at, static_cast<int>(ngroup), &cuts))
                return rc;
            // [c_j, c_j+1): below the first point or from the last on
            // missing, except that quantile groups close the last interval
            const bool closed = groupgiven;
            for (int64_t k = 0; k < n; k++) {
                if ((k & 65535) == 0 && kvpollstd()) return 1;
                if (!take[k] || x[k] >= misval || cuts.size() < 2) continue;
                if (x[k] < cuts.front() || x[k] > cuts.back()) continue;
                size_t j = static_cast<size_t>(std::upper_bound(cuts.begin(), cuts.end(), x[k]) -
                                               cuts.begin()) -
                           1;
                if (j + 1 >= cuts.size()) {
                    if (!closed) continue;
                    j = cuts.size() - 2;
                }
                out[k] = icodes ? static_cast<double>(j) : cuts[j];
            }
            if (icodes) deflt = cuts.size() <= 101 ? KV_BYTE : KV_INT;
        } else if (direct) {
            dgv.resize(static_cast<size_t>(dg.span));
            GStatReq r{fn->arg, p};
            if (int rc = gdirect_stat(dg, r, x, nullptr, 0, ifclause ? take.data() : nullptr,
                                      dgv.data(), nullptr))
                return rc;
            if (fn->arg == GS_COUNT) deflt = KV_LONG;
        } else {
            if (int rc = groups_make(&g, keys.data(), static_cast<int>(keys.size()), n1, n2,
                                     ifclause ? take.data() : nullptr, members ? GRP_MEMBERS : 0))
                return rc;
            const int32_t G = g.ngroups;
            std::vector<double> gv(static_cast<size_t>(G));
            if (fn->kind == K_STAT) {
                GStatReq r{fn->arg, fn->arg == GS_MODE ? static_cast<double>(modeopt) : p};
                if (int rc = group_stat(g, r, x, nullptr, 0, gv.data())) return rc;
                for (int64_t k = 0; k < n; k++)
                    if (g.gid[k] >= 0) out[k] = gv[g.gid[k]];
                if (fn->arg == GS_COUNT) deflt = KV_LONG;
            } else if (fn->kind == K_STD) {
                std::vector<double> sd(static_cast<size_t>(G));
                if (int rc = group_stat(g, GStatReq{GS_MEAN, 0}, x, nullptr, 0, gv.data()))
                    return rc;
                if (int rc = group_stat(g, GStatReq{GS_SD, 0}, x, nullptr, 0, sd.data())) return rc;
                for (int64_t k = 0; k < n; k++) {
                    int32_t q = g.gid[k];
                    if (q < 0 || x[k] >= misval || sd[q] >= misval || sd[q] == 0) continue;
                    out[k] = stdmean + stdsd * (x[k] - gv[q]) / sd[q];
                }
            } else if (fn->kind == K_SEQ) {
                for (int32_t q = 0; q < G; q++) {
                    int64_t j = 0;
                    for (int32_t a = g.start[q]; a < g.start[q + 1]; a++, j++) {
                        double b = std::floor(static_cast<double>(j) / block);
                        double val;
                        if (to < misval) {
                            double span = std::fabs(to - from) + 1;
                            double off = std::fmod(b, span);
                            val = to >= from ? from + off : from - off;
                        } else {
                            val = from + b;
                        }
                        out[g.members[a] - n1] = val;
                    }
                }
                deflt = KV_LONG;
            } else { // rank
                std::vector<std::pair<double, int32_t>> v;
                for (int32_t q = 0; q < G; q++) {
                    if (kvpollstd()) return 1;
                    v.clear();
                    for (int32_t a = g.start[q]; a < g.start[q + 1]; a++) {
                        int32_t i = g.members[a];
                        if (x[i - n1] < misval) v.emplace_back(x[i - n1], i);
                    }
                    std::sort(v.begin(), v.end());
                    size_t m = v.size();
                    for (size_t a = 0; a < m;) {
                        size_t b = a;
                        while (b < m && v[b].first == v[a].first) b++;
                        for (size_t c = a; c < b; c++) {
                            double rk;
                            switch (rankopt) {
                            case 1: rk = static_cast<double>(m - b + 1); break; // field
                            case 2: rk = static_cast<double>(a + 1); break;     // track
                            case 3: rk = static_cast<double>(c + 1); break;     // unique
                            default: rk = (static_cast<double>(a + 1) + static_cast<double>(b)) / 2;
                            }
                            out[v[c].second - n1] = rk;
                        }
                        a = b;
                    }
                }
            }
        }
    }

    // the new variable, filled after every check
    bool isstr = fn->kind == K_CONCAT;
    if (!type) {
        if (isstr) {
            size_t w = 1;
            for (const std::string& s : sout) w = std::max(w, s.size());
            type = static_cast<int>(w);
        } else {
            type = deflt;
        }
    }
    if (isstrtype(type) != isstr) return error(109);
    if (int rc = addvar(name.c_str(), type)) return rc;
    int v = nvar;
    i_nvar = nvar;
    int64_t missing = 0;
    if (isstr) {
        for (int32_t i = 1; i <= nobs; i++) {
            const std::string* s = i >= n1 && i <= n2 ? &sout[i - n1] : nullptr;
            if (!s || s->empty()) missing++;
            sstore(v, i, s ? s->c_str() : "");
        }
    } else if (direct) {
        int64_t nm = 0;
        if (int rc = gdirect_fill(dg, dgv.data(), ifclause ? take.data() : nullptr, v, &nm)) {
            std::vector<uint8_t> drop(static_cast<size_t>(nvar), 0);
            drop[v - 1] = 1;
            grp_dropvars(drop);
            return rc;
        }
        for (int32_t i = 1; i <= nobs; i++)
            if (i < n1 || i > n2) store(v, i, misval);
        missing = nobs - n + nm;
    } else {
        if (n > 0) grp_putcolumn(v, n1, n2, out);
        for (int32_t i = 1; i <= nobs; i++)
            if (i < n1 || i > n2) store(v, i, misval);
        missing = nobs - n;
        for (int64_t k = 0; k < n; k++)
            if (out[k] >= misval) missing++;
    }
    if (fn->kind == K_CUT && cutlabel)
        if (int rc = cutlabels(name, cuts, groupgiven)) {
            std::vector<uint8_t> drop(static_cast<size_t>(nvar), 0);
            drop[v - 1] = 1;
            grp_dropvars(drop);
            return rc;
        }
    updata = 1;
    missmsg(missing, 1);
    return 0;
}

} // namespace korvu
