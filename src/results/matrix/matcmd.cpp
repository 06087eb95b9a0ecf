// The `matrix` command and its subcommands, `scalar`, the matrix macro
// functions, and the links of the store into expressions and settings.
#include <fnmatch.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/expr/expr.h"
#include "data/formats/formats.h"
#include "data/vars/vartab.h"
#include "kernel/dict/dict.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"
#include "results/matlink.h"
#include "results/matrix/matexp.h"
#include "results/matrix/matrix.h"
#include "results/rng/rng.h"
#include "results/settings.h"
#include "results/stores.h"

namespace korvu {

namespace {

int notyetsub(const char* what) {
    return errorf(199, "matrix %s not yet available\n", what);
}

// The rest of the line, consumed.
std::string restofline() {
    char* p = peektok_chr();
    std::string s = p;
    settok(p + std::strlen(p));
    while (!s.empty() && s.back() == ' ') s.pop_back();
    return s;
}

bool isname1(int c) {
    return std::isalpha(c) || c == '_';
}
bool isnamec(int c) {
    return std::isalnum(c) || c == '_';
}

int checkname(const std::string& name) {
    if (name.size() > NAMELEN) return errorf(198, "%s invalid name\n", name.c_str());
    if (int rc = chkname(name.c_str(), 1)) return rc;
    return chkreserved(name.c_str());
}

// matrix name = exp, the tokenizer standing after the name.
int assign(const std::string& name) {
    if (int rc = checkname(name)) return rc;
    std::string text = restofline();
    size_t k = 0;
    while (k < text.size() && text[k] == ' ') k++;
    if (k >= text.size() || text[k] != '=') return error(198);
    text.erase(0, k + 1);
    while (!text.empty() && text[0] == ' ') text.erase(0, 1);
    if (text.empty()) return error(198);
    MVal m;
    if (int rc = matexpeval(text.data(), text.data() + text.size(), &m)) return rc;
    if (vernum < 800 && m.scalar && m.v[0] >= misval) return error(504);
    return mvstore(name.c_str(), m);
}

// matrix name[i, j] = exp
int assignel(const std::string& name) {
    std::string text = restofline();
    size_t open = text.find('[');
    int depth = 0;
    size_t close = std::string::npos;
    for (size_t k = open; k < text.size(); k++) {
        if (text[k] == '[' || text[k] == '(') depth++;
        if (text[k] == ']' || text[k] == ')')
            if (--depth == 0) {
                close = k;
                break;
            }
    }
    if (close == std::string::npos) return error(198);
    std::string subs = text.substr(open + 1, close - open - 1);
    std::string rhs = text.substr(close + 1);
    size_t k = 0;
    while (k < rhs.size() && rhs[k] == ' ') k++;
    if (k >= rhs.size() || rhs[k] != '=') return error(198);
    rhs.erase(0, k + 1);
    MVal m;
    if (int rc = mvload(name.c_str(), DM_MATRIX, &m, true)) return rc;
    // the subscripts, split at the top-level comma
    depth = 0;
    size_t comma = std::string::npos;
    for (size_t j = 0; j < subs.size(); j++) {
        if (subs[j] == '(' || subs[j] == '[') depth++;
        if (subs[j] == ')' || subs[j] == ']') depth--;
        if (subs[j] == ',' && depth == 0) {
            comma = j;
            break;
        }
    }
    if (comma == std::string::npos) return error(198);
    MVal iv, jv, val;
    std::string si = subs.substr(0, comma), sj = subs.substr(comma + 1);
    if (int rc = matexpeval(si.data(), si.data() + si.size(), &iv)) return rc;
    if (int rc = matexpeval(sj.data(), sj.data() + sj.size(), &jv)) return rc;
    if (int rc = matexpeval(rhs.data(), rhs.data() + rhs.size(), &val)) return rc;
    if (iv.v.size() != 1 || jv.v.size() != 1 || val.v.size() != 1) return error(503);
    double i = iv.v[0], j = jv.v[0];
    if (i >= misval || j >= misval || i < 1 || j < 1 || i > m.r || j > m.c || i != std::floor(i) ||
        j != std::floor(j))
        return error(503);
    int ii = static_cast<int>(i) - 1, jj = static_cast<int>(j) - 1;
    m.at(ii, jj) = val.v[0];
    if (m.sym && ii != jj) m.sym = false;
    return mvstore(name.c_str(), m);
}

// ---- matrix list ---------------------------------------------------------------

struct ListOpts {
    std::string title, fmt = "%10.0g";
    bool header = true, names = true, blank = true, half = true;
};

int listone(const char* shown, const char* name, int type, const ListOpts& o) {
    MVal m;
    if (mvload(name, type, &m, false) && (type != DM_EMATRIX || mvloadest(name, &m))) return 111;
    bool half = o.half && m.sym;
    FmtDesc fd;
    if (chkfmt(o.fmt.c_str(), 1, &fd)) return error(120);
    int w = fd.width;
    std::string rs = mvrowstripe(m), cs = mvcolstripe(m);
    std::vector<std::string> rn(m.r), cn(m.c);
    size_t lw = 0;
    bool anyeq = false;
    for (int i = 0; i < m.r; i++) {
        rn[i] = matgetfullname(rs.data(), i, 1);
        lw = std::max(lw, rn[i].size());
    }
    for (int j = 0; j < m.c; j++) {
        cn[j] = matgetfullname(cs.data(), j, 0);
        if (cs[static_cast<size_t>(j) * STRIPE_ENTRY]) anyeq = true;
        w = std::max<int>(w, static_cast<int>(cn[j].size()));
    }
    if (!o.names) lw = 0;
    if (o.blank) newline();
    if (o.header) {
        c_outlev = 1;
        std::string h = std::string(half ? "symmetric " : "") + shown + "[" + std::to_string(m.r) +
                        "," + std::to_string(m.c) + "]";
        if (!o.title.empty()) h += ":  " + o.title;
        spout21(h.c_str());
        newline();
    }
    int per = std::max(1, (korvu_linewidth - static_cast<int>(lw) - 1) / (w + 2));
    char buf[600];
    for (int j0 = 0; j0 < m.c; j0 += per) {
        int j1 = std::min(m.c, j0 + per);
        if (j0 > 0) newline();
        if (o.names) {
            if (anyeq) {
                std::string line(lw, ' ');
                for (int j = j0; j < j1; j++) {
                    const char* e = cs.data() + static_cast<size_t>(j) * STRIPE_ENTRY;
                    std::string eq(e, strnlen(e, STRIPE_EQ));
                    if (j > j0 && !std::strncmp(e, e - STRIPE_ENTRY, STRIPE_EQ)) eq = "";
                    snprintf(buf, sizeof buf, "  %*s", w, eq.c_str());
                    line += buf;
                }
                while (!line.empty() && line.back() == ' ') line.pop_back();
                c_outlev = 1;
                spout21(line.c_str());
                newline();
            }
            c_outlev = 1;
            snprintf(buf, sizeof buf, "%*s", static_cast<int>(lw), "");
            spout21(buf);
            for (int j = j0; j < j1; j++) {
                snprintf(buf, sizeof buf, "  %*s", w, cn[j].c_str());
                spout21(buf);
            }
            newline();
        }
        for (int i = 0; i < m.r; i++) {
            if (half && i < j0) continue;
            c_outlev = 1;
            snprintf(buf, sizeof buf, "%-*s", static_cast<int>(lw), o.names ? rn[i].c_str() : "");
            spout21(buf);
            c_outlev = 0;
            for (int j = j0; j < j1; j++) {
                if (half && j > i) break;
                char val[kFmtBufSize + 8];
                double x = m.at(i, j);
                fmtrender(val, fd, x);
                snprintf(buf, sizeof buf, "  %*s", w, val);
                spout21(buf);
            }
            newline();
        }
    }
    return 0;
}

int matlist() {
    // name, then options
    std::string name;
    const char* p = peektok_chr();
    const char* q = p;
    while (*q && *q != ',' && *q != ' ') {
        if (*q == '(') {
            const char* c = std::strchr(q, ')');
            if (!c) return error(198);
            q = c + 1;
            break;
        }
        q++;
    }
    name.assign(p, q);
    settok(const_cast<char*>(q));
    gettok(prsestd);
    opable = 0;
    if (token[0]) {
        if (!tokis(token, ",")) return error(198);
        if (int rc = proption()) return rc;
    }
    ListOpts o;
    char arg[600];
    if (findargasis("title", 1, arg, 513)[0]) o.title = arg;
    if (findargasis("format", 1, arg, sizeof arg)[0]) {
        FmtDesc fd;
        if (chkfmt(arg, 1, &fd)) return errorf(120, "%s invalid format\n", arg);
        o.fmt = arg;
    }
    o.header = findopt("header", 6, 1);
    o.names = findopt("names", 5, 1);
    o.blank = findopt("blank", 5, 1);
    o.half = findopt("half", 4, 1);
    findopt("dotz", 4, 0); // accepted; .z shows as itself
    if (int rc = chkopt()) return rc;
    if (name.empty()) return error(198);
    int type = DM_MATRIX;
    std::string inner = name, shown = name;
    const char* cls = nullptr;
    auto strip = [&](const char* pre, int t, const char* c) {
        size_t n = std::strlen(pre);
        if (name.size() > n + 1 && !name.compare(0, n, pre) && name.back() == ')') {
            inner = name.substr(n, name.size() - n - 1);
            type = t;
            cls = c;
            return true;
        }
        return false;
    };
    strip("r(", DM_RMATRIX, "r") || strip("e(", DM_EMATRIX, "e") ||
        strip("return(", myrettype(3), "return");
    if (int rc = listone(shown.c_str(), inner.c_str(), type, o)) {
        if (rc != 111) return rc;
        if (cls) {
            return errorf(111, "matrix %s(%s) not found\n", cls, inner.c_str());
        }
        return matnotfound_m(inner.c_str());
    }
    return 0;
}

// ---- dir, drop, rename -------------------------------------------------------------

int matdir() {
    if (int rc = gettok(prsestd)[0] ? error(198) : 0) return rc;
    char nm[dm_namelen + 1];
    std::vector<std::string> names;
    for (void* it = dmnext(nullptr, nm, DM_MATRIX, nullptr); it;
         it = dmnext(it, nm, DM_MATRIX, nullptr))
        if (nm[0] != '<') names.push_back(nm);
    for (auto k = names.rbegin(); k != names.rend(); ++k) {
        MatDesc d;
        matsett(k->c_str(), DM_MATRIX, &d);
        char buf[80];
        c_outlev = 0;
        snprintf(buf, sizeof buf, "%9s[%d,%d]", k->c_str(), d.rows, d.cols);
        spout21(buf);
        newline();
    }
    return 0;
}

int matdrop() {
    std::vector<std::string> names;
    for (char* t = gettok(prsestd); t[0]; t = gettok(prsestd)) names.emplace_back(t);
    if (names.empty()) return error(198);
    if (names.size() == 1 && names[0] == "_all") {
        char nm[dm_namelen + 1];
        std::vector<std::string> all;
        for (void* it = dmnext(nullptr, nm, DM_MATRIX, nullptr); it;
             it = dmnext(it, nm, DM_MATRIX, nullptr))
            all.push_back(nm);
        for (auto& n : all) killusermat(n.c_str());
        return 0;
    }
    for (auto& n : names)
        if (!dmfind0(n.c_str(), DM_MATRIX)) return matnotfound_m(n.c_str());
    for (auto& n : names) killusermat(n.c_str());
    return 0;
}

int matrename() {
    std::string from = gettok(prsestd);
    std::string to = gettok(prsestd);
    if (from.empty() || to.empty() || gettok(prsestd)[0]) return error(198);
    if (!dmfind0(from.c_str(), DM_MATRIX)) return matnotfound_m(from.c_str());
    if (int rc = checkname(to)) return rc;
    if (from == to) return 0;
    killusermat(to.c_str());
    for (int t : {DM_MATRIX, DM_MATROW, DM_MATCOL})
        if (void* it = dmfind0(from.c_str(), t)) dmrename(it, to.c_str());
    return 0;
}

// ---- stripes from the user -----------------------------------------------------------

// which: 0 names, 1 equations; col: 0 rows, 1 columns.
int matrcnam(int which, int col) {
    std::string name = gettok(prsestd);
    if (name.empty()) return error(198);
    if (gtokis('=')) return error(198);
    MVal m;
    if (int rc = mvload(name.c_str(), DM_MATRIX, &m, true)) return rc;
    int n = col ? m.c : m.r;
    std::string stripe = col ? mvcolstripe(m) : mvrowstripe(m);
    std::vector<std::string> toks;
    for (char* t = gettok(prsefls); t[0]; t = gettok(prsefls)) {
        std::string s = tokisstr(t) ? t + 1 : t;
        toks.push_back(s);
    }
    if (toks.empty()) return error(198);
    if (static_cast<int>(toks.size()) > n) return error(503);
    std::string out = stripe;
    for (int k = 0; k < n; k++) {
        const std::string& t = toks[std::min<size_t>(k, toks.size() - 1)];
        char* e = out.data() + static_cast<size_t>(k) * STRIPE_ENTRY;
        char eq[STRIPE_EQ + 1], nm[STRIPE_NAME + 1], op[STRIPE_OP + 1];
        std::string oldname(e + STRIPE_EQ, strnlen(e + STRIPE_EQ, STRIPE_NAME));
        std::string oldop(e + STRIPE_EQ + STRIPE_NAME,
                          strnlen(e + STRIPE_EQ + STRIPE_NAME, STRIPE_OP));
        std::string oldeq(e, strnlen(e, STRIPE_EQ));
        if (which == 1) {
            std::string q = t;
            if (!q.empty() && q.back() == ':') q.pop_back();
            if (q.empty() || q.size() >= STRIPE_EQ || q.find_first_of(":. ") != std::string::npos)
                return error(198);
            matputfullname(out.data(), k, q.c_str(), oldname.c_str(), oldop.c_str());
            continue;
        }
        int rc = matfullnameparse(t.c_str(), eq, nm, op);
        if (rc == 1) {
            matputfullname(out.data(), k, eq, oldname.c_str(), oldop.c_str());
            continue;
        }
        if (rc) return error(198);
        bool haseq = t.find(':') != std::string::npos;
        matputfullname(out.data(), k, haseq ? eq : oldeq.c_str(), nm, op);
    }
    // the entries of one equation must stand together
    for (int k = 1; k < n; k++) {
        const char* cur = out.data() + static_cast<size_t>(k) * STRIPE_ENTRY;
        if (!std::strncmp(cur, cur - STRIPE_ENTRY, STRIPE_EQ)) continue;
        for (int j = 0; j < k - 1; j++)
            if (!std::strncmp(cur, out.data() + static_cast<size_t>(j) * STRIPE_ENTRY, STRIPE_EQ)) {
                std::string eq(cur, strnlen(cur, STRIPE_EQ));
                return errorf(507, "equation %s is not together in one run\n",
                              eq.empty() ? "_" : eq.c_str());
            }
    }
    // build the new stripe, then put it in place
    int type = col ? DM_MATCOL : DM_MATROW;
    void* made = dmadd("<mat2>", DM_MATRIX, n, out.size());
    if (!made && n) return error(950);
    if (made) std::memcpy(made, out.data(), out.size());
    dmrm(dmfind0(name.c_str(), type));
    if (made) {
        dmretype(made, type);
        dmrename(made, name.c_str());
    }
    return 0;
}

// ---- decompositions -------------------------------------------------------------------

int targets(int n, std::vector<std::string>* names, std::string* src) {
    for (int k = 0; k < n; k++) {
        std::string t = gettok(prsestd);
        if (t.empty() || tokisstr(t.c_str())) return error(198);
        if (int rc = checkname(t)) return rc;
        names->push_back(t);
    }
    if (gtokis('=')) return error(198);
    *src = gettok(prsestd);
    if (src->empty() || gettok(prsestd)[0]) return error(198);
    return 0;
}

MVal withnames(int r, int c, const std::string& rs, const std::string& cs) {
    MVal m;
    m.r = r, m.c = c;
    m.v.assign(static_cast<size_t>(r) * c, 0.0);
    m.rs = rs, m.cs = cs;
    return m;
}

std::string stemstripe(int n, const char* stem) {
    std::string s(static_cast<size_t>(n) * STRIPE_ENTRY, '\0');
    char nm[40];
    for (int k = 0; k < n; k++) {
        snprintf(nm, sizeof nm, "%s%d", stem, k + 1);
        matputfullname(s.data(), k, "", nm, "");
    }
    return s;
}

// The targets and the source matrix of a decomposition.
static int decompsource(int ntargets, std::vector<std::string>* t, std::string* src, MVal* a) {
    if (int rc = targets(ntargets, t, src)) return rc;
    return mvload(src->c_str(), DM_MATRIX, a, true);
}

// 504 with the subcommand's name when a decomposition meets a missing value.
static int refusemissing(const MVal& a, const char* prefix) {
    for (double x : a.v)
        if (x >= misval) return errtext(504, prefix), error(504);
    return 0;
}

int matceigen() {
    std::vector<std::string> t;
    std::string src;
    MVal a;
    if (int rc = decompsource(2, &t, &src, &a)) return rc;
    if (a.r != a.c) return error(503);
    if (!a.sym && !issymmatrix(src.c_str(), DM_MATRIX)) return error(505);
    if (int rc = refusemissing(a, "matrix symeigen: ")) return rc;
    int n = a.r;
    MVal vec = withnames(n, n, mvrowstripe(a), stemstripe(n, "e"));
    MVal val = withnames(1, n, "", stemstripe(n, "e"));
    val.rs = stemstripe(1, "r");
    if (symeigen(a.v.data(), n, val.v.data(), vec.v.data())) return error(430);
    if (int rc = mvstore(t[0].c_str(), vec)) return rc;
    return mvstore(t[1].c_str(), val);
}

int matsvd() {
    std::vector<std::string> t;
    std::string src;
    MVal a;
    if (int rc = decompsource(3, &t, &src, &a)) return rc;
    if (a.r < a.c) return error(503);
    if (int rc = refusemissing(a, "matrix svd: ")) return rc;
    MVal u = withnames(a.r, a.c, mvrowstripe(a), mvcolstripe(a));
    MVal w = withnames(1, a.c, stemstripe(1, "r"), mvcolstripe(a));
    MVal v = withnames(a.c, a.c, mvcolstripe(a), mvcolstripe(a));
    if (matsvdc(a.v.data(), a.r, a.c, u.v.data(), w.v.data(), v.v.data())) return error(430);
    if (int rc = mvstore(t[0].c_str(), u)) return rc;
    if (int rc = mvstore(t[1].c_str(), w)) return rc;
    return mvstore(t[2].c_str(), v);
}

int mateigenvalues() {
    std::vector<std::string> t;
    std::string src;
    MVal a;
    if (int rc = decompsource(2, &t, &src, &a)) return rc;
    if (a.r != a.c) return error(503);
    if (int rc = refusemissing(a, "matrix eigenvalues: ")) return rc;
    int n = a.r;
    MVal re = withnames(1, n, stemstripe(1, "real"), stemstripe(n, "c"));
    MVal im = withnames(1, n, stemstripe(1, "complex"), stemstripe(n, "c"));
    re.rs = std::string(STRIPE_ENTRY, '\0');
    matputfullname(re.rs.data(), 0, "", "real", "");
    im.rs = std::string(STRIPE_ENTRY, '\0');
    matputfullname(im.rs.data(), 0, "", "complex", "");
    if (geigenvals(a.v.data(), n, re.v.data(), im.v.data())) return error(430);
    if (int rc = mvstore(t[0].c_str(), re)) return rc;
    return mvstore(t[1].c_str(), im);
}

} // namespace

// ---- the command -------------------------------------------------------------------

int (*matrix_accum_hooks[4])(const char* target) = {nullptr, nullptr, nullptr, nullptr};

// The accumulating subcommands: `matrix accum A = varlist ...`. The target
// name and "=" are read here; the rest belongs to the accumulator.
static int accumhook(const char* word) {
    static constexpr const char* words[] = {"accum", "glsaccum", "opaccum", "vecaccum"};
    int k = 0;
    while (k < 3 && std::strcmp(words[k], word)) k++;
    std::string name = gettok(prsestd);
    if (name.empty() || tokisstr(name.c_str())) return error(198);
    if (int rc = checkname(name)) return rc;
    if (gtokis('=')) return error(198);
    if (!matrix_accum_hooks[k]) return notyetsub(word);
    return matrix_accum_hooks[k](name.c_str());
}

int matrixcmd(int) {
    const char* p = peektok_chr();
    const char* q = p;
    if (!isname1(static_cast<unsigned char>(*q))) return error(198);
    while (isnamec(static_cast<unsigned char>(*q))) q++;
    std::string word(p, q);
    const char* r = q;
    while (*r == ' ') r++;
    if ((*r == '=' && r[1] != '=') || *r == '[') {
        settok(const_cast<char*>(q));
        return *r == '[' ? assignel(word) : assign(word);
    }
    gettok(prsestd); // the word
    const char* w = word.c_str();
    if (cmdcmp(w, "input", 2)) {
        // numbers only: digits, signs, exponents, missing values, joins
        std::string name = gettok(prsestd);
        const char* t = peektok_chr();
        for (const char* c = t; *c; c++) {
            unsigned char ch = static_cast<unsigned char>(*c);
            if (std::isdigit(ch) || std::strchr(" .,\\()+-=", ch)) continue;
            if ((ch == 'e' || ch == 'E') && c > t &&
                (std::isdigit(static_cast<unsigned char>(c[-1])) || c[-1] == '.'))
                continue;
            if (std::islower(ch) && c > t && c[-1] == '.' &&
                !std::isalnum(static_cast<unsigned char>(c[1])))
                continue;
            return error(198);
        }
        return assign(name);
    }
    if (cmdcmp(w, "define", 3)) {
        const char* n = peektok_chr();
        const char* e = n;
        while (isnamec(static_cast<unsigned char>(*e))) e++;
        std::string name(n, e);
        const char* after = e;
        while (*after == ' ') after++;
        settok(const_cast<char*>(e));
        return *after == '[' ? assignel(name) : assign(name);
    }
    if (cmdcmp(w, "accum", 2)) return accumhook("accum");
    if (word == "cat") return matcat();
    if (cmdcmp(w, "coleq", 4)) return matrcnam(1, 1);
    if (cmdcmp(w, "colnames", 4)) return matrcnam(0, 1);
    if (cmdcmp(w, "dir", 1)) return matdir();
    if (cmdcmp(w, "dispCns", 7)) return matdispcns();
    if (cmdcmp(w, "dissimilarity", 3)) return matdissim();
    if (cmdcmp(w, "drop", 4)) return matdrop();
    if (cmdcmp(w, "eigenvalues", 8)) return mateigenvalues();
    if (cmdcmp(w, "list", 1)) return matlist();
    if (cmdcmp(w, "glsaccum", 4)) return accumhook("glsaccum");
    if (cmdcmp(w, "opaccum", 7)) return accumhook("opaccum");
    if (cmdcmp(w, "makeCns", 6)) return matmakecns();
    if (cmdcmp(w, "mlout", 4)) return matmlout();
    if (cmdcmp(w, "post", 4)) return epostcmd(0);
    if (cmdcmp(w, "roweq", 4)) return matrcnam(1, 0);
    if (cmdcmp(w, "rownames", 4)) return matrcnam(0, 0);
    if (cmdcmp(w, "score", 3)) return matscore();
    if (cmdcmp(w, "substitute", 3)) return matsubst();
    if (cmdcmp(w, "svd", 3)) return matsvd();
    if (cmdcmp(w, "symeigen", 4)) return matceigen();
    if (cmdcmp(w, "vecaccum", 4)) return accumhook("vecaccum");
    if (cmdcmp(w, "repost", 6)) return epostcmd(1);
    if (cmdcmp(w, "rename", 3)) return matrename();
    return error(501);
}

// ---- scalar -------------------------------------------------------------------------

static int scalarlist(bool all, const std::vector<std::string>& names) {
    std::vector<std::string> show = names;
    if (all) {
        char nm[dm_namelen + 1];
        for (void* it = dmnext(nullptr, nm, DM_SCALAR, nullptr); it;
             it = dmnext(it, nm, DM_SCALAR, nullptr))
            if (nm[0] != '_' || nm[1] != '_') show.insert(show.begin(), nm);
    }
    for (auto& n : show) {
        double v;
        const char* str = strscalarfind(n.c_str());
        if (!str && !scalarfind(n.c_str(), &v))
            return errorf(111, "scalar %s not found\n", n.c_str());
        char val[kFmtBufSize + 8], buf[120];
        if (!str) fmtnum(val, "%10.0g", v);
        c_outlev = 1;
        snprintf(buf, sizeof buf, "%*s = ", std::max<int>(9, static_cast<int>(n.size())),
                 n.c_str());
        spout21(buf);
        c_outlev = 0;
        if (str) {
            std::string q = std::string("\"") + str + "\"";
            spout21(q.c_str());
        } else {
            spout21(val);
        }
        newline();
    }
    return 0;
}

int scalarcmd(int) {
    const char* p = peektok_chr();
    const char* q = p;
    if (!isname1(static_cast<unsigned char>(*q))) return error(198);
    while (isnamec(static_cast<unsigned char>(*q))) q++;
    std::string word(p, q);
    const char* r = q;
    while (*r == ' ') r++;
    if (*r != '=') {
        gettok(prsestd);
        std::vector<std::string> names;
        if (cmdcmp(word.c_str(), "define", 2)) {
            const char* n = peektok_chr();
            const char* e = n;
            while (isnamec(static_cast<unsigned char>(*e))) e++;
            word.assign(n, e);
            settok(const_cast<char*>(e));
        } else if (cmdcmp(word.c_str(), "list", 1) || cmdcmp(word.c_str(), "dir", 3) ||
                   cmdcmp(word.c_str(), "drop", 4)) {
            for (char* t = gettok(prsestd); t[0]; t = gettok(prsestd)) names.emplace_back(t);
            bool all = names.empty() || (names.size() == 1 && names[0] == "_all");
            if (all) names.clear();
            if (word[1] == 'r') {
                if (all) {
                    dmzap(DM_SCALAR);
                    return 0;
                }
                for (auto& n : names)
                    if (!dmfind0(n.c_str(), DM_SCALAR))
                        return errorf(111, "scalar %s not found\n", n.c_str());
                for (auto& n : names) dmrm(dmfind0(n.c_str(), DM_SCALAR));
                return 0;
            }
            return scalarlist(all, names);
        } else {
            return error(198);
        }
    } else {
        settok(const_cast<char*>(q));
    }
    if (int rc = checkname(word)) return rc;
    if (gtokis('=')) return error(198);
    static ExpObj obj;
    if (int rc = compexp(&obj, 3, 0, 0)) return rc; // a number or a text
    if (gettok(prsestd)[0]) return error(198);
    int32_t s1 = nobs1, s2 = nobs2, ss1 = nobss1, ss2 = nobss2;
    nobs1 = nobss1 = 1;
    nobs2 = nobss2 = nobs;
    double v = 0;
    char text[EXP_STRMAX + 1] = "";
    bool str = obj.result_kind == 1;
    if (str)
        sxeq(&obj, 1, text);
    else
        v = xeq(&obj, 1);
    nobs1 = s1, nobs2 = s2, nobss1 = ss1, nobss2 = ss2;
    return str ? strscalarset(word.c_str(), text) : scalarset(word.c_str(), v);
}

// ---- links ---------------------------------------------------------------------------

static std::vector<std::string> scalar_ids;

static int scalar_find(const char* name) {
    double v;
    if (!scalarfind(name, &v)) return -1;
    for (size_t k = 0; k < scalar_ids.size(); k++)
        if (scalar_ids[k] == name) return static_cast<int>(k);
    scalar_ids.emplace_back(name);
    return static_cast<int>(scalar_ids.size()) - 1;
}

static double scalar_value(int id) {
    double v;
    if (id < 0 || static_cast<size_t>(id) >= scalar_ids.size() ||
        !scalarfind(scalar_ids[static_cast<size_t>(id)].c_str(), &v))
        return misval;
    return v;
}

static int scalar_string(const char* name, char* str) {
    const char* t = strscalarfind(name);
    if (!t) return 0;
    snprintf(str, EXP_STRMAX + 1, "%s", t);
    return 1;
}

static int matrix_find(const char* name) {
    return dmfind0(name, DM_MATRIX) != nullptr;
}

// el(), matrix(), A[i,j] and the number-valued matrix functions in ordinary
// expressions: evaluated once, when the expression is compiled.
static int matrix_value(const char* b, const char* e, double* out) {
    MVal m;
    if (int rc = matexpeval(b, e, &m)) return rc;
    if (m.v.size() != 1 || m.null) return error(503);
    *out = m.v[0];
    return 0;
}

// `: rownames A` and kin; `: rowsof A`, `: rownumb A name`.
static int matnames(const char* word, char* dst) {
    std::string w = word;
    char* t = gettok(prsestd);
    std::string name = t;
    if (name.empty()) return error(198);
    int type = DM_MATRIX;
    std::string inner = name;
    if (name.size() > 3 && (name[0] == 'r' || name[0] == 'e') && name[1] == '(' &&
        name.back() == ')') {
        type = name[0] == 'r' ? DM_RMATRIX : DM_EMATRIX;
        inner = name.substr(2, name.size() - 3);
    }
    bool quoted = false;
    std::string key;
    if (w == "rownumb" || w == "colnumb") {
        char* k = gettok(prsestd);
        key = tokisstr(k) ? k + 1 : k;
    }
    t = gettok(prsestd);
    if (t[0]) {
        if (!tokis(t, ",")) return error(198);
        t = gettok(prsestd);
        if (cmdcmp(t, "quoted", 5))
            quoted = true;
        else
            return error(198);
        if (gettok(prsestd)[0]) return error(198);
    }
    MVal m;
    if (mvload(inner.c_str(), type, &m, false)) return matnotfound_m(inner.c_str());
    std::string out;
    if (w == "rowsof" || w == "colsof") {
        out = std::to_string(w == "rowsof" ? m.r : m.c);
    } else if (w == "rownumb" || w == "colnumb") {
        bool row = w == "rownumb";
        std::string s = row ? mvrowstripe(m) : mvcolstripe(m);
        int n = row ? m.r : m.c, found = -1;
        for (int k = 0; k < n && found < 0; k++)
            if (matgetfullname(s.data(), k, key.find(':') != std::string::npos) == key) found = k;
        out = found < 0 ? "." : std::to_string(found + 1);
    } else {
        bool row = w.compare(0, 3, "row") == 0;
        std::string s = row ? mvrowstripe(m) : mvcolstripe(m);
        int n = row ? m.r : m.c;
        bool eqs = w.find("eq") != std::string::npos, full = w.find("full") != std::string::npos;
        for (int k = 0; k < n; k++) {
            std::string item;
            const char* ent = s.data() + static_cast<size_t>(k) * STRIPE_ENTRY;
            if (eqs) {
                item = ent[0] ? std::string(ent, strnlen(ent, STRIPE_EQ)) : "_";
            } else if (full) {
                item = (ent[0] ? std::string(ent, strnlen(ent, STRIPE_EQ)) : "_") + ":" +
                       matgetfullname(s.data(), k, 0);
            } else {
                item = matgetfullname(s.data(), k, 0);
            }
            if (k) out += ' ';
            out += quoted ? "`\"" + item + "\"'" : item;
        }
    }
    if (out.size() >= static_cast<size_t>(macrolen)) return error(920);
    std::memcpy(dst, out.c_str(), out.size() + 1);
    return 0;
}

// ---- the link for the result stores ---------------------------------------------------

static int dense_load(const char* name, int type, DenseMat* out) {
    MVal m;
    if (mvload(name, type, &m, false)) return 111;
    out->rows = m.r;
    out->cols = m.c;
    out->x = m.v;
    out->symmetric_storage = m.sym;
    std::string rs = mvrowstripe(m), cs = mvcolstripe(m);
    out->rownames.clear();
    out->colnames.clear();
    for (int i = 0; i < m.r; i++) out->rownames.push_back(matgetfullname(rs.data(), i, 1));
    for (int j = 0; j < m.c; j++) out->colnames.push_back(matgetfullname(cs.data(), j, 1));
    return 0;
}

static void dense_drop(const char* name, int type) {
    int rt, ct;
    std::string rn = stripename(name, type, 1, &rt), cn = stripename(name, type, 0, &ct);
    dmrm(dmfind0(name, type));
    dmrm(dmfind0(rn.c_str(), rt));
    dmrm(dmfind0(cn.c_str(), ct));
}

static int fillstripe(const std::vector<std::string>& names, int n, char prefix, char* out) {
    consecstd(out, n, prefix);
    if (names.empty()) return 0;
    if (static_cast<int>(names.size()) != n) return 503;
    char eq[STRIPE_EQ + 1], nm[STRIPE_NAME + 1], op[STRIPE_OP + 1];
    for (int k = 0; k < n; k++) {
        if (matfullnameparse(names[static_cast<size_t>(k)].c_str(), eq, nm, op)) return 198;
        matputfullname(out, k, eq, nm, op);
    }
    return 0;
}

static int dense_save(const char* name, int type, const DenseMat& m) {
    if (m.rows > MAX_MATDIM || m.cols > MAX_MATDIM) return 908;
    std::string rs(static_cast<size_t>(m.rows) * STRIPE_ENTRY, '\0');
    std::string cs(static_cast<size_t>(m.cols) * STRIPE_ENTRY, '\0');
    if (int rc = fillstripe(m.rownames, m.rows, 'r', rs.data())) return rc;
    if (int rc = fillstripe(m.colnames, m.cols, 'c', cs.data())) return rc;
    dense_drop(name, type);
    int32_t save = dynmattype;
    dynmattype = type;
    bool sym = m.symmetric_storage && m.rows == m.cols;
    void* it = matstors(name, sym ? 2 : 1, m.x.data(), m.cols, 0, m.rows - 1, 0, m.cols - 1);
    dynmattype = save;
    if (!it && m.rows && m.cols) return 950;
    if (!it) {
        // an empty matrix: the header alone
        MatDesc d;
        dynmattype = type;
        int rc = matdcl(&d, name, 1, m.rows, m.cols);
        dynmattype = save;
        if (rc) return 950;
    }
    int rt, ct;
    std::string rn = stripename(name, type, 1, &rt), cn = stripename(name, type, 0, &ct);
    void* r = dmadd(rn.c_str(), rt, m.rows, rs.size());
    void* c = dmadd(cn.c_str(), ct, m.cols, cs.size());
    if ((!r && m.rows) || (!c && m.cols)) {
        dense_drop(name, type);
        return 950;
    }
    if (r) std::memcpy(r, rs.data(), rs.size());
    if (c) std::memcpy(c, cs.data(), cs.size());
    return 0;
}

static int dense_dims(const void* item, int* rows, int* cols) {
    if (!item) return 1;
    const MatHdr* h = static_cast<const MatHdr*>(item);
    *rows = h->rows;
    *cols = h->cols;
    return 0;
}

// `: all [numeric|string] scalars ["pattern"]`, `: all matrices ["pattern"]`,
// in order of name.
static int allscalmat(const char*, char* dst) {
    std::string w = gettok(prsestd);
    int want = 0; // 0 either, 1 numeric, 2 string
    if (w == "numeric" || w == "string") {
        want = w == "string" ? 2 : 1;
        w = gettok(prsestd);
    }
    int type;
    if (w == "scalars")
        type = DM_SCALAR;
    else if (w == "matrices" && !want)
        type = DM_MATRIX;
    else
        return error(198);
    std::string pattern = "*";
    if (char* t = gettok(prsestd); t[0]) pattern = tokisstr(t) ? t + 1 : t;
    if (gettok(prsestd)[0]) return error(198);
    std::vector<std::string> names;
    char nm[dm_namelen + 1];
    for (void* it = dmnext(nullptr, nm, type, nullptr); it; it = dmnext(it, nm, type, nullptr)) {
        if (nm[0] == '<' || fnmatch(pattern.c_str(), nm, 0)) continue;
        if (type == DM_SCALAR && want && (strscalarfind(nm) != nullptr) != (want == 2)) continue;
        names.push_back(nm);
    }
    std::sort(names.begin(), names.end());
    std::string out;
    for (auto& n : names) {
        if (!out.empty()) out += ' ';
        out += n;
    }
    if (out.size() >= static_cast<size_t>(macrolen)) return error(920);
    std::memcpy(dst, out.c_str(), out.size() + 1);
    return 0;
}

void link_matrix() {
    exphooks.scalar_find = scalar_find;
    exphooks.scalar_string = scalar_string;
    exphooks.scalar_value = scalar_value;
    exphooks.matrix_find = matrix_find;
    exphooks.matrix_value = matrix_value;
    rnglink.setseed = setseed;
    rnglink.setseed0 = setseed0;
    rnglink.seedtext = [](char* buf, size_t n) {
        geturnseed(buf, n);
        return 0;
    };
    matlink.load = dense_load;
    matlink.save = dense_save;
    matlink.drop = dense_drop;
    matlink.dims = dense_dims;
    mac_fcn_hooks[MXF_MATNAMES] = matnames;
    mac_fcn_hooks[MXF_ALLSCALMAT] = allscalmat;
}

} // namespace korvu
