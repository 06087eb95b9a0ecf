// Linear constraints: the `constraint` command keeps numbered constraint
// texts in the dictionary (type 13, named by their number); `matrix
// makeCns` turns them into the constraint matrix of the current estimates
// (one row per constraint: the coefficients on e(b)'s columns, then the
// right-hand side) and `matrix dispCns` shows that matrix as equations.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "output/spout.h"
#include "results/matlink.h"
#include "results/matrix/matrix.h"
#include "results/stores.h"

namespace korvu {

namespace {

constexpr int CNS_MAX = 1999;

std::string trim(std::string s) {
    while (!s.empty() && s.back() == ' ') s.pop_back();
    size_t k = 0;
    while (k < s.size() && s[k] == ' ') k++;
    return s.substr(k);
}

// The rest of the command line, consumed.
std::string restline() {
    char* p = peektok_chr();
    std::string s = p;
    settok(p + std::strlen(p));
    return trim(s);
}

const char* cnsfind(int n) {
    char nm[16];
    snprintf(nm, sizeof nm, "%d", n);
    return static_cast<const char*>(dmfind0(nm, DM_CONSTRAINT));
}

// A constraint number: 1 to 1999.
int cnsnumber(const std::string& w, int* out) {
    char* end = nullptr;
    long v = std::strtol(w.c_str(), &end, 10);
    if (w.empty() || *end || !std::isdigit(static_cast<unsigned char>(w[0])))
        return errorf(198, "%s invalid constraint number\n", w.c_str());
    if (v < 1 || v > CNS_MAX)
        return errorf(198, "constraint number %s out of range (1 to %d)\n", w.c_str(), CNS_MAX);
    *out = static_cast<int>(v);
    return 0;
}

// "1 3 5-7 9/10" into numbers; "_all" (when allowed) or nothing: all defined.
int cnslist(const std::string& text, std::vector<int>& out) {
    std::string t = text;
    for (auto& c : t)
        if (c == ',') c = ' ';
    size_t k = 0;
    bool any = false;
    while (k < t.size()) {
        while (k < t.size() && t[k] == ' ') k++;
        size_t e = k;
        while (e < t.size() && t[e] != ' ') e++;
        if (e == k) break;
        std::string w = t.substr(k, e - k);
        k = e;
        any = true;
        if (w == "_all") {
            for (int n = 1; n <= CNS_MAX; n++)
                if (cnsfind(n)) out.push_back(n);
            continue;
        }
        size_t d = w.find_first_of("-/");
        int a = 0, b = 0;
        if (d == std::string::npos) {
            if (int rc = cnsnumber(w, &a)) return rc;
            out.push_back(a);
            continue;
        }
        if (int rc = cnsnumber(w.substr(0, d), &a)) return rc;
        if (int rc = cnsnumber(w.substr(d + 1), &b)) return rc;
        if (b < a) return errorf(198, "%s invalid range\n", w.c_str());
        for (int n = a; n <= b; n++) out.push_back(n);
    }
    if (!any)
        for (int n = 1; n <= CNS_MAX; n++)
            if (cnsfind(n)) out.push_back(n);
    return 0;
}

int cns_define(const std::string& rest) {
    size_t k = 0;
    while (k < rest.size() && rest[k] != ' ') k++;
    int n = 0;
    if (int rc = cnsnumber(rest.substr(0, k), &n)) return rc;
    std::string text = trim(rest.substr(k));
    if (text.empty()) return errtext(198, "nothing to constrain\n");
    char nm[16];
    snprintf(nm, sizeof nm, "%d", n);
    if (!dmsave(nm, DM_CONSTRAINT, 0, text.c_str(), text.size() + 1)) return error(950), 950;
    return 0;
}

int cns_list(const std::string& rest) {
    std::vector<int> ns;
    if (int rc = cnslist(rest, ns)) return rc;
    c_outlev = 1;
    for (int n : ns)
        if (const char* t = cnsfind(n)) spoutf("%5d:  %s\n", n, t);
    return 0;
}

int cns_dir(const std::string& rest) {
    std::vector<int> ns;
    if (int rc = cnslist(rest, ns)) return rc;
    c_outlev = 1;
    for (int n : ns)
        if (cnsfind(n)) spoutf("%d\n", n);
    return 0;
}

int cns_drop(const std::string& rest) {
    if (rest.empty()) return errtext(198, "nothing to drop\n");
    std::vector<int> ns;
    if (int rc = cnslist(rest, ns)) return rc;
    for (int n : ns) {
        char nm[16];
        snprintf(nm, sizeof nm, "%d", n);
        if (void* it = dmfind0(nm, DM_CONSTRAINT)) dmrm(it);
    }
    return 0;
}

// ---- the constraint matrix ---------------------------------------------------------

struct Lin {
    std::vector<double> a; // on b's columns
    double c = 0;          // constant
};

struct Coefs {
    std::vector<std::string> eq, name;
    std::string firsteq;
};

// The column of coefficient [eq]name: -1 when absent.
int findcoef(const Coefs& cf, const std::string& eq, const std::string& name, bool haveeq) {
    const std::string& e = haveeq ? eq : cf.firsteq;
    for (size_t j = 0; j < cf.name.size(); j++)
        if (cf.name[j] == name && cf.eq[j] == e) return static_cast<int>(j);
    return -1;
}

bool namechar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '#';
}

// One side of a constraint: a sum of terms [#*] coef, coef [*#], or #.
// A coefficient is name, eq:name, [eq]name, _b[name], _b[eq:name] or
// [eq]_b[name].
int parseside(const std::string& s, const Coefs& cf, double sign, Lin* out, const char* whole) {
    size_t k = 0, n = s.size();
    auto skip = [&] {
        while (k < n && s[k] == ' ') k++;
    };
    auto bad = [&] { return errorf(198, "%s: invalid constraint\n", whole); };
    skip();
    if (k >= n) return bad();
    while (true) {
        skip();
        double sg = 1;
        while (k < n && (s[k] == '+' || s[k] == '-')) {
            if (s[k] == '-') sg = -sg;
            k++;
            skip();
        }
        if (k >= n) return bad();
        double mult = 1;
        bool havenum = false, havecoef = false;
        int col = -1;
        // a number
        auto readnum = [&](double* v) {
            const char* p = s.c_str() + k;
            char* e = nullptr;
            if (!(std::isdigit(static_cast<unsigned char>(*p)) || *p == '.')) return false;
            *v = std::strtod(p, &e);
            if (e == p) return false;
            k += static_cast<size_t>(e - p);
            return true;
        };
        auto readcoef = [&]() -> int {
            std::string eq, nm;
            bool haveeq = false;
            if (s[k] == '[') {
                size_t c = s.find(']', k);
                if (c == std::string::npos) return bad();
                eq = trim(s.substr(k + 1, c - k - 1));
                haveeq = true;
                k = c + 1;
                skip();
            }
            size_t b0 = k;
            while (k < n && (namechar(s[k]) || s[k] == ':')) k++;
            nm = s.substr(b0, k - b0);
            if (nm == "_b" && k < n && s[k] == '[') {
                size_t c = s.find(']', k);
                if (c == std::string::npos) return bad();
                nm = trim(s.substr(k + 1, c - k - 1));
                k = c + 1;
            }
            size_t colon = nm.find(':');
            if (colon != std::string::npos) {
                if (haveeq) return bad();
                eq = nm.substr(0, colon);
                nm = nm.substr(colon + 1);
                haveeq = true;
            }
            if (nm.empty() || (!std::isalpha(static_cast<unsigned char>(nm[0])) && nm[0] != '_'))
                return bad();
            col = findcoef(cf, eq, nm, haveeq);
            if (col < 0) {
                if (haveeq) return errorf(111, "[%s]%s not found\n", eq.c_str(), nm.c_str());
                return errorf(111, "%s not found\n", nm.c_str());
            }
            havecoef = true;
            return 0;
        };
        double v;
        if (readnum(&v)) {
            havenum = true;
            mult = v;
            skip();
            if (k < n && s[k] == '*') {
                k++;
                skip();
                if (k >= n) return bad();
                if (int rc = readcoef()) return rc;
            }
        } else {
            if (int rc = readcoef()) return rc;
            skip();
            if (k < n && s[k] == '*') {
                k++;
                skip();
                if (!readnum(&v)) return bad();
                mult = v;
            }
        }
        if (havecoef)
            out->a[col] += sign * sg * mult;
        else if (havenum)
            out->c += sign * sg * mult;
        skip();
        if (k >= n) break;
        if (s[k] != '+' && s[k] != '-') return bad();
    }
    return 0;
}

// Rank check of the rows (coefficients, right-hand side): 0 or 412.
int checkrank(std::vector<std::vector<double>> m, int k) {
    int r = static_cast<int>(m.size());
    int row = 0;
    for (int col = 0; col < k && row < r; col++) {
        int piv = row;
        double best = 0;
        for (int i = row; i < r; i++)
            if (std::fabs(m[i][col]) > best) best = std::fabs(m[i][col]), piv = i;
        if (best < 1e-12) continue;
        std::swap(m[row], m[piv]);
        for (int i = 0; i < r; i++) {
            if (i == row) continue;
            double f = m[i][col] / m[row][col];
            for (int j = 0; j <= k; j++) m[i][j] -= f * m[row][j];
        }
        row++;
    }
    if (row < r) return errtext(412, "redundant or inconsistent constraints\n");
    return 0;
}

} // namespace

