// recode: values of numeric variables changed by rules, in place or into new
// variables, with value labels from the rules.
//   recode varlist (rule) [(rule) ...] [if] [in] [, generate(newvars)
//          prefix(str) label(name) copyrest]
// A rule is "old ... = new ["text"]": old values are numbers, ranges a/b
// (min and max for the ends), missing, nonmissing, else or *. The first rule
// that matches a value wins; values no rule matches are kept.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/select/generate.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

namespace {

enum { R_RANGE, R_MISSING, R_NONMISSING, R_ELSE };
struct Cond {
    int kind = R_RANGE;
    double lo = 0, hi = 0;
};
struct Rule {
    std::vector<Cond> conds;
    double to = 0;
    bool haslabel = false;
    std::string label;
};

int badrule(const std::string& r) {
    return errorf(198, "(%s) invalid rule\n", r.c_str());
}

int readvalue(const std::string& w, double* x, bool ends) {
    if (ends && w == "min") return *x = -max_kvdouble, 0;
    if (ends && w == "max") return *x = max_kvdouble, 0;
    return mg_number(w, x) ? 0 : 198;
}

int parserule(const std::string& text, Rule* r) {
    size_t eq = text.find('=');
    if (eq == std::string::npos) return badrule(text);
    std::string lhs = text.substr(0, eq), rhs = text.substr(eq + 1);
    // the range slash may stand with blanks around it
    std::string l2;
    for (char c : lhs) {
        if (c == '/') {
            while (!l2.empty() && l2.back() == ' ') l2.pop_back();
            l2 += '/';
            continue;
        }
        if (c == ' ' && !l2.empty() && l2.back() == '/') continue;
        l2 += c;
    }
    std::vector<std::string> w = mg_words(l2);
    if (w.empty()) return badrule(text);
    for (const std::string& s : w) {
        Cond c;
        size_t sl = s.find('/');
        if (s == "missing") {
            c.kind = R_MISSING;
        } else if (s == "nonmissing") {
            c.kind = R_NONMISSING;
        } else if (s == "else" || s == "*") {
            c.kind = R_ELSE;
        } else if (sl != std::string::npos) {
            if (readvalue(s.substr(0, sl), &c.lo, true) || readvalue(s.substr(sl + 1), &c.hi, true))
                return badrule(text);
            if (c.lo > c.hi) return badrule(text);
        } else {
            if (readvalue(s, &c.lo, false)) return badrule(text);
            c.hi = c.lo;
        }
        if (c.kind == R_ELSE && w.size() > 1) return badrule(text);
        r->conds.push_back(c);
    }
    // new value and an optional label in double quotes
    size_t q = rhs.find('"');
    std::string val = q == std::string::npos ? rhs : rhs.substr(0, q);
    if (q != std::string::npos) {
        size_t q2 = rhs.rfind('"');
        if (q2 == q) return badrule(text);
        r->haslabel = true;
        r->label = rhs.substr(q + 1, q2 - q - 1);
        std::string after = rhs.substr(q2 + 1);
        if (!mg_words(after).empty()) return badrule(text);
    }
    std::vector<std::string> vw = mg_words(val);
    if (vw.size() != 1 || !mg_number(vw[0], &r->to)) return badrule(text);
    return 0;
}

// The rule that takes x, or -1.
int match(const std::vector<Rule>& rules, double x) {
    for (size_t k = 0; k < rules.size(); k++)
        for (const Cond& c : rules[k].conds) {
            switch (c.kind) {
            case R_MISSING:
                if (x >= misval) return static_cast<int>(k);
                break;
            case R_NONMISSING:
                if (x < misval) return static_cast<int>(k);
                break;
            case R_ELSE: return static_cast<int>(k);
            default:
                if (x >= c.lo && x <= c.hi) return static_cast<int>(k);
            }
        }
    return -1;
}

} // namespace

