// The expression evaluator: one pass over the program per observation
// (xeq), or one pass per block of observations with a tight loop per word
// (xeqblock). Both go through the helpers of exp_ops.h so their bits agree.
#include <algorithm>
#include <cstring>
#include <vector>

#include "data/area/storage.h"
#include "data/expr/exp_func.h"
#include "data/expr/exp_ops.h"
#include "data/expr/expr.h"
#include "kernel/errors/errors.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/cmdparse.h"
#include "output/spout.h"
#include "results/rng/rng.h"

namespace korvu {

namespace {

constexpr double zminlong = -2147483647.0, zmaxlong = 2147483620.0;

inline double cell(int v, int i) {
    return static_cast<unsigned>(i - 1) < static_cast<unsigned>(nobs) ? korvu_data(v, i) : misval;
}
// Observation x of the by-group (1-based within it), `.` outside.
inline double subcell(const ExpObj* o, int v, double x) {
    if (!(x >= zminlong && x <= zmaxlong)) return misval;
    int64_t k = static_cast<int64_t>(x) + o->nobss1 - 1;
    if (k < o->nobss1 || k > o->nobss2 || k < 1 || k > nobs) return misval;
    return korvu_data(v, static_cast<int>(k));
}
inline void subscell(const ExpObj* o, int v, double x, char* out) {
    out[0] = 0;
    if (!(x >= zminlong && x <= zmaxlong)) return;
    int64_t k = static_cast<int64_t>(x) + o->nobss1 - 1;
    if (k < o->nobss1 || k > o->nobss2 || k < 1 || k > nobs) return;
    skorvu_data(v, static_cast<int>(k), out);
}
inline double f_min(const double* top, int n) {
    double r = misval;
    for (int k = 0; k < n; k++) {
        double x = top[-k];
        if (!xmis(x) && (xmis(r) || x < r)) r = x;
    }
    return r;
}
inline double f_max(const double* top, int n) {
    double r = misval;
    for (int k = 0; k < n; k++) {
        double x = top[-k];
        if (!xmis(x) && (xmis(r) || x > r)) r = x;
    }
    return r;
}
inline double by_value(int which, int i) {
    if (exphooks.byfcn) return exphooks.byfcn(which, i);
    return which == 0 ? (byvar != 0 ? 1.0 : 0.0) : misval;
}

int cmpstr(const char* a, const char* b) {
    return std::strcmp(a, b);
}

// One run for observation i. Numeric result in *num; a string result is
// copied to str when not null.
void run(ExpObj* o, int i, double* num, char* str) {
    double ns[EXP_TYPESTACK + 2];
    char ss[EXP_MAXSTRINGS + 2][EXP_STRFRAME];
    char tmp[EXP_STRFRAME];
    int np = 0, sp = -1;
    ns[1] = misval;
    ss[0][0] = 0;
    if (i == o->nobs1)
        for (int k = 0; k <= o->n_sums; k++) o->accumulators[k] = 0;
    const int16_t* code = o->code;
    const int end = o->code_end;
    const bool modern = mvmodern;
    for (int w = 0; w <= end; w++) {
        int op = code[w];
        switch (op) {
            // the rows with a helper: the kind says how many numbers it takes
#define XEQ_UN(OP, F)                                                                              \
    case OP:                                                                                       \
        ns[np] = F(ns[np]);                                                                        \
        break;
#define XEQ_BIN(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        ns[np] = F(ns[np], ns[np + 1]);                                                            \
        break;
#define XEQ_CMP(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        ns[np] = F(ns[np], ns[np + 1], modern);                                                    \
        break;
#define XEQ_FN2(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        ns[np] = F(ns[np + 1], ns[np]);                                                            \
        break;
#define XEQ_FN3(OP, F)                                                                             \
    case OP:                                                                                       \
        np -= 2;                                                                                   \
        ns[np] = F(ns[np + 2], ns[np + 1], ns[np]);                                                \
        break;
#define XEQ_FN4(OP, F)                                                                             \
    case OP:                                                                                       \
        np -= 3;                                                                                   \
        ns[np] = F(ns[np + 3], ns[np + 2], ns[np + 1], ns[np]);                                    \
        break;
#define XEQ_HAND(OP, F)
#define XEQ_ROW(op, word, name, kind, F, ...) XEQ_##kind(op, F)
            KV_OPCODE_TABLE(XEQ_ROW)
#undef XEQ_ROW
#undef XEQ_UN
#undef XEQ_BIN
#undef XEQ_CMP
#undef XEQ_FN2
#undef XEQ_FN3
#undef XEQ_FN4
#undef XEQ_HAND
        case OP_CONST: ns[++np] = systak[code[++w] - 1]; break;
        case OP_VAR: ns[++np] = cell(code[++w], i); break;
        case OP_VARSUB: ns[np] = subcell(o, code[++w], ns[np]); break;
        case OP_OBSN: ns[++np] = i - o->nobss1 + 1; break;
        case OP_OBSNN: ns[++np] = o->nobss2 - o->nobss1 + 1; break;
        case OP_RC: ns[++np] = captrc; break;
        case OP_UNIFORM: ns[++np] = urnuni(); break;
        case OP_UNIFORM0: ns[++np] = strandom(); break;
        case OP_SUM: {
            int k = code[++w];
            double x = xmis(ns[np]) ? 0 : ns[np];
            o->accumulators[k] += x;
            ns[np] = o->accumulators[k];
            break;
        }
        case OP_GROUP: ns[np] = f_group(ns[np], i, o->nobs1, o->nobs2); break;
        case OP_MIN: {
            int n = code[++w];
            double r = f_min(ns + np, n);
            np -= n - 1;
            ns[np] = r;
            break;
        }
        case OP_MAX: {
            int n = code[++w];
            double r = f_max(ns + np, n);
            np -= n - 1;
            ns[np] = r;
            break;
        }
        case OP_ROUND:
            if (code[++w] == 2) {
                np--;
                ns[np] = f_round2(ns[np + 1], ns[np]);
            } else {
                ns[np] = f_round1(ns[np]);
            }
            break;
        case OP_INLIST: {
            int n = code[++w];
            double z = ns[np], r = 0;
            for (int k = 1; k < n; k++)
                if (n_eq(z, ns[np - k]) != 0) r = 1;
            np -= n - 1;
            ns[np] = r;
            break;
        }
        case OP_SCALAR: {
            int id = code[++w];
            ns[++np] = exphooks.scalar_value ? exphooks.scalar_value(id) : misval;
            break;
        }
        case OP_BY: ns[++np] = by_value(code[++w], i); break;
        case OP_RCP: {
            int id = code[++w];
            ns[++np] = exphooks.rcpxeq ? exphooks.rcpxeq(id, i) : misval;
            break;
        }
        // ---- strings
        case OP_SCONST: {
            const char* s = ssystak + code[++w];
            copytext(ss[++sp], EXP_STRFRAME, s);
            break;
        }
        case OP_SVAR: {
            int v = code[++w];
            sp++;
            if (static_cast<unsigned>(i - 1) < static_cast<unsigned>(nobs))
                skorvu_data(v, i, ss[sp]);
            else
                ss[sp][0] = 0;
            break;
        }
        case OP_SVARSUB: subscell(o, code[++w], ns[np--], ss[++sp]); break;
        case OP_SCAT: {
            size_t la = std::strlen(ss[sp - 1]);
            if (la < EXP_STRMAX) {
                size_t lb = std::strlen(ss[sp]);
                if (la + lb > EXP_STRMAX) lb = EXP_STRMAX - la;
                std::memcpy(ss[sp - 1] + la, ss[sp], lb);
                ss[sp - 1][la + lb] = 0;
            }
            sp--;
            break;
        }
        case OP_SEQ:
        case OP_SNE:
        case OP_SGE:
        case OP_SLE:
        case OP_SLT:
        case OP_SGT: {
            int c = cmpstr(ss[sp - 1], ss[sp]);
            sp -= 2;
            bool r = op == OP_SEQ   ? c == 0
                     : op == OP_SNE ? c != 0
                     : op == OP_SGE ? c >= 0
                     : op == OP_SLE ? c <= 0
                     : op == OP_SLT ? c < 0
                                    : c > 0;
            ns[++np] = r ? 1.0 : 0.0;
            break;
        }
        case OP_LENGTH: ns[++np] = static_cast<double>(std::strlen(ss[sp--])); break;
        case OP_REAL: ns[++np] = s_real(ss[sp--]); break;
        case OP_STRPOS:
            ns[++np] = s_strpos(ss[sp], ss[sp - 1]);
            sp -= 2;
            break;
        case OP_INDEXNOT:
            ns[++np] = s_indexnot(ss[sp], ss[sp - 1]);
            sp -= 2;
            break;
        case OP_MATCH:
            ns[++np] = s_match(ss[sp], ss[sp - 1]);
            sp -= 2;
            break;
        case OP_REGEXM:
            ns[++np] = s_regexm(ss[sp], ss[sp - 1]);
            sp -= 2;
            break;
        case OP_WORDCOUNT: ns[++np] = s_wordcount(ss[sp--]); break;
        case OP_CLS:
            ns[++np] = exphooks.clsnum ? exphooks.clsnum(ss[sp]) : misval;
            sp--;
            break;
        case OP_SCLS:
            tmp[0] = 0;
            if (exphooks.clsstr) exphooks.clsstr(ss[sp], tmp);
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_SISEMPTY: ns[++np] = ss[sp--][0] == 0 ? 1.0 : 0.0; break;
        case OP_SINLIST: {
            int n = code[++w];
            double r = 0;
            for (int k = 1; k < n; k++)
                if (!std::strcmp(ss[sp], ss[sp - k])) r = 1;
            sp -= n;
            ns[++np] = r;
            break;
        }
        case OP_SDATE: {
            int arg = code[++w];
            if (arg & 1) np--; // the top year is read and not used
            ns[++np] = s_sdate(ss[sp], ss[sp - 1], arg >> 1);
            sp -= 2;
            break;
        }
#define S1(OP, F)                                                                                  \
    case OP:                                                                                       \
        F(ss[sp], tmp);                                                                            \
        copytext(ss[sp], EXP_STRFRAME, tmp);                                                       \
        break;
            S1(OP_LOWER, s_lower)
            S1(OP_UPPER, s_upper)
            S1(OP_PROPER, s_proper)
            S1(OP_ITRIM, s_itrim)
            S1(OP_LTRIM, s_ltrim)
            S1(OP_RTRIM, s_rtrim)
            S1(OP_TRIM, s_trim)
            S1(OP_REVERSE, s_reverse)
            S1(OP_STRSUBDP, s_strsubdp)
#undef S1
        case OP_SUBSTR:
            s_substr(ss[sp], ns[np], ns[np - 1], tmp);
            np -= 2;
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_SUBINSTR:
            s_subinstr(ss[sp], ss[sp - 1], ss[sp - 2], ns[np--], code[++w], tmp);
            sp -= 2;
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_WORD:
            s_word(ss[sp], ns[np--], tmp);
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_ABBREV:
            s_abbrev(ss[sp], ns[np--], tmp);
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_CHAR: s_char(ns[np--], ss[++sp]); break;
        case OP_REGEXS: s_regexs(ns[np--], ss[++sp]); break;
        case OP_REGEXR:
            s_regexr(ss[sp], ss[sp - 1], ss[sp - 2], tmp);
            sp -= 2;
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_STRING:
            if (code[++w]) {
                s_string(ns[np--], ss[sp], tmp);
                copytext(ss[sp], EXP_STRFRAME, tmp);
            } else {
                s_string(ns[np--], nullptr, ss[++sp]);
            }
            break;
        case OP_PLURAL:
            if (code[++w]) {
                s_plural(ns[np--], ss[sp], ss[sp - 1], tmp);
                sp--;
            } else {
                s_plural(ns[np--], ss[sp], nullptr, tmp);
            }
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        case OP_SCOND: {
            double c = ns[np--];
            copytext(tmp, sizeof tmp, c != 0 ? ss[sp] : ss[sp - 1]);
            sp--;
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        }
        case OP_SCOND4: {
            double c = ns[np--];
            const char* pick = xmis(c) ? ss[sp - 2] : c != 0 ? ss[sp] : ss[sp - 1];
            copytext(tmp, sizeof tmp, pick);
            sp -= 2;
            copytext(ss[sp], EXP_STRFRAME, tmp);
            break;
        }
        // ---- matrices: the matrix store evaluates these; here they yield `.`
        case OP_MBIN: w++; [[fallthrough]];
        case OP_MADD:
        case OP_MMUL:
        case OP_MROW:
        case OP_MCOL:
        case OP_MKRON:
            np--;
            ns[np] = misval;
            break;
        case OP_MNEG:
        case OP_MWRAP:
        case OP_MTRANS: break;
        default: break;
        }
    }
    *num = ns[1];
    if (str) {
        size_t n = strnlen(ss[0], EXP_STRMAX);
        std::memcpy(str, ss[0], n);
        str[n] = 0;
    }
}

void load_ranges(ExpObj* o) {
    o->nobs1 = korvu::nobs1;
    o->nobs2 = korvu::nobs2;
    o->nobss1 = korvu::nobss1;
    o->nobss2 = korvu::nobss2;
}

double finish(double r) {
    if (kv_fpeerror) {
        kv_fpeerror = 0;
        return misval;
    }
    return cleanres(r);
}

} // namespace

double xeqforby(ExpObj* obj, int i) {
    double r;
    kv_fpeerror = 0;
    run(obj, i, &r, nullptr);
    return finish(r);
}

double xeq(ExpObj* obj, int i) {
    load_ranges(obj);
    return xeqforby(obj, i);
}

char* sxeq(ExpObj* obj, int i, char* buf) {
    load_ranges(obj);
    double r;
    kv_fpeerror = 0;
    run(obj, i, &r, buf);
    kv_fpeerror = 0;
    return buf;
}

static int matrix_store_missing() {
    return errtext(199, "matrix expressions are not available yet\n");
}

int xeqmat_g(ExpObj* obj, const char* name, int namelen, double* out) {
    if (obj->result_kind == 0) {
        *out = xeq(obj, korvu::nobs1);
        return 0;
    }
    if (!exphooks.matrix_xeq) return matrix_store_missing();
    return exphooks.matrix_xeq(obj, name, namelen, out);
}

int xeqmat_mat(ExpObj* obj, const char* name, int namelen) {
    double v = misval;
    if (obj->result_kind == 0) {
        v = xeq(obj, korvu::nobs1);
        if (vernum < 800 && xmis(v)) return error(504);
    }
    if (!exphooks.matrix_xeq) return matrix_store_missing();
    return exphooks.matrix_xeq(obj, name, namelen, &v);
}

bool exp_draws_random(const ExpObj* o) {
    for (int w = 0; w <= o->code_end; w++) {
        int op = o->code[w];
        if (op == OP_UNIFORM || op == OP_UNIFORM0) return true;
        w += exp_operands(op);
    }
    return false;
}

bool exp_reads_other_obs(const ExpObj* o, int v) {
    for (int w = 0; w <= o->code_end; w++) {
        int op = o->code[w];
        if (op == OP_RCP) return true;
        if ((op == OP_VARSUB || op == OP_SVARSUB) && (v == 0 || o->code[w + 1] == v)) return true;
        w += exp_operands(op);
    }
    return false;
}

// ---- blocks ---------------------------------------------------------------------------

namespace {

constexpr int BLOCK = 256;
std::vector<double> block_scratch;

// Programs whose every opcode runs by blocks (the table says which); the
// deepest number stack in *depth, from the table's stack effects.
bool blockable(const ExpObj* o, int* depth) {
    if (o->result_kind != 0) return false;
    int np = 0, maxd = 1, draws = 0;
    for (int w = 0; w <= o->code_end; w++) {
        int op = o->code[w];
        const OpInfo& d = opinfo(op);
        if (!d.name || !d.block) return false; // strings, matrices, hooks: one at a time
        // one draw per observation in order: only a single draw per run
        // keeps that order when a block is filled column by column
        if (op == OP_UNIFORM && ++draws > 1) return false;
        int dn, ds;
        op_effect(op, d.operands ? o->code[w + 1] : 0, &dn, &ds);
        np += dn;
        maxd = std::max(maxd, np);
        w += d.operands;
    }
    *depth = maxd;
    return true;
}

// A run of cells of one column, decoded; in observation order the cells are
// contiguous and the loop is a plain conversion the compiler vectorises.
template <int T> void gather(double* c, int v, int i0, int m) {
    if (i0 >= 1 && i0 + m - 1 <= nobs) {
        if (!mapjperm) {
            constexpr int W = T == KV_DOUBLE ? 8 : T == KV_BYTE ? 1 : T == KV_INT ? 2 : 4;
            const uint8_t* col = colptr(v) + static_cast<int64_t>(i0 - 1) * W;
            if constexpr (T == KV_DOUBLE) {
                std::memcpy(c, col, static_cast<size_t>(m) * 8);
            } else {
                for (int j = 0; j < m; j++) c[j] = decode_cell(col + j * W, T);
            }
            return;
        }
        for (int j = 0; j < m; j++) c[j] = decode_cell(dtaptr(v, i0 + j), T);
        return;
    }
    for (int j = 0; j < m; j++) {
        int i = i0 + j;
        c[j] = static_cast<unsigned>(i - 1) < static_cast<unsigned>(nobs)
                   ? decode_cell(dtaptr(v, i), T)
                   : misval;
    }
}

void gather_any(double* c, int v, int i0, int m) {
    switch (typlist[v - 1]) {
    case KV_DOUBLE: return gather<KV_DOUBLE>(c, v, i0, m);
    case KV_FLOAT: return gather<KV_FLOAT>(c, v, i0, m);
    case KV_LONG: return gather<KV_LONG>(c, v, i0, m);
    case KV_INT: return gather<KV_INT>(c, v, i0, m);
    case KV_BYTE: return gather<KV_BYTE>(c, v, i0, m);
    default:
        for (int j = 0; j < m; j++) c[j] = cell(v, i0 + j);
    }
}

// The values of variable v for observations i0..i0+m-1: a double column in
// observation order is read where it lies; anything else is decoded into c.
const double* varcells(double* c, int v, int i0, int m) {
    if (typlist[v - 1] == KV_DOUBLE && !mapjperm && i0 >= 1 && i0 + m - 1 <= nobs)
        return reinterpret_cast<const double*>(colptr(v)) + (i0 - 1);
    gather_any(c, v, i0, m);
    return c;
}

// Stack slot k of a block: in[k] points at its values, either its own scratch
// column cols + k * BLOCK or a double column of the data read in place; a
// null in[k] is a value the same for every observation of the block, cv[k]
// (a constant, _N, _rc, a scalar), which the helpers take as a scalar and
// which is spread into the scratch column only where an opcode needs one.
struct Slots {
    const double* in[EXP_TYPESTACK + 2];
    double cv[EXP_TYPESTACK + 2];
    double* cols;
    int m;
    double* col(int k) const { return cols + static_cast<ptrdiff_t>(k) * BLOCK; }
    // slot k's values as an array
    const double* rd(int k) {
        if (!in[k]) {
            double* a = col(k);
            const double x = cv[k];
            for (int j = 0; j < m; j++) a[j] = x;
            in[k] = a;
        }
        return in[k];
    }
    // slot k's values in its own column, for the opcodes that work in place
    double* own(int k) {
        double* a = col(k);
        if (!in[k]) {
            const double x = cv[k];
            for (int j = 0; j < m; j++) a[j] = x;
        } else if (in[k] != a) {
            std::memcpy(a, in[k], static_cast<size_t>(m) * sizeof(double));
        }
        in[k] = a;
        return a;
    }
    // a one-argument helper on slot k
    template <class F> void un(int k, F f) {
        const double* x = in[k];
        if (!x) {
            cv[k] = f(cv[k]);
            return;
        }
        double* a = col(k);
        for (int j = 0; j < m; j++) a[j] = f(x[j]);
        in[k] = a;
    }
    // a two-argument helper on slots k (left) and k + 1 (right), into k
    template <class F> void bin(int k, F f) {
        const double *x = in[k], *y = in[k + 1];
        if (!x && !y) {
            cv[k] = f(cv[k], cv[k + 1]);
            return;
        }
        double* a = col(k);
        if (!y) {
            const double c = cv[k + 1];
            for (int j = 0; j < m; j++) a[j] = f(x[j], c);
        } else if (!x) {
            const double c = cv[k];
            for (int j = 0; j < m; j++) a[j] = f(c, y[j]);
        } else {
            for (int j = 0; j < m; j++) a[j] = f(x[j], y[j]);
        }
        in[k] = a;
    }
};

void run_block(ExpObj* o, int i0, int m, double* cols, double* out) {
    const int16_t* code = o->code;
    Slots S;
    S.cols = cols;
    S.m = m;
    int np = 0;
    auto konst = [&](double x) {
        np++;
        S.in[np] = nullptr;
        S.cv[np] = x;
    };
    auto push = [&]() {
        np++;
        S.in[np] = S.col(np);
        return S.col(np);
    };
    for (int w = 0; w <= o->code_end; w++) {
        int op = code[w];
        switch (op) {
#define BLK_UN(OP, F)                                                                              \
    case OP:                                                                                       \
        S.un(np, [](double x) { return F(x); });                                                   \
        break;
#define BLK_BIN(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        S.bin(np, [](double x, double y) { return F(x, y); });                                     \
        break;
#define BLK_CMP(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        if (mvmodern)                                                                              \
            S.bin(np, [](double x, double y) { return F(x, y, true); });                           \
        else                                                                                       \
            S.bin(np, [](double x, double y) { return F(x, y, false); });                          \
        break;
#define BLK_FN2(OP, F)                                                                             \
    case OP:                                                                                       \
        np--;                                                                                      \
        S.bin(np, [](double x, double y) { return F(y, x); });                                     \
        break;
#define BLK_FN3(OP, F)                                                                             \
    case OP: {                                                                                     \
        np -= 2;                                                                                   \
        const double *x = S.rd(np), *y = S.rd(np + 1), *z = S.rd(np + 2);                          \
        double* a = S.col(np);                                                                     \
        for (int j = 0; j < m; j++) a[j] = F(z[j], y[j], x[j]);                                    \
        S.in[np] = a;                                                                              \
        break;                                                                                     \
    }
#define BLK_FN4(OP, F)                                                                             \
    case OP: {                                                                                     \
        np -= 3;                                                                                   \
        const double *x = S.rd(np), *y = S.rd(np + 1), *z = S.rd(np + 2), *t = S.rd(np + 3);       \
        double* a = S.col(np);                                                                     \
        for (int j = 0; j < m; j++) a[j] = F(t[j], z[j], y[j], x[j]);                              \
        S.in[np] = a;                                                                              \
        break;                                                                                     \
    }
#define BLK_HAND(OP, F)
#define BLK_ROW(op, word, name, kind, F, ...) BLK_##kind(op, F)
            KV_OPCODE_TABLE(BLK_ROW)
#undef BLK_ROW
#undef BLK_UN
#undef BLK_BIN
#undef BLK_CMP
#undef BLK_FN2
#undef BLK_FN3
#undef BLK_FN4
#undef BLK_HAND
        case OP_CONST: konst(systak[code[++w] - 1]); break;
        case OP_VAR: {
            int v = code[++w];
            np++;
            S.in[np] = varcells(S.col(np), v, i0, m);
            break;
        }
        case OP_VARSUB: {
            int v = code[++w];
            double* a = S.own(np);
            for (int j = 0; j < m; j++) a[j] = subcell(o, v, a[j]);
            break;
        }
        case OP_OBSN: {
            double* a = push();
            for (int j = 0; j < m; j++) a[j] = i0 + j - o->nobss1 + 1;
            break;
        }
        case OP_OBSNN: konst(o->nobss2 - o->nobss1 + 1); break;
        case OP_RC: konst(captrc); break;
        case OP_UNIFORM: urnfill(push(), m); break;
        case OP_SCALAR: {
            int id = code[++w];
            konst(exphooks.scalar_value ? exphooks.scalar_value(id) : misval);
            break;
        }
        case OP_SUM: {
            int k = code[++w];
            double* a = S.own(np);
            for (int j = 0; j < m; j++) {
                if (i0 + j == o->nobs1) o->accumulators[k] = 0;
                o->accumulators[k] += xmis(a[j]) ? 0 : a[j];
                a[j] = o->accumulators[k];
            }
            break;
        }
        case OP_GROUP: {
            double* a = S.own(np);
            for (int j = 0; j < m; j++) a[j] = f_group(a[j], i0 + j, o->nobs1, o->nobs2);
            break;
        }
        case OP_MIN:
        case OP_MAX:
        case OP_INLIST: {
            int n = code[++w];
            int base = np - n + 1;
            const double* arg[EXP_TYPESTACK + 2];
            for (int k = 0; k < n; k++) arg[k] = S.rd(base + k);
            double tmp[EXP_TYPESTACK + 2];
            double* r = S.col(base);
            for (int j = 0; j < m; j++) {
                for (int k = 0; k < n; k++) tmp[k] = arg[k][j];
                const double* top = tmp + n - 1;
                if (op == OP_MIN)
                    r[j] = f_min(top, n);
                else if (op == OP_MAX)
                    r[j] = f_max(top, n);
                else {
                    double z = top[0], hit = 0;
                    for (int k = 1; k < n; k++)
                        if (n_eq(z, top[-k]) != 0) hit = 1;
                    r[j] = hit;
                }
            }
            np = base;
            S.in[np] = r;
            break;
        }
        case OP_ROUND:
            if (code[++w] == 2) {
                np--;
                S.bin(np, [](double x, double u) { return f_round2(u, x); });
            } else {
                S.un(np, [](double x) { return f_round1(x); });
            }
            break;
        default: break;
        }
    }
    if (!S.in[1]) {
        const double r = cleanres(S.cv[1]);
        for (int j = 0; j < m; j++) out[j] = r;
        return;
    }
    const double* r = S.in[1];
    for (int j = 0; j < m; j++) out[j] = cleanres(r[j]);
}

} // namespace

void xeqblock(ExpObj* obj, int from, int to, double* out) {
    load_ranges(obj);
    if (from > to) return;
    int depth;
    if (!blockable(obj, &depth)) {
        for (int i = from; i <= to; i++) out[i - from] = xeqforby(obj, i);
        return;
    }
    size_t need = static_cast<size_t>(depth + 1) * BLOCK;
    if (block_scratch.size() < need) block_scratch.resize(need);
    kv_fpeerror = 0;
    for (int i0 = from; i0 <= to; i0 += BLOCK) {
        int m = std::min(BLOCK, to - i0 + 1);
        run_block(obj, i0, m, block_scratch.data(), out + (i0 - from));
        if (kv_fpeerror) {
            for (int j = 0; j < m; j++) out[i0 - from + j] = misval;
            kv_fpeerror = 0;
        }
    }
}

} // namespace korvu