// constraint [define] # exp | list [numlist] | dir [numlist] | drop numlist|_all
// | get # | free
int constraintcmd(int) {
    std::string line = restline();
    size_t k = 0;
    while (k < line.size() && line[k] != ' ') k++;
    std::string w = line.substr(0, k), rest = trim(line.substr(k));
    if (w.empty()) return error(198);
    if (std::isdigit(static_cast<unsigned char>(w[0]))) return cns_define(line);
    if (cmdcmp(w.c_str(), "define", 3)) return cns_define(rest);
    if (cmdcmp(w.c_str(), "list", 1)) return cns_list(rest);
    if (cmdcmp(w.c_str(), "dir", 3)) return cns_dir(rest);
    if (cmdcmp(w.c_str(), "drop", 4)) return cns_drop(rest);
    if (w == "get") {
        int n = 0;
        if (int rc = cnsnumber(rest, &n)) return rc;
        const char* t = cnsfind(n);
        retval_clear();
        if (int rc = retval_set_scalar("defined", t ? 1 : 0)) return rc;
        if (t)
            if (int rc = retval_set_local("contents", t)) return rc;
        return 0;
    }
    if (w == "free") {
        if (!rest.empty()) return error(198);
        int n = 1;
        while (n <= CNS_MAX && cnsfind(n)) n++;
        if (n > CNS_MAX) return errtext(412, "no free constraints\n");
        retval_clear();
        return retval_set_scalar("free", n);
    }
    return errorf(198, "constraint %s invalid subcommand\n", w.c_str());
}