int recodecmd(int) {
    // the rules are taken out of the line; the rest is parsed as usual
    std::string line = wheretok() ? wheretok() : "";
    std::string rest;
    std::vector<std::string> ruletexts;
    bool inopts = false;
    for (size_t i = 0; i < line.size(); i++) {
        char c = line[i];
        if (c == ',' && !inopts) inopts = true;
        if (c == '(' && !inopts) {
            size_t j = i + 1;
            bool inq = false;
            while (j < line.size() && (inq || line[j] != ')')) {
                if (line[j] == '"') inq = !inq;
                j++;
            }
            if (j >= line.size()) return errtext(198, "unmatched parenthesis in the rules\n");
            ruletexts.push_back(line.substr(i + 1, j - i - 1));
            rest += ' ';
            i = j;
            continue;
        }
        rest += c;
    }
    if (ruletexts.empty()) return errtext(198, "recode needs at least one rule in parentheses\n");
    std::vector<Rule> rules(ruletexts.size());
    for (size_t k = 0; k < rules.size(); k++)
        if (int rc = parserule(ruletexts[k], &rules[k])) return rc;
    std::vector<char> buf(rest.begin(), rest.end());
    buf.push_back(0);
    settok(buf.data());
    vable = 1;
    byable = 3;
    opable = 0;
    if (int rc = parse()) return rc;
    char gen[2000] = "", pre[200] = "", lab[200] = "";
    findargn("generate", 3, gen, sizeof gen, 1000);
    bool hasgen = gen[0] != 0;
    findargn("prefix", 3, pre, sizeof pre, 1);
    bool haspre = pre[0] != 0;
    findargn("label", 5, lab, sizeof lab, 1);
    bool haslab = lab[0] != 0;
    bool copyrest = findopt("copyrest", 4, 0);
    if (int rc = chkopt()) return rc;
    std::vector<int> vars(varlist_vr, varlist_vr + lnvar);
    for (int v : vars)
        if (!isnumtype(typlist[v - 1]))
            return errorf(108, "%s is a text variable: recode changes numeric values\n",
                          varname(v));
    if (hasgen && haspre) return errtext(198, "generate() and prefix() may not be combined\n");
    bool newvars = hasgen || haspre;
    std::vector<std::string> names;
    if (hasgen) {
        names = mg_words(gen);
        if (names.size() != vars.size())
            return errtext(198, "generate() needs as many names as there are variables\n");
    } else if (haspre) {
        for (int v : vars) names.push_back(std::string(pre) + varname(v));
    }
    if (newvars) {
        for (size_t k = 0; k < names.size(); k++) {
            if (int rc = mg_newname(names[k])) return rc;
            for (size_t m = 0; m < k; m++)
                if (names[m] == names[k]) return errorf(198, "%s named twice\n", names[k].c_str());
        }
    }
    bool anylabel = false;
    for (const Rule& r : rules) anylabel |= r.haslabel;
    if (haslab && !anylabel) return errtext(198, "label() needs rules with labels\n");
    if (anylabel && vars.size() > 1 && !haslab && !newvars)
        return errtext(
            198,
            "the labels of the rules need label() when several variables are recoded in place\n");
    std::string lname = haslab ? lab : (newvars ? names[0] : std::string(varname(vars[0])));
    if (anylabel) {
        if (lname.size() > 32 || chkname(lname.c_str(), 1))
            return errorf(198, "%s invalid label name\n", lname.c_str());
        if (vlfind(lname.c_str()) && !(haslab || newvars) &&
            strcmp(lblname(vars[0]), lname.c_str()))
            return errorf(110, "label %s already defined\n", lname.c_str());
    }
    // every new value first, so nothing changes when something fails
    std::vector<std::vector<double>> out(vars.size());
    std::vector<int64_t> changes(vars.size(), 0);
    std::vector<int> types(vars.size());
    for (size_t k = 0; k < vars.size(); k++) {
        int v = vars[k];
        std::vector<double>& o = out[k];
        o.resize(nobs + 1);
        for (int i = 1; i <= nobs; i++) {
            if ((i & 0xffff) == 0 && kvpollstd()) return 1;
            double x = korvu_data(v, i);
            bool in = i >= nobs1 && i <= nobs2 && selobs(i);
            if (!in) {
                o[i] = newvars && !copyrest ? misval : x;
                continue;
            }
            int r = match(rules, x);
            o[i] = r < 0 ? x : rules[r].to;
            if (o[i] != x) changes[k]++;
        }
        int t = typlist[v - 1];
        for (int i = 1; i <= nobs; i++) t = promoted_vartype(t, o[i]);
        types[k] = t;
    }
    // value labels of the rules
    if (anylabel) {
        int32_t* t = vlfind(lname.c_str());
        for (const Rule& r : rules) {
            if (!r.haslabel) continue;
            if (!t) t = vlallocate(lname.c_str(), 0, 0);
            if (!t) return error(950);
            int at = vlfindval(t, nullptr, 0, r.to);
            if (at >= 0) t = vlrmlab(t, at), at = vlfindval(t, nullptr, 0, r.to);
            t = vladdlab(t, -at - 1, r.label.c_str(), r.to);
            if (!t) return error(vl_error ? vl_error : 950);
        }
    }
    for (size_t k = 0; k < vars.size(); k++) {
        int v = vars[k];
        int target = v;
        if (newvars) {
            if (int rc = addvar(names[k].c_str(), types[k])) return error(rc);
            target = nvar;
            snprintf(fmtname(target), FMTLEN1, "%s", fmtname(v));
            if (!anylabel && lblname(v)[0]) snprintf(lblname(target), NAMELEN1, "%s", lblname(v));
        } else if (types[k] != typlist[v - 1]) {
            if (int rc = change_vartype(v, types[k])) return error(rc);
        }
        if (anylabel) snprintf(lblname(target), NAMELEN1, "%s", lname.c_str());
        for (int i = 1; i <= nobs; i++) store(target, i, out[k][i]);
        char msg[200];
        snprintf(msg, sizeof msg, "(%lld %s made to %s)\n", static_cast<long long>(changes[k]),
                 changes[k] == 1 ? "change" : "changes", varname(target));
        c_outlev = 1;
        spout21(msg);
    }
    i_nvar = nvar;
    updata = 1;
    return 0;
}

} // namespace korvu
