// The evaluator of matrix expressions. It reads the text by precedence
// (joins inside parentheses, + and -, * and /, #, unary minus, ^, transpose
// and subscripts), computes each operation on dense values at once, and
// hands whatever is not a matrix operation to the expression compiler as a
// number.
#include "results/matrix/matexp.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/brk.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/rng/rng.h"

namespace korvu {

bool issymdense(const double* a, int n); // matstore.cpp

static std::string defstripe(int n, char prefix) {
    std::string s(static_cast<size_t>(n) * STRIPE_ENTRY, '\0');
    consecstd(s.data(), n, prefix);
    return s;
}
std::string mvrowstripe(const MVal& m) {
    return m.rs.empty() ? defstripe(m.r, 'r') : m.rs;
}
std::string mvcolstripe(const MVal& m) {
    return m.cs.empty() ? defstripe(m.c, 'c') : m.cs;
}

int mvload(const char* name, int type, MVal* out, bool report) {
    MatDesc d;
    matsett(name, type, &d);
    if (!d.item) return report ? matnotfound_m(name) : 111;
    *out = MVal();
    out->r = d.rows;
    out->c = d.cols;
    out->sym = d.kind == 2;
    out->v.resize(static_cast<size_t>(d.rows) * d.cols);
    for (int i = 0; i < d.rows; i++)
        for (int j = 0; j < d.cols; j++) out->at(i, j) = matel(&d, i, j);
    int rt, ct;
    std::string rn = stripename(name, type, 1, &rt), cn = stripename(name, type, 0, &ct);
    const char* rs = static_cast<const char*>(dmfind0(rn.c_str(), rt));
    const char* cs = static_cast<const char*>(dmfind0(cn.c_str(), ct));
    if (rs && dmsize(rs) == static_cast<uint64_t>(d.rows) * STRIPE_ENTRY)
        out->rs.assign(rs, static_cast<size_t>(d.rows) * STRIPE_ENTRY);
    if (cs && dmsize(cs) == static_cast<uint64_t>(d.cols) * STRIPE_ENTRY)
        out->cs.assign(cs, static_cast<size_t>(d.cols) * STRIPE_ENTRY);
    return 0;
}

int mvloadest(const char* ename, MVal* out) {
    const char* rec = !std::strcmp(ename, "b") ? "_b" : !std::strcmp(ename, "V") ? "VCE" : nullptr;
    if (!rec) return 111;
    return mvload(rec, DM_EST, out, false);
}

static MVal tomatrix(const MVal& x) {
    if (!x.scalar) return x;
    MVal m;
    m.r = m.c = 1;
    m.v = x.v;
    m.sym = true;
    return m;
}

int mvstore(const char* name, const MVal& m0) {
    MVal m = tomatrix(m0);
    if (m.null) m.r = m.c = 0;
    if (m.r > MAX_MATDIM || m.c > MAX_MATDIM || m.r > matsize || m.c > matsize) return error(908);
    bool sym = m.r == m.c && (m.sym || m.r == 1);
    if (sym && !m.sym) sym = issymdense(m.v.data(), m.r) && m.r == 1;
    MatDesc d;
    if (int rc = makeusermat(&d, name, sym ? 2 : 1, m.r, m.c)) return rc;
    for (int i = 0; i < m.r; i++)
        for (int j = 0; j < (sym ? i + 1 : m.c); j++) matstel(&d, i, j, m.at(i, j));
    if (!m.rs.empty()) {
        void* s = dmfind0(name, DM_MATROW);
        if (s) std::memcpy(s, m.rs.data(), m.rs.size());
    }
    if (!m.cs.empty()) {
        void* s = dmfind0(name, DM_MATCOL);
        if (s) std::memcpy(s, m.cs.data(), m.cs.size());
    }
    return 0;
}

namespace {

struct Parser {
    const char* b;
    const char* p;
    const char* e;
};

void skipws(Parser& ps) {
    while (ps.p < ps.e && *ps.p == ' ') ps.p++;
}
bool peek(Parser& ps, char c) {
    skipws(ps);
    return ps.p < ps.e && *ps.p == c;
}
bool isname1(int c) {
    return std::isalpha(c) || c == '_';
}
bool isnamec(int c) {
    return std::isalnum(c) || c == '_';
}

MVal num(double x) {
    MVal m;
    m.scalar = true;
    m.r = m.c = 1;
    m.v.assign(1, x);
    return m;
}

MVal dense(int r, int c) {
    MVal m;
    m.r = r;
    m.c = c;
    m.v.assign(static_cast<size_t>(r) * c, 0.0);
    return m;
}

int checksize(int r, int c) {
    if (r < 0 || c < 0) return error(198);
    if (r > matsize || c > matsize || r > MAX_MATDIM || c > MAX_MATDIM) return error(908);
    return 0;
}

double madd(double a, double b) {
    return a >= misval || b >= misval ? misval : a + b;
}
double msub(double a, double b) {
    return a >= misval || b >= misval ? misval : a - b;
}
double mmul(double a, double b) {
    return a >= misval || b >= misval ? misval : a * b;
}

int expr(Parser& ps, MVal* out);

// Nesting of the evaluator: deep enough for any real expression, shallow
// enough for the native stack.
int nesting = 0;
constexpr int MAXNEST = 400;
struct Nest {
    bool over;
    Nest() : over(++nesting > MAXNEST) {}
    ~Nest() { nesting--; }
};

// A number by the compiler: the text [b, e) run for the first observation.
int fallback(const char* b, const char* e, MVal* out) {
    static ExpObj obj;
    ExpObj saved;
    std::memcpy(&saved, &obj, sizeof obj); // this can nest through el() and matrix()
    int rc = compexp_text(&obj, b, e, 0, 0);
    if (rc) {
        std::memcpy(&obj, &saved, sizeof obj);
        return rc;
    }
    int32_t s1 = nobs1, s2 = nobs2, ss1 = nobss1, ss2 = nobss2;
    nobs1 = nobss1 = 1;
    nobs2 = nobss2 = nobs;
    double v = xeq(&obj, 1);
    nobs1 = s1, nobs2 = s2, nobss1 = ss1, nobss2 = ss2;
    std::memcpy(&obj, &saved, sizeof obj);
    *out = num(v);
    return 0;
}

// The closer matching the opener at p, or null.
const char* closer(const char* p, const char* e) {
    int depth = 0;
    for (; p < e; p++) {
        if (*p == '"') {
            const char* q = static_cast<const char*>(memchr(p + 1, '"', e - p - 1));
            if (!q) return nullptr;
            p = q;
            continue;
        }
        if (*p == '(' || *p == '[') depth++;
        if (*p == ')' || *p == ']')
            if (--depth == 0) return p;
    }
    return nullptr;
}

// The pieces of [b, e) before each separator outside brackets and quotes go
// into out; *last is where the final piece starts. False when a quote is
// not closed (the pieces before it stand).
static bool splittop(const char* b, const char* e, char sep,
                     std::vector<std::pair<const char*, const char*>>* out, const char** last) {
    int depth = 0;
    *last = b;
    for (const char* p = b; p < e; p++) {
        if (*p == '"') {
            const char* q = static_cast<const char*>(memchr(p + 1, '"', e - p - 1));
            if (!q) return false;
            p = q;
            continue;
        }
        if (*p == '(' || *p == '[') depth++;
        if (*p == ')' || *p == ']') depth--;
        if (*p == sep && depth == 0) {
            out->push_back({*last, p});
            *last = p + 1;
        }
    }
    return true;
}

// Splits [b, e) at top-level commas.
std::vector<std::pair<const char*, const char*>> splitargs(const char* b, const char* e) {
    std::vector<std::pair<const char*, const char*>> out;
    const char* last;
    splittop(b, e, ',', &out, &last);
    for (const char* p = b; p < e; p++)
        if (*p != ' ') {
            out.push_back({last, e});
            break;
        }
    return out;
}

int evalspan(const char* b, const char* e, MVal* out) {
    Nest n;
    if (n.over) return error(130);
    Parser ps{b, b, e};
    if (int rc = expr(ps, out)) return rc;
    skipws(ps);
    if (ps.p != ps.e) return error(198);
    return 0;
}

int scalararg(const char* b, const char* e, double* x) {
    MVal m;
    if (int rc = evalspan(b, e, &m)) return rc;
    if (!m.scalar && !(m.r == 1 && m.c == 1)) return error(109);
    *x = m.v[0];
    return 0;
}

// A name argument: a bare name, or a quoted string.
std::string namearg(const char* b, const char* e) {
    while (b < e && *b == ' ') b++;
    while (e > b && e[-1] == ' ') e--;
    if (e - b >= 2 && *b == '"' && e[-1] == '"') return std::string(b + 1, e - 1);
    return std::string(b, e);
}

int matarg(const char* b, const char* e, MVal* m) {
    if (int rc = evalspan(b, e, m)) return rc;
    *m = tomatrix(*m);
    return 0;
}

MVal transpose(const MVal& a) {
    MVal t = dense(a.c, a.r);
    for (int i = 0; i < a.r; i++)
        for (int j = 0; j < a.c; j++) t.at(j, i) = a.at(i, j);
    t.rs = a.cs;
    t.cs = a.rs;
    t.sym = a.sym;
    return t;
}

// Position of a stripe name in a stripe (0-based), -1 none.
int stripefind(const std::string& stripe, int n, const std::string& want) {
    bool haseq = want.find(':') != std::string::npos;
    for (int k = 0; k < n; k++)
        if (matgetfullname(stripe.data(), k, haseq) == want) return k;
    return -1;
}

// One end of a subscript range: a number or a quoted stripe name; for an
// equation ("eq:") the first or last of its entries.
int subend(const char* b, const char* e, int n, const std::string& stripe, bool last, int* k) {
    while (b < e && *b == ' ') b++;
    while (e > b && e[-1] == ' ') e--;
    if (b < e && *b == '"') {
        std::string nm = namearg(b, e);
        if (!nm.empty() && nm.back() == ':') {
            std::string eq = nm.substr(0, nm.size() - 1);
            int found = -1;
            for (int j = 0; j < n; j++) {
                const char* ent = stripe.data() + static_cast<size_t>(j) * STRIPE_ENTRY;
                if (eq == std::string(ent, strnlen(ent, STRIPE_EQ)) && (found < 0 || last))
                    found = j;
            }
            if (found < 0) return errorf(111, "%s not found\n", nm.c_str());
            *k = found;
            return 0;
        }
        int j = stripefind(stripe, n, nm);
        if (j < 0) return errorf(111, "%s not found\n", nm.c_str());
        *k = j;
        return 0;
    }
    double x;
    if (int rc = scalararg(b, e, &x)) return rc;
    if (x >= misval || x < 1 || x > n || x != std::floor(x)) return error(503);
    *k = static_cast<int>(x) - 1;
    return 0;
}

// One subscript: i, i..j, i... where each end is a number or a name.
int subrange(const char* b, const char* e, int n, const std::string& stripe, int* lo, int* hi) {
    const char* dots = nullptr;
    int depth = 0;
    for (const char* p = b; p + 1 < e; p++) {
        if (*p == '"') {
            const char* q = static_cast<const char*>(memchr(p + 1, '"', e - p - 1));
            if (!q) return error(198);
            p = q;
            continue;
        }
        if (*p == '(' || *p == '[') depth++;
        if (*p == ')' || *p == ']') depth--;
        if (depth == 0 && p[0] == '.' && p[1] == '.') {
            dots = p;
            break;
        }
    }
    if (!dots) {
        if (int rc = subend(b, e, n, stripe, false, lo)) return rc;
        return subend(b, e, n, stripe, true, hi);
    }
    if (int rc = subend(b, dots, n, stripe, false, lo)) return rc;
    const char* q = dots + 2;
    if (q < e && *q == '.') {
        q++;
        while (q < e && *q == ' ') q++;
        if (q != e) return error(198);
        *hi = n - 1;
        return 0;
    }
    if (int rc = subend(q, e, n, stripe, true, hi)) return rc;
    if (*hi < *lo) return error(503);
    return 0;
}

int subscript(MVal* m, const char* b, const char* e) {
    MVal a = tomatrix(*m);
    auto args = splitargs(b, e);
    if (args.size() != 2) return error(198);
    std::string rs = mvrowstripe(a), cs = mvcolstripe(a);
    int r0, r1, c0, c1;
    if (int rc = subrange(args[0].first, args[0].second, a.r, rs, &r0, &r1)) return rc;
    if (int rc = subrange(args[1].first, args[1].second, a.c, cs, &c0, &c1)) return rc;
    bool ranged = false;
    for (const char* p = b; p + 1 < e; p++)
        if (p[0] == '.' && p[1] == '.') ranged = true;
    if (r0 == r1 && c0 == c1 && !ranged) {
        *m = num(a.at(r0, c0));
        return 0;
    }
    MVal s = dense(r1 - r0 + 1, c1 - c0 + 1);
    for (int i = r0; i <= r1; i++)
        for (int j = c0; j <= c1; j++) s.at(i - r0, j - c0) = a.at(i, j);
    if (!a.rs.empty())
        s.rs = a.rs.substr(static_cast<size_t>(r0) * STRIPE_ENTRY,
                           static_cast<size_t>(s.r) * STRIPE_ENTRY);
    if (!a.cs.empty())
        s.cs = a.cs.substr(static_cast<size_t>(c0) * STRIPE_ENTRY,
                           static_cast<size_t>(s.c) * STRIPE_ENTRY);
    *m = s;
    return 0;
}

int needsquare(const MVal& a) {
    if (a.r != a.c) return error(503);
    return 0;
}

int notmiss(const MVal& a, const char* label) {
    for (double x : a.v)
        if (x >= misval) {
            errorf(504, "%s: ", label);
            return error(504);
        }
    return 0;
}

int function(const std::string& name, const char* ab, const char* ae, const char* whole_b,
             const char* whole_e, MVal* out) {
    auto args = splitargs(ab, ae);
    size_t n = args.size();
    auto want = [&](size_t k) { return n == k ? 0 : error(198); };
    MVal a;
    if (name == "inv" || name == "syminv" || name == "invsym" || name == "cholesky" ||
        name == "corr" || name == "vecdiag" || name == "trace" || name == "det" ||
        name == "issym" || name == "issymmetric" || name == "diag0cnt" || name == "matmissing" ||
        name == "diag" || name == "vec" || name == "rowsof" || name == "colsof") {
        if (int rc = want(1)) return rc;
        if (name == "rowsof" || name == "colsof") {
            // the name need only exist as a matrix
            if (int rc = matarg(args[0].first, args[0].second, &a)) return rc;
            *out = num(name == "rowsof" ? a.r : a.c);
            return 0;
        }
        if (int rc = matarg(args[0].first, args[0].second, &a)) return rc;
    }
    if (name == "syminv" || name == "invsym") {
        if (a.r != a.c || !issymdense(a.v.data(), a.r)) return error(505);
        if (int rc = checksize(a.r, a.c)) return rc;
        if (int rc = notmiss(a, "invsym()")) return rc;
        if (matrinfs(a.v.data(), a.c, 0, a.r - 1, nullptr, -1)) return 1;
        MVal t = a;
        t.rs = a.cs, t.cs = a.rs;
        t.sym = true;
        *out = t;
        return 0;
    }
    if (name == "inv") {
        if (int rc = needsquare(a)) return rc;
        if (int rc = notmiss(a, "inv()")) return rc;
        if (mfnsinv2(a.v.data(), a.r)) return errtext(506, "inv():  matrix is singular\n");
        MVal t = a;
        t.rs = a.cs, t.cs = a.rs;
        t.sym = false;
        *out = t;
        return 0;
    }
    if (name == "cholesky") {
        if (a.r != a.c || !issymdense(a.v.data(), a.r)) return error(505);
        if (int rc = notmiss(a, "cholesky()")) return rc;
        if (stsqrt(a.v.data(), a.r)) return error(506);
        a.sym = false;
        *out = a;
        return 0;
    }
    if (name == "corr") {
        if (a.r != a.c || !issymdense(a.v.data(), a.r)) return error(505);
        if (int rc = notmiss(a, "corr()")) return rc;
        for (int i = 0; i < a.r; i++)
            if (!(a.at(i, i) > 0))
                return errtext(506, "corr(): matrix has zero or negative values on diagonal\n");
        MVal t = a;
        for (int i = 0; i < a.r; i++)
            for (int j = 0; j < a.c; j++)
                t.at(i, j) = a.at(i, j) / std::sqrt(a.at(i, i) * a.at(j, j));
        t.sym = true;
        *out = t;
        return 0;
    }
    if (name == "vecdiag") {
        if (int rc = needsquare(a)) return rc;
        MVal t = dense(1, a.c);
        for (int i = 0; i < a.c; i++) t.at(0, i) = a.at(i, i);
        t.cs = a.cs;
        *out = t;
        return 0;
    }
    if (name == "diag") {
        if (a.r != 1 && a.c != 1) return error(503);
        int k = a.r * a.c;
        if (int rc = checksize(k, k)) return rc;
        MVal t = dense(k, k);
        for (int i = 0; i < k; i++) t.at(i, i) = a.v[i];
        const std::string& s = a.r == 1 ? a.cs : a.rs;
        t.rs = t.cs = s;
        t.sym = true;
        *out = t;
        return 0;
    }
    if (name == "vec") {
        if (int rc = checksize(a.r * a.c, 1)) return rc;
        MVal t = dense(a.r * a.c, 1);
        int k = 0;
        for (int j = 0; j < a.c; j++)
            for (int i = 0; i < a.r; i++) t.v[k++] = a.at(i, j);
        *out = t;
        return 0;
    }
    if (name == "trace") {
        if (int rc = needsquare(a)) return rc;
        double s = 0;
        for (int i = 0; i < a.r; i++) s = madd(s, a.at(i, i));
        *out = num(s);
        return 0;
    }
    if (name == "det") {
        if (int rc = needsquare(a)) return rc;
        for (double x : a.v)
            if (x >= misval) return *out = num(misval), 0;
        *out = num(matdet(a.v.data(), a.r));
        return 0;
    }
    if (name == "issym" || name == "issymmetric") {
        *out = num(a.r == a.c && issymdense(a.v.data(), a.r) ? 1 : 0);
        return 0;
    }
    if (name == "diag0cnt") {
        if (int rc = needsquare(a)) return rc;
        int k = 0;
        for (int i = 0; i < a.r; i++) k += a.at(i, i) == 0;
        *out = num(k);
        return 0;
    }
    if (name == "matmissing") {
        int k = 0;
        for (double x : a.v) k |= x >= misval;
        *out = num(k);
        return 0;
    }
    if (name == "I") {
        double k;
        if (int rc = want(1)) return rc;
        if (int rc = scalararg(args[0].first, args[0].second, &k)) return rc;
        if (k >= misval || k < 1 || k != std::floor(k)) return error(198);
        if (int rc =
                checksize(static_cast<int>(std::fmin(k, 1e9)), static_cast<int>(std::fmin(k, 1e9))))
            return rc;
        MVal t = dense(static_cast<int>(k), static_cast<int>(k));
        for (int i = 0; i < t.r; i++) t.at(i, i) = 1;
        t.sym = true;
        *out = t;
        return 0;
    }
    if (name == "J" || name == "matuniform") {
        double r, c, v = 0;
        if (int rc = want(name == "J" ? 3 : 2)) return rc;
        if (int rc = scalararg(args[0].first, args[0].second, &r)) return rc;
        if (int rc = scalararg(args[1].first, args[1].second, &c)) return rc;
        if (name == "J")
            if (int rc = scalararg(args[2].first, args[2].second, &v)) return rc;
        if (r >= misval || c >= misval || r < 1 || c < 1 || r != std::floor(r) ||
            c != std::floor(c))
            return error(198);
        if (int rc =
                checksize(static_cast<int>(std::fmin(r, 1e9)), static_cast<int>(std::fmin(c, 1e9))))
            return rc;
        MVal t = dense(static_cast<int>(r), static_cast<int>(c));
        if (name == "J") {
            for (double& x : t.v) x = v;
            t.sym = t.r == t.c;
        } else {
            for (double& x : t.v) x = urnuni();
        }
        *out = t;
        return 0;
    }
    if (name == "el") {
        if (int rc = want(3)) return rc;
        std::string nm = namearg(args[0].first, args[0].second);
        bool stored = nm.size() > 3 && (nm[0] == 'e' || nm[0] == 'r') && nm[1] == '(';
        if (int rc = stored ? matarg(args[0].first, args[0].second, &a)
                            : mvload(nm.c_str(), DM_MATRIX, &a, true))
            return rc;
        double i, j;
        if (int rc = scalararg(args[1].first, args[1].second, &i)) return rc;
        if (int rc = scalararg(args[2].first, args[2].second, &j)) return rc;
        if (i >= misval || j >= misval || i < 1 || j < 1 || i > a.r || j > a.c ||
            i != std::floor(i) || j != std::floor(j))
            return error(503);
        *out = num(a.at(static_cast<int>(i) - 1, static_cast<int>(j) - 1));
        return 0;
    }
    if (name == "rownumb" || name == "colnumb") {
        if (int rc = want(2)) return rc;
        std::string nm = namearg(args[0].first, args[0].second);
        if (int rc = mvload(nm.c_str(), DM_MATRIX, &a, true)) return rc;
        std::string key = namearg(args[1].first, args[1].second);
        bool row = name == "rownumb";
        int k = stripefind(row ? mvrowstripe(a) : mvcolstripe(a), row ? a.r : a.c, key);
        *out = num(k < 0 ? misval : k + 1);
        return 0;
    }
    if (name == "nullmat") {
        if (int rc = want(1)) return rc;
        std::string nm = namearg(args[0].first, args[0].second);
        if (mvload(nm.c_str(), DM_MATRIX, out, false)) {
            *out = MVal();
            out->null = true;
        }
        return 0;
    }
    if (name == "get") {
        if (int rc = want(1)) return rc;
        std::string nm = namearg(args[0].first, args[0].second);
        if ((nm != "_b" && nm != "VCE" && nm != "Cns") || mvload(nm.c_str(), DM_EST, out, false))
            return errorf(111, "matrix %s not found\n", nm.c_str());
        return 0;
    }
    if (name == "hadamard") {
        MVal b2;
        if (int rc = want(2)) return rc;
        if (int rc = matarg(args[0].first, args[0].second, &a)) return rc;
        if (int rc = matarg(args[1].first, args[1].second, &b2)) return rc;
        if (a.r != b2.r || a.c != b2.c) return error(503);
        for (size_t k = 0; k < a.v.size(); k++) a.v[k] = mmul(a.v[k], b2.v[k]);
        a.sym = a.sym && b2.sym;
        *out = a;
        return 0;
    }
    if (name == "sweep") {
        double k;
        if (int rc = want(2)) return rc;
        if (int rc = matarg(args[0].first, args[0].second, &a)) return rc;
        if (int rc = scalararg(args[1].first, args[1].second, &k)) return rc;
        if (a.r != a.c || !issymdense(a.v.data(), a.r)) return error(505);
        if (k >= misval || k < 1 || k > a.r || k != std::floor(k)) return error(503);
        if (int rc = notmiss(a, "sweep()")) return rc;
        if (a.at(static_cast<int>(k) - 1, static_cast<int>(k) - 1) == 0) return error(506);
        sweepone(a.v.data(), a.r, static_cast<int>(k) - 1);
        *out = a;
        return 0;
    }
    if (name == "matrix") {
        if (int rc = want(1)) return rc;
        return evalspan(args[0].first, args[0].second, out);
    }
    return fallback(whole_b, whole_e, out);
}

int joinrows(std::vector<MVal>& parts, MVal* out);

// ( a, b \ c, d )
int parenthesized(const char* b, const char* e, MVal* out) {
    // split at top-level backslashes into rows, then commas into columns
    std::vector<std::pair<const char*, const char*>> rows;
    const char* last;
    if (!splittop(b, e, '\\', &rows, &last)) return error(198);
    rows.push_back({last, e});
    if (rows.size() == 1 && splitargs(b, e).size() <= 1) return evalspan(b, e, out);
    std::vector<MVal> stacked;
    for (auto& row : rows) {
        auto cols = splitargs(row.first, row.second);
        if (cols.empty()) return error(198);
        MVal acc;
        bool first = true;
        for (auto& c : cols) {
            MVal x;
            if (int rc = evalspan(c.first, c.second, &x)) return rc;
            if (x.null) continue;
            x = tomatrix(x);
            if (first) {
                acc = x;
                first = false;
                continue;
            }
            if (acc.r != x.r) return error(503);
            MVal j = dense(acc.r, acc.c + x.c);
            for (int i = 0; i < acc.r; i++) {
                for (int k = 0; k < acc.c; k++) j.at(i, k) = acc.at(i, k);
                for (int k = 0; k < x.c; k++) j.at(i, acc.c + k) = x.at(i, k);
            }
            j.rs = acc.rs;
            if (!acc.cs.empty() || !x.cs.empty()) j.cs = mvcolstripe(acc) + mvcolstripe(x);
            acc = j;
        }
        if (first) {
            acc = MVal();
            acc.null = true;
        }
        stacked.push_back(acc);
    }
    return joinrows(stacked, out);
}

int joinrows(std::vector<MVal>& parts, MVal* out) {
    MVal acc;
    bool first = true;
    for (MVal& x : parts) {
        if (x.null) continue;
        if (first) {
            acc = x;
            first = false;
            continue;
        }
        if (acc.c != x.c) return error(503);
        MVal j = dense(acc.r + x.r, acc.c);
        std::copy(acc.v.begin(), acc.v.end(), j.v.begin());
        std::copy(x.v.begin(), x.v.end(), j.v.begin() + acc.v.size());
        j.cs = acc.cs;
        if (!acc.rs.empty() || !x.rs.empty()) j.rs = mvrowstripe(acc) + mvrowstripe(x);
        acc = j;
    }
    if (first) {
        acc = MVal();
        acc.null = true;
    }
    if (int rc = checksize(acc.r, acc.c)) return rc;
    *out = acc;
    return 0;
}

int primary(Parser& ps, MVal* out) {
    skipws(ps);
    if (ps.p >= ps.e) return error(198);
    const char* start = ps.p;
    unsigned char c = static_cast<unsigned char>(*ps.p);
    if (c == '(') {
        const char* q = closer(ps.p, ps.e);
        if (!q || *q != ')') return error(198);
        ps.p = q + 1;
        return parenthesized(start + 1, q, out);
    }
    if (std::isdigit(c) || c == '.') {
        const char* p = ps.p;
        if (c == '.' && (p + 1 >= ps.e || !std::isdigit(static_cast<unsigned char>(p[1])))) {
            p++;
            if (p < ps.e && std::islower(static_cast<unsigned char>(*p)) &&
                (p + 1 >= ps.e || !isnamec(static_cast<unsigned char>(p[1]))))
                p++;
        } else {
            while (p < ps.e && (std::isdigit(static_cast<unsigned char>(*p)) || *p == '.')) p++;
            if (p < ps.e && (*p == 'e' || *p == 'E')) {
                const char* q = p + 1;
                if (q < ps.e && (*q == '+' || *q == '-')) q++;
                if (q < ps.e && std::isdigit(static_cast<unsigned char>(*q))) {
                    while (q < ps.e && std::isdigit(static_cast<unsigned char>(*q))) q++;
                    p = q;
                }
            } else if (p < ps.e && (*p == 'x' || *p == 'X')) {
                return fallback(start, ps.e, out); // hexadecimal forms: the compiler's own
            }
        }
        std::string t(ps.p, p);
        double v;
        if (cnvstoz(t.c_str(), &v)) return error(198);
        ps.p = p;
        *out = num(v);
        return 0;
    }
    if (c == '"') return error(109);
    if (!isname1(c)) return error(198);
    const char* p = ps.p;
    while (p < ps.e && (isnamec(static_cast<unsigned char>(*p)) || *p == '.')) p++;
    std::string name(ps.p, p);
    const char* r = p;
    while (r < ps.e && *r == ' ') r++;
    if (r < ps.e && *r == '(') {
        const char* q = closer(r, ps.e);
        if (!q || *q != ')') return error(198);
        ps.p = q + 1;
        if ((name == "e" || name == "r") && splitargs(r + 1, q).size() == 1) {
            std::string nm = namearg(r + 1, q);
            if (!mvload(nm.c_str(), name == "e" ? DM_EMATRIX : DM_RMATRIX, out, false)) return 0;
            if (name == "e" && !mvloadest(nm.c_str(), out)) return 0;
            return fallback(start, ps.p, out);
        }
        return function(name, r + 1, q, start, ps.p, out);
    }
    ps.p = p;
    if (!mvload(name.c_str(), DM_MATRIX, out, false)) return 0;
    double v;
    if (scalarfind(name.c_str(), &v)) return *out = num(v), 0;
    return fallback(start, p, out);
}

int postfix(Parser& ps, MVal* out) {
    if (int rc = primary(ps, out)) return rc;
    for (;;) {
        if (ps.p < ps.e && *ps.p == '\'') {
            ps.p++;
            if (!out->scalar) *out = transpose(*out);
            continue;
        }
        if (ps.p < ps.e && *ps.p == '[') {
            const char* q = closer(ps.p, ps.e);
            if (!q || *q != ']') return error(198);
            const char* b = ps.p + 1;
            ps.p = q + 1;
            if (int rc = subscript(out, b, q)) return rc;
            continue;
        }
        return 0;
    }
}

int unary(Parser& ps, MVal* out);

int power(Parser& ps, MVal* out) {
    if (int rc = postfix(ps, out)) return rc;
    if (peek(ps, '^')) {
        ps.p++;
        MVal y;
        if (int rc = unary(ps, &y)) return rc;
        if (!out->scalar || !y.scalar) return error(509);
        double a = out->v[0], b = y.v[0];
        *out = num(a >= misval || b >= misval ? misval : std::pow(a, b));
    }
    return 0;
}

int unary(Parser& ps, MVal* out) {
    Nest n;
    if (n.over) return error(130);
    if (peek(ps, '-')) {
        ps.p++;
        if (int rc = unary(ps, out)) return rc;
        for (double& x : out->v)
            if (x < misval) x = -x;
        return 0;
    }
    return power(ps, out);
}

MVal scalemat(const MVal& m, double s) {
    MVal t = m;
    for (double& x : t.v) x = mmul(x, s);
    return t;
}

int kron(Parser& ps, MVal* out) {
    if (int rc = unary(ps, out)) return rc;
    while (peek(ps, '#')) {
        ps.p++;
        MVal y;
        if (int rc = unary(ps, &y)) return rc;
        MVal a = tomatrix(*out), b = tomatrix(y);
        if (int rc = checksize(a.r * b.r, a.c * b.c)) return rc;
        MVal k = dense(a.r * b.r, a.c * b.c);
        for (int i = 0; i < a.r; i++)
            for (int j = 0; j < a.c; j++)
                for (int u = 0; u < b.r; u++)
                    for (int w = 0; w < b.c; w++)
                        k.at(i * b.r + u, j * b.c + w) = mmul(a.at(i, j), b.at(u, w));
        *out = k;
    }
    return 0;
}

int product(Parser& ps, MVal* out) {
    if (int rc = kron(ps, out)) return rc;
    for (;;) {
        skipws(ps);
        if (ps.p >= ps.e || (*ps.p != '*' && *ps.p != '/')) return 0;
        char op = *ps.p++;
        MVal y;
        if (int rc = kron(ps, &y)) return rc;
        if (op == '/') {
            if (!y.scalar && !(y.r == 1 && y.c == 1)) return error(509);
            double d = y.v[0];
            if (out->scalar) {
                double a = out->v[0];
                *out = num(a >= misval || d >= misval || d == 0 ? misval : a / d);
            } else {
                for (double& x : out->v) x = x >= misval || d >= misval || d == 0 ? misval : x / d;
            }
            continue;
        }
        if (out->scalar && y.scalar) {
            *out = num(mmul(out->v[0], y.v[0]));
            continue;
        }
        MVal a = tomatrix(*out), b = tomatrix(y);
        if (a.r == 1 && a.c == 1 && !(b.r == 1)) {
            *out = scalemat(b, a.v[0]);
            continue;
        }
        if (b.r == 1 && b.c == 1 && a.c != 1) {
            *out = scalemat(a, b.v[0]);
            continue;
        }
        if (a.c != b.r) return error(503);
        if (int rc = checksize(a.r, b.c)) return rc;
        MVal m = dense(a.r, b.c);
        for (int i = 0; i < a.r; i++) {
            if (kvpollrare()) return 1;
            for (int k = 0; k < a.c; k++) {
                double x = a.at(i, k);
                for (int j = 0; j < b.c; j++) m.at(i, j) = madd(m.at(i, j), mmul(x, b.at(k, j)));
            }
        }
        m.rs = a.rs;
        m.cs = b.cs;
        *out = m;
    }
}

int expr(Parser& ps, MVal* out) {
    if (int rc = product(ps, out)) return rc;
    for (;;) {
        skipws(ps);
        if (ps.p >= ps.e || (*ps.p != '+' && *ps.p != '-')) return 0;
        char op = *ps.p++;
        MVal y;
        if (int rc = product(ps, &y)) return rc;
        if (out->scalar && y.scalar) {
            *out = num(op == '+' ? madd(out->v[0], y.v[0]) : msub(out->v[0], y.v[0]));
            continue;
        }
        MVal a = tomatrix(*out), b = tomatrix(y);
        if (a.r != b.r || a.c != b.c) return error(503);
        for (size_t k = 0; k < a.v.size(); k++)
            a.v[k] = op == '+' ? madd(a.v[k], b.v[k]) : msub(a.v[k], b.v[k]);
        a.sym = a.sym && b.sym;
        *out = a;
    }
}

} // namespace

int matexpeval(const char* b, const char* e, MVal* out) {
    try {
        return evalspan(b, e, out);
    } catch (const std::bad_alloc&) {
        return error(909);
    }
}

} // namespace korvu