// matrix makeCns [numlist|_all]: the constraints on e(b) into e(Cns).
int matmakecns() {
    std::string rest = restline();
    std::vector<int> ns;
    if (int rc = cnslist(rest, ns)) return rc;
    if (!lastest) return error(301), 301;
    DenseMat b;
    if (matlink.load("_b", ET_RECORD, &b)) return error(301), 301;
    Coefs cf;
    for (int j = 0; j < b.cols; j++) {
        const std::string& f = b.colnames[j];
        size_t c = f.find(':');
        cf.eq.push_back(c == std::string::npos ? "" : f.substr(0, c));
        cf.name.push_back(c == std::string::npos ? f : f.substr(c + 1));
    }
    if (!cf.eq.empty()) cf.firsteq = cf.eq[0];
    std::vector<std::vector<double>> rows;
    for (int n : ns) {
        const char* t = cnsfind(n);
        if (!t) return errorf(111, "constraint %d not found\n", n);
        std::string s = t;
        Lin lin;
        lin.a.assign(b.cols, 0);
        size_t e = s.find('=');
        if (e != std::string::npos && s.find('=', e + 1) != std::string::npos)
            return errorf(198, "%s: invalid constraint\n", t);
        if (int rc = parseside(s.substr(0, e), cf, 1, &lin, t)) return rc;
        if (e != std::string::npos)
            if (int rc = parseside(s.substr(e + 1), cf, -1, &lin, t)) return rc;
        std::vector<double> row = lin.a;
        row.push_back(-lin.c);
        bool any = false;
        for (int j = 0; j < b.cols; j++)
            if (lin.a[j] != 0) any = true;
        if (!any) return errorf(198, "%s: no coefficient constrained\n", t);
        rows.push_back(row);
    }
    if (rows.empty()) {
        matlink.drop("Cns", ET_RECORD);
        return 0;
    }
    if (int rc = checkrank(rows, b.cols)) return rc;
    DenseMat C;
    C.rows = static_cast<int32_t>(rows.size());
    C.cols = b.cols + 1;
    for (auto& r : rows) C.x.insert(C.x.end(), r.begin(), r.end());
    for (int i = 0; i < C.rows; i++) C.rownames.push_back("r" + std::to_string(i + 1));
    C.colnames = b.colnames;
    C.colnames.push_back("_r");
    if (matlink.save("Cns", ET_RECORD, C)) return error(950), 950;
    return 0;
}

// matrix dispCns: the rows of e(Cns) as equations.
int matdispcns() {
    if (int rc = restline().empty() ? 0 : error(198)) return rc;
    DenseMat C, b;
    if (!lastest || matlink.load("Cns", ET_RECORD, &C) || C.rows == 0) {
        c_outlev = 1;
        spoutf("(no constraints)\n");
        return 0;
    }
    matlink.load("_b", ET_RECORD, &b);
    bool eqs = false;
    for (auto& n : b.colnames)
        if (n.find(':') != std::string::npos) eqs = true;
    c_outlev = 1;
    for (int i = 0; i < C.rows; i++) {
        std::string line;
        for (int j = 0; j + 1 < C.cols; j++) {
            double a = C.at(i, j);
            if (a == 0) continue;
            std::string nm = j < b.cols ? b.colnames[j] : C.colnames[j];
            size_t c = nm.find(':');
            if (c != std::string::npos)
                nm = "[" + nm.substr(0, c) + "]" + nm.substr(c + 1);
            else if (eqs)
                nm = "[]" + nm;
            char num[64];
            double m = std::fabs(a);
            if (line.empty())
                line = a < 0 ? "-" : "";
            else
                line += a < 0 ? " - " : " + ";
            if (m != 1) {
                snprintf(num, sizeof num, "%.8g*", m);
                line += num;
            }
            line += nm;
        }
        char rhs[64];
        snprintf(rhs, sizeof rhs, "%.8g", C.at(i, C.cols - 1) == 0 ? 0.0 : C.at(i, C.cols - 1));
        spoutf("%3d)  %s = %s\n", i + 1, line.c_str(), rhs);
    }
    return 0;
}

} // namespace korvu
