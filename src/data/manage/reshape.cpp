// reshape: the data between the wide layout (one observation per unit, a
// variable per occasion: inc1 inc2 inc3) and the long one (an observation
// per unit and occasion, the occasion in the j variable).
//   reshape long stubs, i(varlist) j(newvar) [string]
//   reshape wide stubs, i(varlist) j(var) [string]
//   reshape long | reshape wide      (again, with the last stubs, i and j)
// A stub may hold @ where the suffix stands (inc@r). The new dataset is
// built whole before the old one is replaced.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/formats/formats.h"
#include "data/labels/label.h"
#include "data/manage/manage.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

namespace {

struct Last {
    bool set = false;
    std::vector<std::string> stubs, ivars;
    std::string j;
    bool str = false;
};
Last last;

// A cell read as a number or a text, so that keys of either kind compare.
struct Cell {
    double x = 0;
    std::string s;
    bool operator<(const Cell& o) const { return s != o.s ? s < o.s : x < o.x; }
    bool operator==(const Cell& o) const { return x == o.x && s == o.s; }
};
Cell cell(int v, int i, std::vector<char>& buf) {
    Cell c;
    if (isnumtype(typlist[v - 1]))
        c.x = korvu_data(v, i);
    else
        c.s = skorvu_data(v, i, buf.data());
    return c;
}
std::string celltext(int v, const Cell& c) {
    if (!isnumtype(typlist[v - 1])) return "\"" + c.s + "\"";
    std::string t = safereforms("%12.0g", c.x);
    size_t a = t.find_first_not_of(' ');
    return a == std::string::npos ? t : t.substr(a);
}

// The name made of a stub and a suffix.
std::string joinname(const std::string& stub, const std::string& suf) {
    size_t at = stub.find('@');
    if (at == std::string::npos) return stub + suf;
    return stub.substr(0, at) + suf + stub.substr(at + 1);
}
std::string stubname(const std::string& stub) {
    std::string s = stub;
    s.erase(std::remove(s.begin(), s.end(), '@'), s.end());
    return s;
}
// The suffix of name under stub, or false.
bool suffixof(const std::string& stub, const std::string& name, std::string* suf) {
    size_t at = stub.find('@');
    std::string pre = at == std::string::npos ? stub : stub.substr(0, at);
    std::string post = at == std::string::npos ? "" : stub.substr(at + 1);
    if (name.size() <= pre.size() + post.size()) return false;
    if (name.compare(0, pre.size(), pre) ||
        name.compare(name.size() - post.size(), post.size(), post))
        return false;
    *suf = name.substr(pre.size(), name.size() - pre.size() - post.size());
    return true;
}
bool numsuffix(const std::string& s, double* x) {
    if (s.empty() || s.size() > 15) return false;
    size_t k = s[0] == '-' ? 1 : 0;
    if (k == s.size()) return false;
    for (size_t m = k; m < s.size(); m++)
        if (s[m] < '0' || s[m] > '9') return false;
    *x = std::strtod(s.c_str(), nullptr);
    return true;
}

MgCol colof(int v) {
    MgCol c;
    c.name = varname(v);
    c.type = typlist[v - 1];
    c.fmt = fmtname(v);
    c.vallab = lblname(v);
    if (const char* l = ptrvarlab(v)) c.varlab = l;
    return c;
}
void pushcell(MgCol& c, int v, int i, std::vector<char>& buf) {
    if (isnumtype(c.type))
        c.num.push_back(i ? korvu_data(v, i) : misval);
    else
        c.str.push_back(i ? skorvu_data(v, i, buf.data()) : "");
}

// The widest of two storage types, or -1 when one is text and one a number.
int widest(int a, int b) {
    if (isnumtype(a) != isnumtype(b)) return -1;
    if (!isnumtype(a)) return std::max(a, b);
    if ((a == KV_FLOAT && b == KV_LONG) || (a == KV_LONG && b == KV_FLOAT)) return KV_DOUBLE;
    return std::max(a, b);
}

void say(const std::string& s) {
    c_outlev = 1;
    spout21(s.c_str());
}

// Observations in the order of the i variables (stable), and the start of
// each unit in that order.
void order_by(const std::vector<int>& ivars, std::vector<int>* ord,
              std::vector<std::vector<Cell>>* keys) {
    std::vector<char> buf(KV_STRMAX + 2);
    keys->assign(nobs + 1, {});
    for (int i = 1; i <= nobs; i++)
        for (int v : ivars) (*keys)[i].push_back(cell(v, i, buf));
    ord->resize(nobs);
    for (int i = 0; i < nobs; i++) (*ord)[i] = i + 1;
    std::stable_sort(ord->begin(), ord->end(),
                     [&](int a, int b) { return (*keys)[a] < (*keys)[b]; });
}

std::string keytext(const std::vector<int>& ivars, const std::vector<Cell>& k) {
    std::string t;
    for (size_t m = 0; m < ivars.size(); m++)
        t += (m ? ", " : "") + std::string(varname(ivars[m])) + " = " + celltext(ivars[m], k[m]);
    return t;
}

int tolong(const std::vector<std::string>& stubs, const std::vector<int>& ivars,
           const std::string& jname, bool str) {
    if (int rc = mg_newname(jname)) return rc;
    // the wide variables of each stub, by suffix
    std::vector<std::map<std::string, int>> wide(stubs.size());
    std::set<int> used(ivars.begin(), ivars.end());
    for (size_t s = 0; s < stubs.size(); s++) {
        std::string sn = stubname(stubs[s]);
        for (int v = 1; v <= nvar; v++) {
            std::string suf;
            double x;
            if (!suffixof(stubs[s], varname(v), &suf)) continue;
            if (!str && !numsuffix(suf, &x)) continue;
            if (used.count(v)) {
                if (std::find(ivars.begin(), ivars.end(), v) != ivars.end())
                    return errorf(198, "%s is an i variable and also a variable of stub %s\n",
                                  varname(v), stubs[s].c_str());
                continue;
            }
            wide[s][suf] = v;
            used.insert(v);
        }
        if (wide[s].empty())
            return errorf(111, "no variables found for stub %s%s\n", stubs[s].c_str(),
                          str ? "" : " with numeric suffixes");
        int same = sysfindvar(sn.c_str());
        if (same && !used.count(same))
            return errorf(110, "%s already defined: it would be the variable of stub %s\n",
                          sn.c_str(), stubs[s].c_str());
    }
    // the values of j, in order
    std::vector<std::string> js;
    {
        std::set<std::string> all;
        for (const auto& w : wide)
            for (const auto& kv : w) all.insert(kv.first);
        js.assign(all.begin(), all.end());
        if (!str)
            std::sort(js.begin(), js.end(), [](const std::string& a, const std::string& b) {
                return std::strtod(a.c_str(), nullptr) < std::strtod(b.c_str(), nullptr);
            });
    }
    // each unit once
    std::vector<int> ord;
    std::vector<std::vector<Cell>> keys;
    order_by(ivars, &ord, &keys);
    for (int k = 1; k < nobs; k++)
        if (keys[ord[k]] == keys[ord[k - 1]])
            return errorf(
                9, "i variables do not identify the observations: %s occurs more than once\n",
                keytext(ivars, keys[ord[k]]).c_str());
    // the new columns: i, j, the stubs, the rest
    std::vector<MgCol> cols;
    for (int v : ivars) cols.push_back(colof(v));
    MgCol jc;
    jc.name = jname;
    if (str) {
        size_t w = 1;
        for (const std::string& s : js) w = std::max(w, s.size());
        jc.type = static_cast<int>(std::min<size_t>(w, KV_STRMAX));
    } else {
        std::vector<double> vals;
        for (const std::string& s : js) vals.push_back(std::strtod(s.c_str(), nullptr));
        jc.type = mg_fittype(vals, false);
    }
    cols.push_back(jc);
    size_t firststub = cols.size();
    for (size_t s = 0; s < stubs.size(); s++) {
        int t = 0;
        int first = 0;
        for (const auto& kv : wide[s]) {
            int vt = typlist[kv.second - 1];
            if (!first) first = kv.second, t = vt;
            t = widest(t, vt);
            if (t < 0)
                return errorf(109, "variables of stub %s are text and numbers mixed\n",
                              stubs[s].c_str());
        }
        MgCol c;
        c.name = stubname(stubs[s]);
        c.type = t;
        c.fmt = isnumtype(t) ? fmtname(first) : "%" + std::to_string(std::max(t, 9)) + "s";
        c.vallab = lblname(first);
        cols.push_back(c);
    }
    std::vector<int> rest;
    for (int v = 1; v <= nvar; v++)
        if (!used.count(v)) rest.push_back(v);
    for (int v : rest) cols.push_back(colof(v));
    int64_t n = static_cast<int64_t>(nobs) * static_cast<int64_t>(js.size());
    std::vector<char> buf(KV_STRMAX + 2);
    for (MgCol& c : cols) isnumtype(c.type) ? c.num.reserve(n) : c.str.reserve(n);
    for (int k = 0; k < nobs; k++) {
        if ((k & 0xfff) == 0 && kvpollstd()) return 1;
        int i = ord[k];
        for (const std::string& jv : js) {
            size_t c = 0;
            for (int v : ivars) pushcell(cols[c++], v, i, buf);
            if (str)
                cols[c++].str.push_back(jv);
            else
                cols[c++].num.push_back(std::strtod(jv.c_str(), nullptr));
            for (size_t s = 0; s < stubs.size(); s++, c++) {
                auto it = wide[s].find(jv);
                pushcell(cols[c], it == wide[s].end() ? 0 : it->second, it == wide[s].end() ? 0 : i,
                         buf);
            }
            for (int v : rest) pushcell(cols[c++], v, i, buf);
        }
    }
    (void)firststub;
    int oldn = nobs, oldk = nvar;
    if (int rc = mg_replace_data(cols, n)) return rc;
    std::string jl;
    for (const std::string& s : js) jl += " " + s;
    say("(" + std::to_string(oldn) + " observations of " + std::to_string(oldk) +
        " variables became " + std::to_string(n) + " of " + std::to_string(nvar) + "; " + jname +
        " =" + jl + ")\n");
    return 0;
}

int towide(const std::vector<std::string>& stubs, const std::vector<int>& ivars,
           const std::string& jname, bool str) {
    int jv = sysfindvar(jname.c_str());
    if (!jv) return errorf(111, "variable %s not found\n", jname.c_str());
    bool jstr = !isnumtype(typlist[jv - 1]);
    if (jstr && !str) str = true; // a text j speaks for itself
    if (std::find(ivars.begin(), ivars.end(), jv) != ivars.end())
        return errorf(198, "%s is both an i variable and j\n", jname.c_str());
    std::vector<int> sv;
    for (const std::string& s : stubs) {
        if (s.find('@') != std::string::npos && stubname(s).empty())
            return errorf(198, "%s invalid stub\n", s.c_str());
        int v = sysfindvar(stubname(s).c_str());
        if (!v) return errorf(111, "variable %s not found\n", stubname(s).c_str());
        if (v == jv || std::find(ivars.begin(), ivars.end(), v) != ivars.end())
            return errorf(198, "%s is an i or j variable and may not be a stub\n", varname(v));
        sv.push_back(v);
    }
    std::vector<char> buf(KV_STRMAX + 2);
    // the values of j and their suffixes
    std::vector<Cell> jcell(nobs + 1);
    std::set<Cell> jset;
    for (int i = 1; i <= nobs; i++) {
        jcell[i] = cell(jv, i, buf);
        if (!jstr && jcell[i].x >= misval)
            return errorf(498, "%s has missing values (observation %d)\n", jname.c_str(), i);
        if (jstr && jcell[i].s.empty())
            return errorf(498, "%s has empty values (observation %d)\n", jname.c_str(), i);
        jset.insert(jcell[i]);
    }
    std::vector<Cell> js(jset.begin(), jset.end());
    std::vector<std::string> suf;
    for (const Cell& c : js) {
        if (jstr) {
            suf.push_back(c.s);
        } else {
            if (c.x != std::floor(c.x) || std::fabs(c.x) > 1e15)
                return errorf(198, "%s takes the value %s, which cannot be part of a name\n",
                              jname.c_str(), celltext(jv, c).c_str());
            char b[40];
            snprintf(b, sizeof b, "%.0f", c.x);
            suf.push_back(b);
        }
    }
    // units, and each (i, j) once
    std::vector<int> ord;
    std::vector<std::vector<Cell>> keys;
    order_by(ivars, &ord, &keys);
    std::vector<int> unitstart;
    for (int k = 0; k < nobs; k++)
        if (k == 0 || !(keys[ord[k]] == keys[ord[k - 1]])) unitstart.push_back(k);
    unitstart.push_back(nobs);
    std::vector<std::string> dups;
    int64_t ndup = 0;
    std::vector<int> others;
    for (int v = 1; v <= nvar; v++)
        if (v != jv && std::find(ivars.begin(), ivars.end(), v) == ivars.end() &&
            std::find(sv.begin(), sv.end(), v) == sv.end())
            others.push_back(v);
    for (size_t u = 0; u + 1 < unitstart.size(); u++) {
        std::set<Cell> seen;
        for (int k = unitstart[u]; k < unitstart[u + 1]; k++) {
            const Cell& c = jcell[ord[k]];
            if (seen.count(c)) {
                if (ndup++ < 10)
                    dups.push_back(keytext(ivars, keys[ord[k]]) + ", " + jname + " = " +
                                   celltext(jv, c));
            }
            seen.insert(c);
        }
    }
    if (ndup) {
        errsay((std::string("values of ") + jname + " are not unique within the i variables; " +
                std::to_string(ndup) + (ndup == 1 ? " repeat" : " repeats") + ":\n")
                   .c_str());
        for (const std::string& d : dups) errsay(("    " + d + "\n").c_str());
        if (ndup > 10) errsay("    ...\n");
        return errtext(9, "the data are unchanged\n");
    }
    // the other variables must be constant within a unit
    for (int v : others) {
        for (size_t u = 0; u + 1 < unitstart.size(); u++) {
            Cell a = cell(v, ord[unitstart[u]], buf);
            for (int k = unitstart[u] + 1; k < unitstart[u + 1]; k++) {
                if (!(cell(v, ord[k], buf) == a))
                    return errorf(9,
                                  "%s is not constant within %s: list it as a stub or drop it "
                                  "(the data are unchanged)\n",
                                  varname(v), keytext(ivars, keys[ord[unitstart[u]]]).c_str());
            }
        }
    }
    // the new columns: i, each stub by j, the rest
    std::vector<MgCol> cols;
    for (int v : ivars) cols.push_back(colof(v));
    std::set<std::string> names;
    for (int v : ivars) names.insert(varname(v));
    for (int v : others) names.insert(varname(v));
    for (size_t s = 0; s < stubs.size(); s++) {
        for (size_t m = 0; m < js.size(); m++) {
            MgCol c = colof(sv[s]);
            c.name = joinname(stubs[s], suf[m]);
            if (c.name.size() > 32 || chkname(c.name.c_str(), 0))
                return errorf(198, "%s would be an invalid name\n", c.name.c_str());
            if (names.count(c.name)) return errorf(110, "%s already defined\n", c.name.c_str());
            names.insert(c.name);
            c.varlab = celltext(jv, js[m]) + " " + varname(sv[s]);
            cols.push_back(c);
        }
    }
    for (int v : others) cols.push_back(colof(v));
    int64_t n = static_cast<int64_t>(unitstart.size()) - 1;
    for (size_t u = 0; u + 1 < unitstart.size(); u++) {
        if ((u & 0xfff) == 0 && kvpollstd()) return 1;
        int first = ord[unitstart[u]];
        size_t c = 0;
        for (int v : ivars) pushcell(cols[c++], v, first, buf);
        size_t base = c;
        for (size_t s = 0; s < stubs.size(); s++)
            for (size_t m = 0; m < js.size(); m++) pushcell(cols[c++], 0, 0, buf);
        for (int k = unitstart[u]; k < unitstart[u + 1]; k++) {
            int i = ord[k];
            size_t m = std::lower_bound(js.begin(), js.end(), jcell[i]) - js.begin();
            for (size_t s = 0; s < stubs.size(); s++) {
                MgCol& col = cols[base + s * js.size() + m];
                if (isnumtype(col.type))
                    col.num.back() = korvu_data(sv[s], i);
                else
                    col.str.back() = skorvu_data(sv[s], i, buf.data());
            }
        }
        for (int v : others) pushcell(cols[c++], v, first, buf);
    }
    int oldn = nobs, oldk = nvar;
    if (int rc = mg_replace_data(cols, n)) return rc;
    std::string jl;
    for (const std::string& s : suf) jl += " " + s;
    say("(" + std::to_string(oldn) + " observations of " + std::to_string(oldk) +
        " variables became " + std::to_string(n) + " of " + std::to_string(nvar) + "; " + jname +
        " =" + jl + ")\n");
    return 0;
}

} // namespace

