// The expression compiler: isolates the expression in the command line, then
// compiles spans of it recursively by splitting at the loosest operator,
// rightmost place first. Errors leave by an exception caught in compexp.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/storage.h"
#include "data/expr/exp_func.h"
#include "data/expr/exp_ops.h"
#include "data/expr/expr.h"
#include "data/vars/vartab.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

namespace korvu {

ExpObj ifpgm, wepgm;
double systak[EXP_MAXSYSTAK];
int32_t nsystak = 0;
char ssystak[EXP_SSYSTAKLEN];
int32_t nssystak = 0;
ExpHooks exphooks;

void initialize_compexp_shared() {
    nsystak = 0;
    nssystak = 0;
}

void zapexp(ExpObj* obj) {
    std::memset(obj, 0, sizeof *obj);
    obj->code_end = -1;
    obj->n_sums = -1;
}

void initialize_compexp_xeq(ExpObj* obj) {
    for (double& a : obj->accumulators) a = 0;
}

void initialize_xeq() {
    initialize_compexp_xeq(&ifpgm);
    initialize_compexp_xeq(&wepgm);
}

namespace {

struct CompileFail {
    int rc;
};

[[noreturn]] void fail(int rc) {
    throw CompileFail{rc};
}
// Reports through error() and leaves.
[[noreturn]] void failerr(int rc) {
    fail(error(rc));
}
[[noreturn]] void failmsg(int rc, const char* fmt, const char* a = "", const char* b = "") {
    errorf(rc, fmt, a, b);
    fail(rc);
}

struct CompileState {
    ExpObj* obj;
    uint8_t types[EXP_TYPESTACK];
    int ntypes, nstr, nmat;
    bool matrix_mode, row_flag, comma_ok, syntax_only, algebra_only;
    int in_missing;
};
CompileState cs;
int32_t pool_clock = -1; // command whose constants the pools hold

enum { T_NUM = 0, T_STR = 1, T_MAT = 2 };

void emit(int w) {
    ExpObj* o = cs.obj;
    if (o->code_end + 1 >= EXP_CODELEN) failerr(130);
    o->code[++o->code_end] = static_cast<int16_t>(w);
}

void pushtype(int t) {
    if (cs.ntypes >= EXP_TYPESTACK) failerr(130);
    if (t == T_STR && ++cs.nstr > EXP_MAXSTRINGS) failerr(130);
    if (t == T_MAT && ++cs.nmat > EXP_MAXMATRICES) failerr(130);
    cs.types[cs.ntypes++] = static_cast<uint8_t>(t);
}
int poptype() {
    if (cs.ntypes <= 0) failerr(198);
    int t = cs.types[--cs.ntypes];
    if (t == T_STR) cs.nstr--;
    if (t == T_MAT) cs.nmat--;
    return t;
}
void popcheck(int t) {
    if (poptype() != t) failerr(109);
}
int toptype() {
    return cs.ntypes ? cs.types[cs.ntypes - 1] : -1;
}

void pushconst(double v) {
    int k = -1;
    for (int j = 0; j < nsystak; j++)
        if (dbits(systak[j]) == dbits(v)) {
            k = j;
            break;
        }
    if (k < 0) {
        if (nsystak >= EXP_MAXSYSTAK) failerr(130);
        k = nsystak;
        systak[nsystak++] = v;
    }
    emit(OP_CONST);
    emit(k + 1);
    pushtype(T_NUM);
}

void pushsconst(const char* s, size_t n) {
    if (n > EXP_STRMAX) n = EXP_STRMAX;
    if (nssystak + static_cast<int>(n) + 1 > EXP_SSYSTAKLEN) failerr(130);
    int off = nssystak;
    std::memcpy(ssystak + off, s, n);
    ssystak[off + n] = 0;
    nssystak += static_cast<int>(n) + 1;
    emit(OP_SCONST);
    emit(off);
    pushtype(T_STR);
}

// ---- scanning ---------------------------------------------------------------

// Past the compound quote opening at p (`"), or null when it does not close
// before e.
const char* skip_compound(const char* p, const char* e) {
    int depth = 0;
    while (p < e) {
        if (p[0] == '`' && p + 1 < e && p[1] == '"') {
            depth++;
            p += 2;
        } else if (p[0] == '"' && p + 1 < e && p[1] == '\'') {
            p += 2;
            if (--depth == 0) return p;
        } else {
            p++;
        }
    }
    return nullptr;
}
// Past the simple string opening at p, or null.
const char* skip_simple(const char* p, const char* e) {
    const char* q = static_cast<const char*>(memchr(p + 1, '"', e - p - 1));
    return q ? q + 1 : nullptr;
}
// Past the quoted text at p (either kind), or null when p opens none that
// closes before e; p itself when p starts no quote.
const char* skip_quote(const char* p, const char* e) {
    if (*p == '"') return skip_simple(p, e);
    if (*p == '`' && p + 1 < e && p[1] == '"') return skip_compound(p, e);
    return p;
}

// The matching closer of the ( or [ at p, or null.
const char* match_close(const char* p, const char* e) {
    int depth = 0;
    while (p < e) {
        const char* q = skip_quote(p, e);
        if (!q) return nullptr;
        if (q != p) {
            p = q;
            continue;
        }
        if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']') {
            if (--depth == 0) return p;
        }
        p++;
    }
    return nullptr;
}

void trim(const char*& b, const char*& e) {
    while (b < e && *b == ' ') b++;
    while (e > b && e[-1] == ' ') e--;
}

bool isname1(int c) {
    return std::isalpha(c) || c == '_';
}
bool isnamec(int c) {
    return std::isalnum(c) || c == '_';
}

// Is the + or - at p the sign of an exponent (1e-5, 1.0x+3ff)?
bool exponent_sign(const char* b, const char* p, const char* e) {
    if (p - b < 2 || p + 1 >= e) return false;
    char before = p[-1];
    if (before == 'e' || before == 'E' || before == 'd' || before == 'D') {
        if (!std::isdigit(static_cast<unsigned char>(p[1]))) return false;
        char bb = p[-2];
        if (!std::isdigit(static_cast<unsigned char>(bb)) && bb != '.') return false;
        const char* q = p - 2;
        while (q >= b && (std::isdigit(static_cast<unsigned char>(*q)) || *q == '.')) q--;
        return q < b || !isnamec(static_cast<unsigned char>(*q));
    }
    if (before == 'x' || before == 'X') {
        if (!std::isxdigit(static_cast<unsigned char>(p[1]))) return false;
        const char* q = p - 2;
        while (q >= b && (std::isxdigit(static_cast<unsigned char>(*q)) || *q == '.')) q--;
        // what stands left of the point must be a single 0 or 1
        const char* first = q + 1;
        if (first >= p - 1 || (*first != '0' && *first != '1')) return false;
        if (first + 1 < p - 1 && first[1] != '.') return false;
        return q < b || !isnamec(static_cast<unsigned char>(*q));
    }
    return false;
}

// ---- the span compiler --------------------------------------------------------

void span(const char* b, const char* e);
void primary(const char* b, const char* e);

struct OpRow {
    const char* text;
    int16_t nop, sop; // sop 0: no string form
};
constexpr OpRow optable[] = {
    {"|", OP_OR, 0},       {"&", OP_AND, 0},       {"==", OP_EQ, OP_SEQ}, {">=", OP_GE, OP_SGE},
    {"<=", OP_LE, OP_SLE}, {"<", OP_LT, OP_SLT},   {">", OP_GT, OP_SGT},  {"!=", OP_NE, OP_SNE},
    {"~=", OP_NE, OP_SNE}, {"+", OP_ADD, OP_SCAT}, {"-", OP_SUB, 0},      {"*", OP_MUL, 0},
    {"/", OP_DIV, 0},
};
constexpr int NROWS = sizeof optable / sizeof optable[0];
static_assert(optable[9].text[0] == '+' && optable[10].text[0] == '-');
enum { AT_POW = NROWS, AT_KRON, AT_COLJOIN, AT_ROWJOIN, AT_N };

// The rightmost place of every operator in [b, e) at depth zero outside
// quotes, in one pass; never the first or the last character. A + or - is
// taken only when it follows no other operator and is no exponent's sign.
void scan_all(const char* b, const char* e, const char* at[AT_N]) {
    for (int k = 0; k < AT_N; k++) at[k] = nullptr;
    int depth = 0;
    for (const char* p = b; p < e;) {
        const char* q = skip_quote(p, e);
        if (!q) return;
        if (q != p) {
            p = q;
            continue;
        }
        char c = *p;
        if (c == '(' || c == '[') {
            depth++;
        } else if (c == ')' || c == ']') {
            depth--;
        } else if (depth == 0 && p > b && p <= e - 2) {
            switch (c) {
            case '^': at[AT_POW] = p; break;
            case '#': at[AT_KRON] = p; break;
            case '\\': at[AT_COLJOIN] = p; break;
            case ',': at[AT_ROWJOIN] = p; break;
            case '+':
            case '-': {
                const char* k = p - 1;
                while (k > b && *k == ' ') k--;
                if (std::strchr("-*/^#", *k) || exponent_sign(b, p, e)) break;
                at[c == '+' ? 9 : 10] = p;
                break;
            }
            default:
                for (int r = 0; r < NROWS; r++) {
                    const char* t = optable[r].text;
                    if (c == t[0] && (!t[1] || p[1] == t[1])) at[r] = p;
                }
            }
        }
        p++;
    }
}

void matrix_binary(int op) {
    // both sides as matrices
    int r = poptype(), l = poptype();
    (void)r, (void)l;
    emit(OP_MBIN);
    emit(op);
    pushtype(T_MAT);
}

void unary(const char* b, const char* e) {
    char c = *b;
    span(b + 1, e);
    if (c == '-') {
        int t = poptype();
        if (t == T_NUM) {
            emit(OP_NEG);
            pushtype(T_NUM);
        } else if (t == T_MAT) {
            if (!cs.matrix_mode) failerr(509);
            emit(OP_MNEG);
            pushtype(T_MAT);
        } else {
            failerr(109);
        }
    } else {
        popcheck(T_NUM);
        emit(OP_NOT);
        pushtype(T_NUM);
    }
}

// Each level of splitting emits at least one word, so a nesting deeper than
// the program can hold is too long; the cap keeps the native stack safe.
int span_depth = 0;

void span_inner(const char* b, const char* e);
void span(const char* b, const char* e) {
    if (span_depth > EXP_CODELEN) failerr(130);
    span_depth++;
    span_inner(b, e);
    span_depth--;
}

void span_inner(const char* b, const char* e) {
    trim(b, e);
    if (b >= e) failerr(198);
    // 1. enclosing parentheses or brackets
    bool stripped_paren = false;
    while (b < e && (*b == '(' || *b == '[')) {
        const char* c = match_close(b, e);
        if (c != e - 1) break;
        if (*b == '(') stripped_paren = true;
        b++, e--;
        trim(b, e);
        if (b >= e) failerr(198);
    }
    if (stripped_paren && cs.matrix_mode && !cs.row_flag) {
        cs.row_flag = true;
        span(b, e);
        cs.row_flag = false;
        return;
    }
    const char* at[AT_N];
    scan_all(b, e, at);
    // 2. row and column joins
    if (cs.row_flag) {
        for (const char* op : {"\\", ","}) {
            if (const char* p = at[*op == ',' ? AT_ROWJOIN : AT_COLJOIN]) {
                bool save = cs.row_flag;
                cs.row_flag = false;
                span(b, p);
                if (toptype() != T_MAT) emit(OP_MWRAP), poptype(), pushtype(T_MAT);
                span(p + 1, e);
                if (toptype() != T_MAT) emit(OP_MWRAP), poptype(), pushtype(T_MAT);
                cs.row_flag = save;
                poptype(), poptype();
                emit(*op == '\\' ? OP_MCOL : OP_MROW);
                pushtype(T_MAT);
                return;
            }
        }
    }
    // 3. the operator table
    for (int ri = 0; ri < NROWS; ri++) {
        const OpRow& row = optable[ri];
        const char* p = at[ri];
        if (!p) continue;
        span(b, p);
        span(p + std::strlen(row.text), e);
        int r = toptype();
        int l = cs.ntypes >= 2 ? cs.types[cs.ntypes - 2] : -1;
        if (l == T_MAT || r == T_MAT) {
            if (!cs.matrix_mode) failerr(509);
            matrix_binary(row.nop);
        } else if (r == T_STR && row.sop) {
            popcheck(T_STR);
            popcheck(T_STR);
            emit(row.sop);
            pushtype(row.sop == OP_SCAT ? T_STR : T_NUM);
        } else {
            popcheck(T_NUM);
            popcheck(T_NUM);
            emit(row.nop);
            pushtype(T_NUM);
        }
        return;
    }
    // 4. Kronecker product
    if (cs.matrix_mode) {
        if (const char* p = at[AT_KRON]) {
            span(b, p);
            span(p + 1, e);
            popcheck(T_MAT);
            popcheck(T_MAT);
            emit(OP_MKRON);
            pushtype(T_MAT);
            return;
        }
    }
    // 5. leading not and minus, from version 5 on
    if (vernum > 499 && (*b == '!' || *b == '~' || *b == '-')) return unary(b, e);
    // 6. power, chaining to the left
    if (const char* p = at[AT_POW]) {
        span(b, p);
        span(p + 1, e);
        int r = poptype(), l = poptype();
        if (r == T_MAT || l == T_MAT) {
            if (!cs.matrix_mode) failerr(509);
            emit(OP_MBIN);
            emit(OP_POW);
            pushtype(T_MAT);
            return;
        }
        if (r != T_NUM || l != T_NUM) failerr(109);
        emit(OP_POW);
        pushtype(T_NUM);
        return;
    }
    // 7. the old place of not and minus
    if (vernum <= 499 && (*b == '!' || *b == '~' || *b == '-')) return unary(b, e);
    // 8. transpose
    if (cs.matrix_mode && e - b > 1 && e[-1] == '\'' && e[-2] != '"') {
        span(b, e - 1);
        if (toptype() == T_MAT) emit(OP_MTRANS);
        return;
    }
    primary(b, e);
}

// ---- primaries ------------------------------------------------------------------

std::string text_of(const char* b, const char* e) {
    return std::string(b, e);
}

void number(const char* b, const char* e) {
    char buf[80];
    if (e - b >= static_cast<ptrdiff_t>(sizeof buf)) failerr(198);
    std::memcpy(buf, b, e - b);
    buf[e - b] = 0;
    double v;
    if (cnvstoz(buf, &v)) failerr(198);
    pushconst(v);
}

// A quoted string filling [b, e) exactly: pushes it; false when [b, e) is
// not one quoted string.
bool quoted(const char* b, const char* e, std::string* out) {
    const char* q = skip_quote(b, e);
    if (!q || q == b || q != e) return false;
    if (*b == '"')
        out->assign(b + 1, e - 1);
    else
        out->assign(b + 2, e - 2);
    return true;
}

// Splits the argument text [b, e) at top-level commas.
struct Arg {
    const char* b;
    const char* e;
};
int split_args(const char* b, const char* e, Arg* args, int maxargs) {
    trim(b, e);
    if (b >= e) return 0;
    int n = 0, depth = 0;
    const char* start = b;
    for (const char* p = b; p < e;) {
        const char* q = skip_quote(p, e);
        if (!q) failerr(198);
        if (q != p) {
            p = q;
            continue;
        }
        if (*p == '(' || *p == '[')
            depth++;
        else if (*p == ')' || *p == ']')
            depth--;
        else if (*p == ',' && depth == 0) {
            if (n >= maxargs) failerr(130);
            args[n++] = {start, p};
            start = p + 1;
        }
        p++;
    }
    if (n >= maxargs) failerr(130);
    args[n++] = {start, e};
    return n;
}

[[noreturn]] void not_yet(const std::string& name) {
    failmsg(199, "%s() is not available yet\n", name.c_str());
}

void compile_args_reverse(Arg* a, int n) {
    for (int k = n - 1; k >= 0; k--) span(a[k].b, a[k].e);
}

void variable(const std::string& name, int v) {
    bool str = isstrtype(typlist[v - 1]);
    emit(str ? OP_SVAR : OP_VAR);
    emit(v);
    pushtype(str ? T_STR : T_NUM);
}

// Variable number of name, 0 when there is none (abbreviations allowed).
int findvariable(const std::string& name) {
    if (name.find('~') != std::string::npos) {
        int v = genfindvar(name.c_str());
        if (v < 0) fail(-v);
        return v;
    }
    if (chkname(name.c_str(), 0)) return 0;
    int v = korvu_findvar(name.c_str(), 11, 0);
    if (v < 0) fail(-v);
    return v > nvar ? 0 : v;
}

double date_literal_or_fail(char letter, const char* b, const char* e) {
    double v = dtranslate(letter, b, e);
    if (xmis(v)) {
        std::string t = text_of(b, e);
        fail(errorf(198, "%c(%s) invalid\n", letter, t.c_str()));
    }
    return v;
}

void result_store(char letter, const char* b, const char* e) {
    std::string name = text_of(b, e);
    while (!name.empty() && name.back() == ' ') name.pop_back();
    while (!name.empty() && name.front() == ' ') name.erase(0, 1);
    double num = misval;
    char str[EXP_STRMAX + 1] = "";
    int kind = 0;
    if (letter == 'e' && name == "sample") {
        // the marker variable, or 0 without estimates
        int v = exphooks.esample ? exphooks.esample() : 0;
        if (v > 0) return variable(varname(v), v);
        return pushconst(0);
    }
    if (letter == 'c')
        kind = exphooks.cfcn ? exphooks.cfcn(name.c_str(), &num, str) : 0;
    else
        kind = exphooks.rfcn ? exphooks.rfcn(letter, name.c_str(), &num, str) : 0;
    if (kind < 0) failerr(-kind); // a matrix result: 509
    if (kind == 2) return pushsconst(str, std::strlen(str));
    if (kind == 1) return pushconst(num);
    if (letter == 'c') {
        fail(errorf(198, "c(%s) undefined\n", name.c_str()));
    }
    pushconst(misval); // an absent r(), e() or s() item is missing
}

void function_call(const std::string& name, const char* ab, const char* ae);
void matrix_number(const std::string& text);

void subscripted(const std::string& name, const char* ib, const char* ie) {
    if (name == "_b" || name == "_se") {
        std::string inner = text_of(ib, ie);
        double v;
        if (!exphooks.coef) failmsg(111, "%s[%s] not found\n", name.c_str(), inner.c_str());
        if (int rc = exphooks.coef(name == "_se", inner.c_str(), &v)) fail(rc);
        return pushconst(v);
    }
    int v = findvariable(name);
    if (!v && !cs.syntax_only && exphooks.matrix_value && exphooks.matrix_find &&
        exphooks.matrix_find(name.c_str()))
        return matrix_number(name + "[" + text_of(ib, ie) + "]");
    if (!v) {
        if (cs.syntax_only) {
            span(ib, ie);
            popcheck(T_NUM);
            return pushconst(misval);
        }
        fail(gnrnotfound(name.c_str()));
    }
    span(ib, ie);
    popcheck(T_NUM);
    bool str = isstrtype(typlist[v - 1]);
    emit(str ? OP_SVARSUB : OP_VARSUB);
    emit(v);
    pushtype(str ? T_STR : T_NUM);
}

// A number-valued matrix expression, worked out now by the matrix store;
// the compiler's own state is kept across the call, which may compile.
void matrix_number(const std::string& text) {
    CompileState saved = cs;
    int saved_depth = span_depth;
    double v;
    int rc = exphooks.matrix_value(text.data(), text.data() + text.size(), &v);
    cs = saved;
    span_depth = saved_depth;
    if (rc) fail(rc);
    pushconst(v);
}

void name_alone(const std::string& name) {
    if (name == "_n") return emit(OP_OBSN), pushtype(T_NUM);
    if (name == "_N") return emit(OP_OBSNN), pushtype(T_NUM);
    if (name == "_pi") return pushconst(M_PI);
    if (name == "_rc") return emit(OP_RC), pushtype(T_NUM);
    if (name.find('.') != std::string::npos) {
        if (!exphooks.rcp_compile) fail(error(6101));
        int id = exphooks.rcp_compile(name.c_str());
        if (id < 0) fail(-id);
        emit(OP_RCP);
        emit(id);
        pushtype(T_NUM);
        return;
    }
    if (!cs.algebra_only) {
        if (int v = findvariable(name)) return variable(name, v);
        if (char str[EXP_STRMAX + 1];
            exphooks.scalar_string && exphooks.scalar_string(name.c_str(), str))
            return pushsconst(str, std::strlen(str));
        if (exphooks.scalar_find) {
            int id = exphooks.scalar_find(name.c_str());
            if (id >= 0) {
                emit(OP_SCALAR);
                emit(id);
                pushtype(T_NUM);
                return;
            }
        }
        if (exphooks.matrix_find && exphooks.matrix_find(name.c_str())) {
            if (!cs.matrix_mode) failerr(509);
            pushsconst(name.c_str(), name.size());
            poptype();
            pushtype(T_MAT);
            return;
        }
    }
    if (const FnRow* f = findfn(name.c_str()); f && (f->desc >> 31 & 1) && fn_nargs(*f) == 0) {
        if (fn_op(*f) == 0) not_yet(name);
        function_call(name, nullptr, nullptr);
        return;
    }
    if (cs.syntax_only || cs.algebra_only) return pushconst(misval);
    fail(gnrnotfound(name.c_str()));
}

void primary(const char* b, const char* e) {
    trim(b, e);
    if (b >= e) failerr(198);
    unsigned char c = static_cast<unsigned char>(*b);
    if (std::isdigit(c) || c == '.') return number(b, e);
    std::string s;
    if (c == '"' || c == '`') {
        if (!quoted(b, e, &s)) failerr(198);
        return pushsconst(s.data(), s.size());
    }
    if (!isname1(c)) failerr(198);
    const char* p = b;
    while (p < e && (isnamec(static_cast<unsigned char>(*p)) || *p == '.' || *p == '~')) p++;
    std::string name(b, p);
    const char* r = p;
    while (r < e && *r == ' ') r++;
    if (r == e) return name_alone(name);
    if (*r == '(' || *r == '[') {
        const char* close = match_close(r, e);
        if (close != e - 1) failerr(198);
        if (*r == '[') return subscripted(name, r + 1, close);
        if (name.size() == 1 && std::strchr("crse", name[0]))
            return result_store(name[0], r + 1, close);
        if (name.size() == 1 && std::strchr("dwmqhy", name[0]))
            return pushconst(date_literal_or_fail(name[0], r + 1, close));
        return function_call(name, r + 1, close);
    }
    if (*r == ':') {
        const char* t = r + 1;
        while (t < e && *t == ' ') t++;
        if (!quoted(t, e, &s)) failerr(198);
        double v;
        if (!exphooks.vlsearch) failmsg(111, "value label %s not found\n", name.c_str());
        if (int rc = exphooks.vlsearch(name.c_str(), s.c_str(), &v)) fail(rc);
        return pushconst(v);
    }
    failerr(198);
}

// ---- function calls --------------------------------------------------------------

constexpr int MAXARGS = EXP_TYPESTACK;

void want_count(int n, int lo, int hi) {
    if (n < lo || n > hi) failerr(198);
}

void function_call(const std::string& name, const char* ab, const char* ae) {
    std::vector<Arg> args(ab ? MAXARGS + 1 : 1);
    int n = ab ? split_args(ab, ae, args.data(), MAXARGS) : 0;
    Arg* a = args.data();
    const char* nm = name.c_str();

    auto num1 = [&](int op) {
        want_count(n, 1, 1);
        span(a[0].b, a[0].e);
        popcheck(T_NUM);
        emit(op);
        pushtype(T_NUM);
    };
    auto konst = [&](double v) {
        want_count(n, 0, 0);
        pushconst(v);
    };

    // names with code of their own
    if (name == "sum") {
        want_count(n, 1, 1);
        span(a[0].b, a[0].e);
        popcheck(T_NUM);
        ExpObj* o = cs.obj;
        if (o->n_sums + 1 >= EXP_NSUMS) failmsg(130, "Too many SUMs\n");
        o->n_sums++;
        emit(OP_SUM);
        emit(o->n_sums);
        pushtype(T_NUM);
        return;
    }
    if (name == "cond") {
        want_count(n, 3, 4);
        compile_args_reverse(a, n);
        popcheck(T_NUM);
        int ta = poptype(), tb = poptype();
        if (ta != tb || ta == T_MAT) failerr(109);
        if (n == 4 && poptype() != ta) failerr(109);
        if (ta == T_STR)
            emit(n == 4 ? OP_SCOND4 : OP_SCOND);
        else
            emit(n == 4 ? OP_COND4 : OP_COND);
        pushtype(ta);
        return;
    }
    if (name == "substr") {
        want_count(n, 3, 3);
        compile_args_reverse(a, n);
        popcheck(T_STR);
        popcheck(T_NUM);
        popcheck(T_NUM);
        emit(OP_SUBSTR);
        pushtype(T_STR);
        return;
    }
    if (name == "subinstr" || name == "subinword") {
        want_count(n, 4, 4);
        compile_args_reverse(a, n);
        popcheck(T_STR);
        popcheck(T_STR);
        popcheck(T_STR);
        popcheck(T_NUM);
        emit(OP_SUBINSTR);
        emit(name == "subinword");
        pushtype(T_STR);
        return;
    }
    if (name == "min" || name == "max") {
        if (n < 1) failerr(198);
        compile_args_reverse(a, n);
        for (int k = 0; k < n; k++) popcheck(T_NUM);
        emit(name == "min" ? OP_MIN : OP_MAX);
        emit(n);
        pushtype(T_NUM);
        return;
    }
    if (name == "round") {
        want_count(n, 1, 2);
        compile_args_reverse(a, n);
        for (int k = 0; k < n; k++) popcheck(T_NUM);
        emit(OP_ROUND);
        emit(n);
        pushtype(T_NUM);
        return;
    }
    if (name == "inlist") {
        if (n < 2) failerr(198);
        compile_args_reverse(a, n);
        int t = toptype();
        if (t == T_MAT) failerr(109);
        for (int k = 0; k < n; k++) popcheck(t);
        emit(t == T_STR ? OP_SINLIST : OP_INLIST);
        emit(n);
        pushtype(T_NUM);
        return;
    }
    if (name == "inrange" || name == "twithin") {
        want_count(n, 3, 3);
        compile_args_reverse(a, n);
        for (int k = 0; k < 3; k++) popcheck(T_NUM);
        emit(name == "inrange" ? OP_INRANGE : OP_TWITHIN);
        pushtype(T_NUM);
        return;
    }
    if (name == "missing") {
        if (cs.in_missing) failmsg(198, "missing() may not be nested within missing()\n");
        if (n < 1) failerr(198);
        cs.in_missing++;
        for (int k = 0; k < n; k++) {
            span(a[k].b, a[k].e);
            int t = poptype();
            if (t == T_MAT) failerr(109);
            emit(t == T_STR ? OP_SISEMPTY : OP_ISMISS);
            pushtype(T_NUM);
            if (k) {
                popcheck(T_NUM), popcheck(T_NUM);
                emit(OP_OR);
                pushtype(T_NUM);
            }
        }
        cs.in_missing--;
        return;
    }
    if (name == "plural") {
        want_count(n, 2, 3);
        compile_args_reverse(a, n);
        popcheck(T_NUM);
        popcheck(T_STR);
        if (n == 3) popcheck(T_STR);
        emit(OP_PLURAL);
        emit(n == 3);
        pushtype(T_STR);
        return;
    }
    if (name == "string" || name == "strofreal") {
        want_count(n, 1, 2);
        compile_args_reverse(a, n);
        popcheck(T_NUM);
        if (n == 2) popcheck(T_STR);
        emit(OP_STRING);
        emit(n == 2);
        pushtype(T_STR);
        return;
    }
    if (name == "word" || name == "abbrev") {
        want_count(n, 2, 2);
        compile_args_reverse(a, n);
        popcheck(T_STR);
        popcheck(T_NUM);
        emit(name == "word" ? OP_WORD : OP_ABBREV);
        pushtype(T_STR);
        return;
    }
    if (name == "index") {
        want_count(n, 2, 2);
        compile_args_reverse(a, n);
        popcheck(T_STR);
        popcheck(T_STR);
        emit(OP_STRPOS);
        pushtype(T_NUM);
        return;
    }
    static constexpr const char* datefns[] = {"date",      "daily",      "weekly", "monthly",
                                              "quarterly", "halfyearly", "yearly"};
    for (int k = 0; k < 7; k++)
        if (name == datefns[k]) {
            want_count(n, 2, 3);
            compile_args_reverse(a, n);
            popcheck(T_STR);
            popcheck(T_STR);
            if (n == 3) popcheck(T_NUM);
            emit(OP_SDATE);
            emit((k == 0 ? 1 : k) * 2 + (n == 3));
            pushtype(T_NUM);
            return;
        }
    if (name == "lnfact") return num1(OP_LNFACT);
    static constexpr const char* byfns[] = {"_by", "_bylastcall", "_byindex", "_byn1", "_byn2"};
    for (int k = 0; k < 5; k++)
        if (name == byfns[k]) {
            want_count(n, 0, 0);
            emit(OP_BY);
            emit(k);
            pushtype(T_NUM);
            return;
        }
    if (name == "byteorder") return konst(2); // low byte first
    if (name == "_caller") return konst(vernum / 100.0);
    if (name == "has_eprop") {
        want_count(n, 1, 1);
        return pushconst(0);
    }
    if (name == "scalar") {
        want_count(n, 1, 1);
        const char* sb = a[0].b;
        const char* se = a[0].e;
        trim(sb, se);
        std::string sname(sb, se);
        if (char str[EXP_STRMAX + 1];
            exphooks.scalar_string && exphooks.scalar_string(sname.c_str(), str))
            return pushsconst(str, std::strlen(str));
        int id = exphooks.scalar_find ? exphooks.scalar_find(sname.c_str()) : -1;
        if (id < 0) failmsg(111, "scalar %s not found\n", sname.c_str());
        emit(OP_SCALAR);
        emit(id);
        pushtype(T_NUM);
        return;
    }
    struct NamedConst {
        const char* name;
        double value;
    };
    static constexpr NamedConst consts[] = {
        {"maxbyte", maxbyte},        {"minbyte", minbyte},        {"maxint", maxint},
        {"minint", minint},          {"maxlong", maxlong},        {"minlong", minlong},
        {"maxfloat", max_kvfloat},   {"minfloat", min_kvfloat},   {"epsfloat", eps_kvfloat},
        {"maxdouble", max_kvdouble}, {"mindouble", min_kvdouble}, {"epsdouble", eps_kvdouble},
    };
    for (const NamedConst& k : consts)
        if (name == k.name) return konst(k.value);
    static constexpr const char* matrixnums[] = {
        "el",       "matrix", "rowsof",      "colsof",     "trace",   "det",
        "diag0cnt", "issym",  "issymmetric", "matmissing", "rownumb", "colnumb"};
    for (const char* m : matrixnums)
        if (name == m && exphooks.matrix_value) {
            if (cs.syntax_only) return pushconst(misval);
            return matrix_number(name + "(" + (ab ? text_of(ab, ae) : "") + ")");
        }
    static constexpr const char* matrixfns[] = {"rownumb", "colnumb", "matrix",
                                                "sweep",   "nullmat", "mreldif"};
    for (const char* m : matrixfns)
        if (name == m) not_yet(name);
    // the normal density and its log under their several names, and the old
    // name of the inverse normal: one argument each
    static constexpr struct {
        const char* name;
        int op;
    } distfns[] = {{"normd", OP_NORMDEN},         {"normden", OP_NORMDEN},
                   {"lnnormalden", OP_LNNORMDEN}, {"lnormalden", OP_LNNORMDEN},
                   {"lnnormald", OP_LNNORMDEN},   {"lnormald", OP_LNNORMDEN},
                   {"invnorm", OP_INVNORMAL}};
    for (const auto& d : distfns)
        if (name == d.name) {
            if (n != 1) failerr(198);
            compile_args_reverse(a, n);
            popcheck(T_NUM);
            emit(d.op);
            pushtype(T_NUM);
            return;
        }

    // the table
    const FnRow* f = findfn(nm);
    if (!f) {
        fail(errorf(133, "Unknown function %s()\n", nm));
    }
    if (fn_op(*f) == 0) not_yet(name);
    int want = fn_nargs(*f);
    if (n != want) failerr(198);
    compile_args_reverse(a, n);
    bool sargs = f->desc >> 24 & 1;
    for (int k = 0; k < n; k++) {
        popcheck(sargs ? T_STR : T_NUM);
    }
    emit(fn_op(*f));
    pushtype(f->desc >> 32 & 1 ? T_STR : T_NUM);
}

// ---- isolating the text ---------------------------------------------------------

bool opchar(char c, bool comma_mode) {
    return c && std::strchr(comma_mode ? "|&=><+-*/^:!~#\\," : "|&=><+-*/^:!~#", c);
}

// The end of the expression that starts at b; rc in *rc when it is malformed.
const char* isolate(const char* b, int end_flag, bool comma_mode, int* rc) {
    *rc = 0;
    int par = 0, brk = 0;
    const char* p = b;
    const char* lastnb = nullptr;
    while (*p) {
        if (*p == '"' || (*p == '`' && p[1] == '"')) {
            const char* q = skip_quote(p, p + std::strlen(p));
            if (!q) {
                *rc = errorf(198, "%s quotes\n", b);
                return p;
            }
            lastnb = q - 1;
            p = q;
            continue;
        }
        char c = *p;
        if (c == '(') {
            par++;
        } else if (c == '[') {
            brk++;
        } else if (c == ')' || c == ']') {
            int& d = c == ')' ? par : brk;
            if (d == 0) {
                if (c == ']' && end_flag && par == 0) return p;
                *rc = errorf(198, "%.*s ')' or ']'\n", static_cast<int>(p - b + 1), b);
                return p;
            }
            d--;
        } else if (par == 0 && brk == 0) {
            if ((c == ',' && !comma_mode) || c == '{' || c == '}') return p;
            if (c == '=' && p[1] != '=' &&
                !(lastnb && lastnb == p - 1 && std::strchr("=<>!~", p[-1])))
                return p;
            if (c == ' ') {
                const char* q = p;
                while (*q == ' ') q++;
                if (!*q) return p;
                if (lastnb && !opchar(*lastnb, comma_mode) && !opchar(*q, comma_mode)) return p;
                p = q;
                continue;
            }
        }
        if (c != ' ') lastnb = p;
        p++;
    }
    if (par || brk) *rc = error(198);
    return p;
}

int compile_range(ExpObj* obj, const char* b, const char* e, int wanted, int syntax_only) {
    if (pool_clock != sysclock) {
        initialize_compexp_shared();
        pool_clock = sysclock;
    }
    zapexp(obj);
    obj->text_begin = b;
    obj->text_end = e;
    cs.obj = obj;
    cs.ntypes = cs.nstr = cs.nmat = 0;
    cs.matrix_mode = wanted == 4 || wanted == 5;
    cs.row_flag = false;
    cs.syntax_only = syntax_only != 0;
    cs.in_missing = 0;
    span_depth = 0;
    int32_t save_nsystak = nsystak, save_nssystak = nssystak;
    try {
        span(b, e);
        if (cs.ntypes != 1) failerr(198);
        int t = cs.types[0];
        bool ok = (t == T_NUM && (wanted == 0 || wanted == 3 || wanted == 5)) ||
                  (t == T_STR && (wanted == 1 || wanted == 3)) ||
                  (t == T_MAT && (wanted == 4 || wanted == 5));
        if (!ok) failerr(109);
        obj->result_kind = t == T_NUM ? 0 : t == T_STR ? 1 : 4;
    } catch (const CompileFail& f) {
        zapexp(obj);
        nsystak = save_nsystak, nssystak = save_nssystak;
        cs.algebra_only = false;
        return f.rc ? f.rc : 198;
    }
    cs.algebra_only = false;
    return 0;
}

int compile_tokens(ExpObj* obj, int wanted, int end_flag, int syntax_only, bool comma_mode) {
    char* start = wheretok();
    if (!start) {
        zapexp(obj);
        return error(198);
    }
    while (*start == ' ') start++;
    int rc;
    const char* end = isolate(start, end_flag, comma_mode, &rc);
    if (rc) {
        zapexp(obj);
        return rc;
    }
    TokPos after{const_cast<char*>(end), start};
    resettok(&after);
    return compile_range(obj, start, end, wanted, syntax_only);
}

} // namespace

int compexp(ExpObj* obj, int wanted, int end_flag, int syntax_only) {
    cs.algebra_only = false;
    return compile_tokens(obj, wanted, end_flag, syntax_only, false);
}

int compmatexp(ExpObj* obj, int wanted, int end_flag, int syntax_only, int comma_ok) {
    cs.algebra_only = false;
    cs.comma_ok = comma_ok != 0;
    return compile_tokens(obj, wanted, end_flag, syntax_only, comma_ok != 0);
}

int compalgonly(ExpObj* obj, int wanted, int end_flag) {
    cs.algebra_only = true;
    return compile_tokens(obj, wanted, end_flag, 1, false);
}

int compexp_text(ExpObj* obj, const char* b, const char* e, int wanted, int syntax_only) {
    cs.algebra_only = false;
    return compile_range(obj, b, e, wanted, syntax_only);
}

double dtranslate(int kind, const char* start, const char* end) {
    std::string t(start, end);
    const char* order = kind == 'd'   ? "dmy"
                        : kind == 'w' ? "yw"
                        : kind == 'm' ? "ym"
                        : kind == 'q' ? "yq"
                        : kind == 'h' ? "yh"
                                      : "y";
    return stdate(t.c_str(), order);
}

} // namespace korvu