int reshapecmd(int) {
    gettok(prsestd);
    std::string how = token;
    bool islong = cmdcmp(how.c_str(), "long", 1), iswide = cmdcmp(how.c_str(), "wide", 1);
    if (!islong && !iswide) {
        if (how.empty()) return errtext(198, "reshape long or reshape wide?\n");
        return errorf(198, "reshape %s invalid: long or wide\n", how.c_str());
    }
    // the stubs up to the comma, then the options
    std::string rest = wheretok() ? wheretok() : "";
    size_t comma = rest.find(',');
    std::vector<std::string> stubs = mg_words(rest.substr(0, comma));
    std::string opts = comma == std::string::npos ? "" : rest.substr(comma);
    std::vector<char> buf(opts.begin(), opts.end());
    buf.push_back(0);
    settok(buf.data());
    opable = 0;
    ifable = oable = 3;
    byable = 3;
    if (int rc = parse()) return rc;
    char ibuf[2000] = "", jbuf[200] = "";
    findargn("i", 1, ibuf, sizeof ibuf, 1000);
    bool hasi = ibuf[0] != 0;
    findargn("j", 1, jbuf, sizeof jbuf, 1000);
    bool hasj = jbuf[0] != 0;
    bool str = findopt("string", 3, 0);
    if (int rc = chkopt()) return rc;
    if (nvar == 0) return error(3); // no variables defined
    std::vector<std::string> inames = mg_words(ibuf);
    std::vector<std::string> jw = mg_words(jbuf);
    if (stubs.empty() && !hasi && !hasj) {
        if (!last.set)
            return errtext(198, "reshape needs stubs, i() and j() the first time it is used\n");
        stubs = last.stubs, inames = last.ivars, jw = {last.j}, str = last.str;
    } else {
        if (stubs.empty()) return errtext(198, "stubs required\n");
        if (!hasi || inames.empty()) return errtext(198, "option i() required\n");
        if (!hasj || jw.size() != 1) return errtext(198, "option j() requires one name\n");
    }
    for (const std::string& s : stubs)
        if (std::count(s.begin(), s.end(), '@') > 1 || stubname(s).empty())
            return errorf(198, "%s invalid stub\n", s.c_str());
    std::vector<int> ivars;
    for (const std::string& nm : inames) {
        int v = korvu_findvar(nm.c_str(), 1, 0);
        if (v < 0) return -v;
        if (std::find(ivars.begin(), ivars.end(), v) != ivars.end())
            return errorf(198, "%s named twice in i()\n", varname(v));
        ivars.push_back(v);
    }
    std::vector<std::string> ivnames;
    for (int v : ivars) ivnames.push_back(varname(v));
    // a text j speaks for itself, and is remembered as text for the way back
    if (iswide) {
        int jv = sysfindvar(jw[0].c_str());
        if (jv && !isnumtype(typlist[jv - 1])) str = true;
    }
    int rc = islong ? tolong(stubs, ivars, jw[0], str) : towide(stubs, ivars, jw[0], str);
    if (rc) return rc;
    last.set = true;
    last.stubs = stubs, last.ivars = ivnames, last.j = jw[0], last.str = str;
    return 0;
}

} // namespace korvu
