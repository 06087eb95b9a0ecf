// Opcodes of compiled expressions: one table with a row per opcode, and the
// numeric operations behind them. The observation-at-a-time evaluator and the
// block evaluator both call the inline functions here, so the two give the
// same bits; the enum, the operand counts, the stack effects and the choice
// of what runs by blocks all come from the table.
#pragma once
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/formats/dates.h"
#include "results/distrib/distrib.h"

namespace korvu {

// Numeric helpers; `.` is misval and anything at or above it is missing.
// They are written without short-circuit tests so that a loop over a block
// of observations compiles to vector instructions; the results are the same.
inline bool xmis(double x) {
    return x >= misval;
}
// The arithmetic is done before the test (the result is then dropped for a
// missing operand), so that the compiler need not guard it by a branch.
inline double n_add(double a, double b) {
    double r = a + b;
    return (xmis(a) | xmis(b)) ? misval : r;
}
inline double n_sub(double a, double b) {
    double r = a - b;
    return (xmis(a) | xmis(b)) ? misval : r;
}
inline double n_mul(double a, double b) {
    double r = a * b;
    return (xmis(a) | xmis(b)) ? misval : r;
}
inline double n_div(double a, double b) {
    double r = a / b;
    return (xmis(a) | xmis(b) | (b == 0)) ? misval : r;
}
inline double kvpow(double a, double b) {
    return xmis(a) || xmis(b) ? misval : std::pow(a, b);
}
inline double n_and(double a, double b) {
    return ((a != 0) & (b != 0)) ? 1.0 : 0.0;
}
inline double n_or(double a, double b) {
    return ((a != 0) | (b != 0)) ? 1.0 : 0.0;
}
inline double n_not(double a) {
    return a == 0 ? 1.0 : 0.0;
}
inline double n_neg(double a) {
    return xmis(a) ? a : -a;
}
// Infinities and not-a-numbers (exponent field all ones) are exactly the
// values whose magnitude is not at most the largest finite double.
inline bool notfinite(double x) {
    return !(std::fabs(x) <= DBL_MAX);
}
// Comparison operand: infinities and not-a-numbers become `.`; under the old
// rules (modern false) every missing value is `.`.
inline double cmpv(double x, bool modern) {
    double y = notfinite(x) ? misval : x;
    return (!modern & (y >= misval)) ? misval : y;
}
inline double cmpval(double x) {
    return cmpv(x, mvmodern);
}
inline double c_eq(double a, double b, bool m) {
    return cmpv(a, m) == cmpv(b, m) ? 1.0 : 0.0;
}
inline double c_ne(double a, double b, bool m) {
    return cmpv(a, m) != cmpv(b, m) ? 1.0 : 0.0;
}
inline double c_ge(double a, double b, bool m) {
    return cmpv(a, m) >= cmpv(b, m) ? 1.0 : 0.0;
}
inline double c_le(double a, double b, bool m) {
    return cmpv(a, m) <= cmpv(b, m) ? 1.0 : 0.0;
}
inline double c_lt(double a, double b, bool m) {
    return cmpv(a, m) < cmpv(b, m) ? 1.0 : 0.0;
}
inline double c_gt(double a, double b, bool m) {
    return cmpv(a, m) > cmpv(b, m) ? 1.0 : 0.0;
}
inline double n_eq(double a, double b) {
    return c_eq(a, b, mvmodern);
}
// The result as it may reach data: infinities and not-a-numbers are `.`.
inline double cleanres(double x) {
    return notfinite(x) ? misval : x;
}

#define KV_MATH1(name, expr)                                                                       \
    inline double name(double x) {                                                                 \
        return xmis(x) ? misval : (expr);                                                          \
    }
KV_MATH1(f_abs, std::fabs(x))
KV_MATH1(f_log, std::log(x))
KV_MATH1(f_exp, std::exp(x))
KV_MATH1(f_sqrt, std::sqrt(x))
KV_MATH1(f_trunc, std::trunc(x))
KV_MATH1(f_atan, std::atan(x))
KV_MATH1(f_sin, std::sin(x))
KV_MATH1(f_cos, std::cos(x))
KV_MATH1(f_sign, x<0 ? -1.0 : x> 0 ? 1.0 : 0.0)
KV_MATH1(f_log10, std::log10(x))
KV_MATH1(f_tan, std::tan(x))
KV_MATH1(f_asin, std::asin(x))
KV_MATH1(f_acos, std::acos(x))
KV_MATH1(f_floor, std::floor(x))
KV_MATH1(f_ceil, std::ceil(x))
KV_MATH1(f_lngamma, stlgma(x))
KV_MATH1(f_tanh, std::tanh(x))
KV_MATH1(f_atanh, std::atanh(x))
KV_MATH1(f_logit, std::log(x / (1 - x)))
KV_MATH1(f_invlogit, 1 / (1 + std::exp(-x)))
KV_MATH1(f_cloglog, std::log(-std::log(1 - x)))
KV_MATH1(f_invcloglog, 1 - std::exp(-std::exp(x)))
KV_MATH1(f_lnfact, x < 0 ? misval : std::lgamma(std::floor(x) + 1))
#undef KV_MATH1

// float(): the value as a float variable would hold it.
inline double f_float(double x) {
    if (xmis(x)) return x;
    float f = static_cast<float>(x);
    if (!(std::fabs(f) <= 1.7014117331926443e38)) return misval; // beyond the float range
    return static_cast<double>(f);
}
// Two-sided t probability.
inline double f_tprob(double n, double t) {
    double v = xmis(t) ? misval : ttail(n, std::fabs(t));
    return xmis(v) ? misval : 2 * v;
}

inline double f_mod(double x, double y) {
    if (xmis(x) || xmis(y) || y <= 0) return misval;
    double r = x - y * std::floor(x / y);
    return r < 0 ? r + y : r;
}
inline double f_atan2(double y, double x) {
    return xmis(x) || xmis(y) ? misval : std::atan2(y, x);
}
inline double f_reldif(double x, double y) {
    return xmis(x) || xmis(y) ? misval : std::fabs(x - y) / (std::fabs(y) + 1);
}
double kvround(double x);
inline double f_round1(double x) {
    return kvround(x);
}
inline double f_round2(double x, double u) {
    if (xmis(x) || xmis(u)) return misval;
    if (u == 0) return x;
    return kvround(x / u) * u;
}
inline double f_chop(double x, double tol) {
    if (xmis(x) || xmis(tol)) return misval;
    double r = kvround(x);
    return std::fabs(r - x) < tol ? r : x;
}
double f_comb(double n, double k);
inline double f_clip(double x, double a, double b) {
    if (xmis(x)) return misval;
    if (!xmis(a) && x < a) return a;
    if (!xmis(b) && x > b) return b;
    return x;
}
inline double f_inrange(double x, double a, double b) {
    return (xmis(a) || x >= a) && (xmis(b) || x <= b) ? 1.0 : 0.0;
}
inline double f_twithin(double x, double a, double b) {
    return (xmis(a) || x > a) && (xmis(b) || x < b) ? 1.0 : 0.0;
}
inline double f_cond(double c, double a, double b) {
    return c != 0 ? a : b;
}
inline double f_cond4(double c, double a, double b, double m) {
    return xmis(c) ? m : c != 0 ? a : b;
}
inline double f_ismiss(double x) {
    return xmis(x) ? 1.0 : 0.0;
}
double f_autocode(double x, double n, double lo, double hi);
inline double f_group(double x, int i, int n1, int n2) {
    if (xmis(x) || x <= 0 || n2 <= n1) return misval;
    return std::trunc(((x - 0.000001) / (n2 - n1)) * (i - n1) + 1);
}

// Date functions: missing in, `.` out, as the date routines already do.
inline double f_dow(double x) {
    return datefn::dow(x);
}

// The instruction table. Each row: the opcode's enumerator and word, a short
// name, its kind, the helper behind it, the words of operand that follow it,
// what it takes from and leaves on the number stack and the string stack, how
// its operand changes that, whether it runs by blocks, and what it does.
//
// Kinds: UN a one-argument helper, F(top); BIN an operator, F(left, right);
// CMP a comparison, F(left, right, modern missing-value rules); FN2, FN3,
// FN4 functions, F(first, second, ...), the first argument on top (arguments
// are compiled from the last); HAND an opcode each evaluator handles by hand.
// Vary: VNONE the counts stand; VNUMS operand more numbers are taken; VSTRS
// operand more strings are taken; VDATE one more number when the operand is
// odd (a top year).
// clang-format off
#define KV_OPCODE_TABLE(X) \
    /* opcode        word  name          kind  helper           opd npop spop npsh spsh vary   blk  what */ \
    X(OP_OR,            1, "or",          BIN,  n_or,             0,  2,  0,  1,  0, VNONE, 1, "1 when either is non-zero (missing counts as non-zero)") \
    X(OP_AND,           2, "and",         BIN,  n_and,            0,  2,  0,  1,  0, VNONE, 1, "1 when both are non-zero (missing counts as non-zero)") \
    X(OP_EQ,            3, "eq",          CMP,  c_eq,             0,  2,  0,  1,  0, VNONE, 1, "1 when equal; infinities and not-a-numbers compare as .") \
    X(OP_NE,            4, "ne",          CMP,  c_ne,             0,  2,  0,  1,  0, VNONE, 1, "1 when not equal") \
    X(OP_GE,            5, "ge",          CMP,  c_ge,             0,  2,  0,  1,  0, VNONE, 1, "1 when left >= right; missing is above every number") \
    X(OP_LE,            6, "le",          CMP,  c_le,             0,  2,  0,  1,  0, VNONE, 1, "1 when left <= right") \
    X(OP_LT,            7, "lt",          CMP,  c_lt,             0,  2,  0,  1,  0, VNONE, 1, "1 when left < right") \
    X(OP_GT,            8, "gt",          CMP,  c_gt,             0,  2,  0,  1,  0, VNONE, 1, "1 when left > right") \
    X(OP_ADD,           9, "add",         BIN,  n_add,            0,  2,  0,  1,  0, VNONE, 1, "left + right; . when either is missing") \
    X(OP_SUB,          10, "sub",         BIN,  n_sub,            0,  2,  0,  1,  0, VNONE, 1, "left - right; . when either is missing") \
    X(OP_MUL,          11, "mul",         BIN,  n_mul,            0,  2,  0,  1,  0, VNONE, 1, "left * right; . when either is missing") \
    X(OP_POW,          12, "pow",         BIN,  kvpow,            0,  2,  0,  1,  0, VNONE, 1, "left ^ right; . when either is missing") \
    X(OP_DIV,          13, "div",         BIN,  n_div,            0,  2,  0,  1,  0, VNONE, 1, "left / right; . when either is missing or right is 0") \
    X(OP_NOT,          18, "not",         UN,   n_not,            0,  1,  0,  1,  0, VNONE, 1, "1 for exactly 0, else 0") \
    X(OP_CONST,        21, "const",       HAND, 0,                1,  0,  0,  1,  0, VNONE, 1, "push the constant systak[operand - 1]") \
    X(OP_SUM,          22, "sum",         HAND, 0,                1,  1,  0,  1,  0, VNONE, 1, "running sum in accumulator operand; missing adds 0") \
    X(OP_SCAT,         23, "scat",        HAND, 0,                0,  0,  2,  0,  1, VNONE, 0, "join two strings, cut at the longest a string may be") \
    X(OP_LENGTH,       24, "length",      HAND, 0,                0,  0,  1,  1,  0, VNONE, 0, "byte length of a string") \
    X(OP_REAL,         25, "real",        HAND, 0,                0,  0,  1,  1,  0, VNONE, 0, "the number a string holds, . for none") \
    X(OP_STRPOS,       27, "strpos",      HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "1-based place of the second string in the first, 0 for none") \
    X(OP_STRING,       28, "string",      HAND, 0,                1,  1,  0,  0,  1, VSTRS, 0, "a number as text; operand 1 when a format string lies under it") \
    X(OP_SCONST,       35, "sconst",      HAND, 0,                1,  0,  0,  0,  1, VNONE, 0, "push the string at ssystak + operand") \
    X(OP_SVARSUB,      36, "svarsub",     HAND, 0,                1,  1,  0,  0,  1, VNONE, 0, "string variable operand at the by-group's observation on top; empty outside") \
    X(OP_SVAR,         37, "svar",        HAND, 0,                1,  0,  0,  0,  1, VNONE, 0, "push string variable operand at this observation") \
    X(OP_SEQ,          38, "seq",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "1 when two strings are equal (byte order)") \
    X(OP_SGE,          39, "sge",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "string >=") \
    X(OP_SLE,          40, "sle",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "string <=") \
    X(OP_SLT,          41, "slt",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "string <") \
    X(OP_SGT,          42, "sgt",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "string >") \
    X(OP_SNE,          43, "sne",         HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "string !=") \
    X(OP_NEG,          54, "neg",         UN,   n_neg,            0,  1,  0,  1,  0, VNONE, 1, "negative; a missing value stays as it is") \
    X(OP_ABS,          55, "abs",         UN,   f_abs,            0,  1,  0,  1,  0, VNONE, 1, "abs()") \
    X(OP_LOG,          56, "log",         UN,   f_log,            0,  1,  0,  1,  0, VNONE, 1, "log()") \
    X(OP_EXP,          57, "exp",         UN,   f_exp,            0,  1,  0,  1,  0, VNONE, 1, "exp()") \
    X(OP_SQRT,         58, "sqrt",        UN,   f_sqrt,           0,  1,  0,  1,  0, VNONE, 1, "sqrt()") \
    X(OP_TRUNC,        59, "trunc",       UN,   f_trunc,          0,  1,  0,  1,  0, VNONE, 1, "trunc(), int()") \
    X(OP_FLOAT,        60, "float",       UN,   f_float,          0,  1,  0,  1,  0, VNONE, 1, "the value as a float variable holds it") \
    X(OP_ATAN,         61, "atan",        UN,   f_atan,           0,  1,  0,  1,  0, VNONE, 1, "atan()") \
    X(OP_SIN,          62, "sin",         UN,   f_sin,            0,  1,  0,  1,  0, VNONE, 1, "sin()") \
    X(OP_COS,          63, "cos",         UN,   f_cos,            0,  1,  0,  1,  0, VNONE, 1, "cos()") \
    X(OP_SIGN,         64, "sign",        UN,   f_sign,           0,  1,  0,  1,  0, VNONE, 1, "sign()") \
    X(OP_LOG10,        65, "log10",       UN,   f_log10,          0,  1,  0,  1,  0, VNONE, 1, "log10()") \
    X(OP_TAN,          66, "tan",         UN,   f_tan,            0,  1,  0,  1,  0, VNONE, 1, "tan()") \
    X(OP_ASIN,         67, "asin",        UN,   f_asin,           0,  1,  0,  1,  0, VNONE, 1, "asin()") \
    X(OP_ACOS,         68, "acos",        UN,   f_acos,           0,  1,  0,  1,  0, VNONE, 1, "acos()") \
    X(OP_FLOOR,        69, "floor",       UN,   f_floor,          0,  1,  0,  1,  0, VNONE, 1, "floor()") \
    X(OP_CEIL,         70, "ceil",        UN,   f_ceil,           0,  1,  0,  1,  0, VNONE, 1, "ceil()") \
    X(OP_LNGAMMA,      71, "lngamma",     UN,   f_lngamma,        0,  1,  0,  1,  0, VNONE, 1, "lngamma()") \
    X(OP_TANH,         72, "tanh",        UN,   f_tanh,           0,  1,  0,  1,  0, VNONE, 1, "tanh()") \
    X(OP_GROUP,        73, "group",       HAND, 0,                0,  1,  0,  1,  0, VNONE, 1, "group(): the group of this observation within the range") \
    X(OP_VAR,          74, "var",         HAND, 0,                1,  0,  0,  1,  0, VNONE, 1, "push variable operand at this observation") \
    X(OP_VARSUB,       75, "varsub",      HAND, 0,                1,  1,  0,  1,  0, VNONE, 1, "variable operand at the by-group's observation on top; . outside") \
    X(OP_OBSN,         76, "obsn",        HAND, 0,                0,  0,  0,  1,  0, VNONE, 1, "push _n") \
    X(OP_OBSNN,        77, "obsnn",       HAND, 0,                0,  0,  0,  1,  0, VNONE, 1, "push _N") \
    X(OP_AUTOCODE,     86, "autocode",    FN4,  f_autocode,       0,  4,  0,  1,  0, VNONE, 1, "autocode(x, n, lo, hi)") \
    X(OP_MIN,          87, "min",         HAND, 0,                1,  0,  0,  1,  0, VNUMS, 1, "smallest non-missing of operand numbers, . for none") \
    X(OP_MAX,          88, "max",         HAND, 0,                1,  0,  0,  1,  0, VNUMS, 1, "largest non-missing of operand numbers, . for none") \
    X(OP_ROUND,        89, "round",       HAND, 0,                1,  0,  0,  1,  0, VNUMS, 1, "round() of operand (1 or 2) numbers") \
    X(OP_MOD,          90, "mod",         FN2,  f_mod,            0,  2,  0,  1,  0, VNONE, 1, "mod(x, y)") \
    X(OP_RCP,         109, "rcp",         HAND, 0,                1,  0,  0,  1,  0, VNONE, 0, "push recipe variable operand at this observation") \
    X(OP_SCOND,       111, "scond",       HAND, 0,                0,  1,  2,  0,  1, VNONE, 0, "cond() of two strings") \
    X(OP_MNEG,        116, "mneg",        HAND, 0,                0,  1,  0,  1,  0, VNONE, 0, "matrix negative (. here)") \
    X(OP_MADD,        118, "madd",        HAND, 0,                0,  2,  0,  1,  0, VNONE, 0, "matrix sum (. here)") \
    X(OP_MWRAP,       119, "mwrap",       HAND, 0,                0,  1,  0,  1,  0, VNONE, 0, "a scalar as a 1 x 1 matrix") \
    X(OP_MMUL,        120, "mmul",        HAND, 0,                0,  2,  0,  1,  0, VNONE, 0, "matrix product (. here)") \
    X(OP_MTRANS,      123, "mtrans",      HAND, 0,                0,  1,  0,  1,  0, VNONE, 0, "matrix transpose") \
    X(OP_MROW,        124, "mrow",        HAND, 0,                0,  2,  0,  1,  0, VNONE, 0, "matrices side by side (. here)") \
    X(OP_MCOL,        125, "mcol",        HAND, 0,                0,  2,  0,  1,  0, VNONE, 0, "matrices one above the other (. here)") \
    X(OP_MKRON,       126, "mkron",       HAND, 0,                0,  2,  0,  1,  0, VNONE, 0, "Kronecker product (. here)") \
    X(OP_MBIN,        134, "mbin",        HAND, 0,                1,  2,  0,  1,  0, VNONE, 0, "numeric operator operand on matrices (. here)") \
    X(OP_ATANH,       140, "atanh",       UN,   f_atanh,          0,  1,  0,  1,  0, VNONE, 1, "atanh()") \
    X(OP_LOGIT,       141, "logit",       UN,   f_logit,          0,  1,  0,  1,  0, VNONE, 1, "logit()") \
    X(OP_INVLOGIT,    142, "invlogit",    UN,   f_invlogit,       0,  1,  0,  1,  0, VNONE, 1, "invlogit()") \
    X(OP_CLOGLOG,     143, "cloglog",     UN,   f_cloglog,        0,  1,  0,  1,  0, VNONE, 1, "cloglog()") \
    X(OP_INVCLOGLOG,  144, "invcloglog",  UN,   f_invcloglog,     0,  1,  0,  1,  0, VNONE, 1, "invcloglog()") \
    X(OP_LNFACT,      145, "lnfact",      UN,   f_lnfact,         0,  1,  0,  1,  0, VNONE, 1, "lnfactorial()") \
    X(OP_DIGAMMA,     146, "digamma",     UN,   digamma,          0,  1,  0,  1,  0, VNONE, 1, "digamma()") \
    X(OP_TRIGAMMA,    147, "trigamma",    UN,   trigamma,         0,  1,  0,  1,  0, VNONE, 1, "trigamma()") \
    X(OP_DOW,         150, "dow",         UN,   datefn::dow,      0,  1,  0,  1,  0, VNONE, 1, "dow()") \
    X(OP_DAY,         151, "day",         UN,   datefn::day,      0,  1,  0,  1,  0, VNONE, 1, "day()") \
    X(OP_MONTH,       152, "month",       UN,   datefn::month,    0,  1,  0,  1,  0, VNONE, 1, "month()") \
    X(OP_YEAR,        153, "year",        UN,   datefn::year,     0,  1,  0,  1,  0, VNONE, 1, "year()") \
    X(OP_DOY,         154, "doy",         UN,   datefn::doy,      0,  1,  0,  1,  0, VNONE, 1, "doy()") \
    X(OP_WEEK,        155, "week",        UN,   datefn::week,     0,  1,  0,  1,  0, VNONE, 1, "week()") \
    X(OP_QUARTER,     156, "quarter",     UN,   datefn::quarter,  0,  1,  0,  1,  0, VNONE, 1, "quarter()") \
    X(OP_HALFYEAR,    157, "halfyear",    UN,   datefn::halfyear, 0,  1,  0,  1,  0, VNONE, 1, "halfyear()") \
    X(OP_DOFD,        158, "dofd",        UN,   datefn::dofd,     0,  1,  0,  1,  0, VNONE, 1, "dofd()") \
    X(OP_DOFW,        159, "dofw",        UN,   datefn::dofw,     0,  1,  0,  1,  0, VNONE, 1, "dofw()") \
    X(OP_DOFM,        160, "dofm",        UN,   datefn::dofm,     0,  1,  0,  1,  0, VNONE, 1, "dofm()") \
    X(OP_DOFQ,        161, "dofq",        UN,   datefn::dofq,     0,  1,  0,  1,  0, VNONE, 1, "dofq()") \
    X(OP_DOFH,        162, "dofh",        UN,   datefn::dofh,     0,  1,  0,  1,  0, VNONE, 1, "dofh()") \
    X(OP_DOFY,        163, "dofy",        UN,   datefn::dofy,     0,  1,  0,  1,  0, VNONE, 1, "dofy()") \
    X(OP_WOFD,        164, "wofd",        UN,   datefn::wofd,     0,  1,  0,  1,  0, VNONE, 1, "wofd()") \
    X(OP_MOFD,        165, "mofd",        UN,   datefn::mofd,     0,  1,  0,  1,  0, VNONE, 1, "mofd()") \
    X(OP_QOFD,        166, "qofd",        UN,   datefn::qofd,     0,  1,  0,  1,  0, VNONE, 1, "qofd()") \
    X(OP_HOFD,        167, "hofd",        UN,   datefn::hofd,     0,  1,  0,  1,  0, VNONE, 1, "hofd()") \
    X(OP_ATAN2,       170, "atan2",       FN2,  f_atan2,          0,  2,  0,  1,  0, VNONE, 1, "atan2(y, x)") \
    X(OP_RELDIF,      171, "reldif",      FN2,  f_reldif,         0,  2,  0,  1,  0, VNONE, 1, "reldif(x, y)") \
    X(OP_CHOP,        172, "chop",        FN2,  f_chop,           0,  2,  0,  1,  0, VNONE, 1, "chop(x, tol)") \
    X(OP_YW,          173, "yw",          FN2,  datefn::yw,       0,  2,  0,  1,  0, VNONE, 1, "yw(y, w)") \
    X(OP_YM,          174, "ym",          FN2,  datefn::ym,       0,  2,  0,  1,  0, VNONE, 1, "ym(y, m)") \
    X(OP_YQ,          175, "yq",          FN2,  datefn::yq,       0,  2,  0,  1,  0, VNONE, 1, "yq(y, q)") \
    X(OP_YH,          176, "yh",          FN2,  datefn::yh,       0,  2,  0,  1,  0, VNONE, 1, "yh(y, h)") \
    X(OP_COMB,        177, "comb",        FN2,  f_comb,           0,  2,  0,  1,  0, VNONE, 1, "comb(n, k)") \
    X(OP_MDY,         180, "mdy",         FN3,  datefn::mdy,      0,  3,  0,  1,  0, VNONE, 1, "mdy(m, d, y)") \
    X(OP_CLIP,        181, "clip",        FN3,  f_clip,           0,  3,  0,  1,  0, VNONE, 1, "clip(x, a, b)") \
    X(OP_COND,        182, "cond",        FN3,  f_cond,           0,  3,  0,  1,  0, VNONE, 1, "cond(c, a, b)") \
    X(OP_COND4,       183, "cond4",       FN4,  f_cond4,          0,  4,  0,  1,  0, VNONE, 1, "cond(c, a, b, m)") \
    X(OP_BY,          184, "by",          HAND, 0,                1,  0,  0,  1,  0, VNONE, 0, "_by() and its family; operand says which") \
    X(OP_INLIST,      185, "inlist",      HAND, 0,                1,  0,  0,  1,  0, VNUMS, 1, "1 when the first of operand numbers equals another") \
    X(OP_INRANGE,     186, "inrange",     FN3,  f_inrange,        0,  3,  0,  1,  0, VNONE, 1, "inrange(x, a, b)") \
    X(OP_TWITHIN,     187, "twithin",     FN3,  f_twithin,        0,  3,  0,  1,  0, VNONE, 1, "twithin(x, a, b)") \
    X(OP_ISMISS,      188, "ismiss",      UN,   f_ismiss,         0,  1,  0,  1,  0, VNONE, 1, "1 for a missing value") \
    X(OP_LOWER,       190, "lower",       HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "lower()") \
    X(OP_UPPER,       191, "upper",       HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "upper()") \
    X(OP_PROPER,      192, "proper",      HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "proper()") \
    X(OP_ITRIM,       193, "itrim",       HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "itrim()") \
    X(OP_LTRIM,       194, "ltrim",       HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "ltrim()") \
    X(OP_RTRIM,       195, "rtrim",       HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "rtrim()") \
    X(OP_TRIM,        196, "trim",        HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "trim()") \
    X(OP_REVERSE,     197, "reverse",     HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "reverse()") \
    X(OP_MATCH,       198, "match",       HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "match(s, pattern)") \
    X(OP_REGEXM,      199, "regexm",      HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "regexm(s, re)") \
    X(OP_REGEXR,      200, "regexr",      HAND, 0,                0,  0,  3,  0,  1, VNONE, 0, "regexr(s, re, by)") \
    X(OP_REGEXS,      201, "regexs",      HAND, 0,                0,  1,  0,  0,  1, VNONE, 0, "regexs(n)") \
    X(OP_CHAR,        202, "char",        HAND, 0,                0,  1,  0,  0,  1, VNONE, 0, "char(n)") \
    X(OP_WORDCOUNT,   203, "wordcount",   HAND, 0,                0,  0,  1,  1,  0, VNONE, 0, "wordcount()") \
    X(OP_INDEXNOT,    204, "indexnot",    HAND, 0,                0,  0,  2,  1,  0, VNONE, 0, "indexnot(s, chars)") \
    X(OP_STRSUBDP,    205, "strsubdp",    HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "strsubdp()") \
    X(OP_SUBSTR,      208, "substr",      HAND, 0,                0,  2,  1,  0,  1, VNONE, 0, "substr(s, n1, n2)") \
    X(OP_SUBINSTR,    209, "subinstr",    HAND, 0,                1,  1,  3,  0,  1, VNONE, 0, "subinstr(); operand 1 for subinword()") \
    X(OP_WORD,        211, "word",        HAND, 0,                0,  1,  1,  0,  1, VNONE, 0, "word(s, n)") \
    X(OP_ABBREV,      212, "abbrev",      HAND, 0,                0,  1,  1,  0,  1, VNONE, 0, "abbrev(s, n)") \
    X(OP_SDATE,       213, "sdate",       HAND, 0,                1,  0,  2,  1,  0, VDATE, 0, "date(s, mask); operand kind * 2, + 1 with a top year under them") \
    X(OP_SINLIST,     215, "sinlist",     HAND, 0,                1,  0,  0,  1,  0, VSTRS, 0, "1 when the first of operand strings equals another") \
    X(OP_SISEMPTY,    216, "sisempty",    HAND, 0,                0,  0,  1,  1,  0, VNONE, 0, "1 for the empty string") \
    X(OP_PLURAL,      218, "plural",      HAND, 0,                1,  1,  1,  0,  1, VSTRS, 0, "plural(n, s); operand 1 when the plural form is given") \
    X(OP_SCALAR,      220, "scalar",      HAND, 0,                1,  0,  0,  1,  0, VNONE, 1, "push scalar operand") \
    X(OP_RC,          221, "rc",          HAND, 0,                0,  0,  0,  1,  0, VNONE, 1, "push _rc") \
    X(OP_SCOND4,      222, "scond4",      HAND, 0,                0,  1,  3,  0,  1, VNONE, 0, "cond() of three strings, the last for a missing condition") \
    X(OP_UNIFORM,     223, "uniform",     HAND, 0,                0,  0,  0,  1,  0, VNONE, 1, "push the main generator's next draw") \
    X(OP_UNIFORM0,    224, "uniform0",    HAND, 0,                0,  0,  0,  1,  0, VNONE, 0, "push the old generator's next draw") \
    X(OP_CLS,         225, "cls",         HAND, 0,                0,  0,  1,  1,  0, VNONE, 0, "a class value by its name, as a number") \
    X(OP_SCLS,        226, "scls",        HAND, 0,                0,  0,  1,  0,  1, VNONE, 0, "a class value by its name, as a string") \
    X(OP_NORMAL,      227, "normal",      UN,   stnormal,         0,  1,  0,  1,  0, VNONE, 1, "normal()") \
    X(OP_LNNORMAL,    228, "lnnormal",    UN,   stlnnormal,       0,  1,  0,  1,  0, VNONE, 1, "lnnormal()") \
    X(OP_INVNORMAL,   229, "invnormal",   UN,   inormal,          0,  1,  0,  1,  0, VNONE, 1, "invnormal()") \
    X(OP_TPROB,       230, "tprob",       FN2,  f_tprob,          0,  2,  0,  1,  0, VNONE, 1, "tprob(n, t)") \
    X(OP_FTAIL,       231, "Ftail",       FN3,  ftail,            0,  3,  0,  1,  0, VNONE, 1, "Ftail(n1, n2, f)") \
    X(OP_FCUMM,       232, "F",           FN3,  fcumm,            0,  3,  0,  1,  0, VNONE, 1, "F(n1, n2, f)") \
    X(OP_INVFTAIL,    233, "invFtail",    FN3,  invftail,         0,  3,  0,  1,  0, VNONE, 1, "invFtail(n1, n2, p)") \
    X(OP_INVFCUMM,    234, "invF",        FN3,  invfcumm,         0,  3,  0,  1,  0, VNONE, 1, "invF(n1, n2, p)") \
    X(OP_CHI2,        235, "chi2",        FN2,  chi2cumm,         0,  2,  0,  1,  0, VNONE, 1, "chi2(n, x)") \
    X(OP_CHI2TAIL,    236, "chi2tail",    FN2,  chi2tail,         0,  2,  0,  1,  0, VNONE, 1, "chi2tail(n, x)") \
    X(OP_INVCHI2,     237, "invchi2",     FN2,  invchi2cumm,      0,  2,  0,  1,  0, VNONE, 1, "invchi2(n, p)") \
    X(OP_INVCHI2TAIL, 238, "invchi2tail", FN2,  invchi2tail,      0,  2,  0,  1,  0, VNONE, 1, "invchi2tail(n, p)") \
    X(OP_BINOMIAL,    239, "binomial",    FN3,  biprob,           0,  3,  0,  1,  0, VNONE, 1, "Binomial(n, k, p)") \
    X(OP_INVBINOMIAL, 240, "invbinomial", FN3,  invbiprob,        0,  3,  0,  1,  0, VNONE, 1, "invbinomial(n, k, P)") \
    X(OP_GAMMAP,      241, "gammap",      FN2,  gammap,           0,  2,  0,  1,  0, VNONE, 1, "gammap(a, x)") \
    X(OP_DGAMMAPDA,   242, "dgammapda",   FN2,  gammap_da,        0,  2,  0,  1,  0, VNONE, 1, "dgammapda(a, x)") \
    X(OP_DGAMMAPDX,   243, "dgammapdx",   FN2,  gammap_dx,        0,  2,  0,  1,  0, VNONE, 1, "dgammapdx(a, x)") \
    X(OP_DGAMMAPDADA, 244, "dgammapdada", FN2,  gammap_dada,      0,  2,  0,  1,  0, VNONE, 1, "dgammapdada(a, x)") \
    X(OP_DGAMMAPDADX, 245, "dgammapdadx", FN2,  gammap_dadx,      0,  2,  0,  1,  0, VNONE, 1, "dgammapdadx(a, x)") \
    X(OP_DGAMMAPDXDX, 246, "dgammapdxdx", FN2,  gammap_dxdx,      0,  2,  0,  1,  0, VNONE, 1, "dgammapdxdx(a, x)") \
    X(OP_INVGAMMAP,   247, "invgammap",   FN2,  invgammap,        0,  2,  0,  1,  0, VNONE, 1, "invgammap(a, p)") \
    X(OP_IBETA,       248, "ibeta",       FN3,  ibeta,            0,  3,  0,  1,  0, VNONE, 1, "ibeta(a, b, x)") \
    X(OP_INVIBETA,    249, "invibeta",    FN3,  invibeta,         0,  3,  0,  1,  0, VNONE, 1, "invibeta(a, b, p)") \
    X(OP_TTAIL,       250, "ttail",       FN2,  ttail,            0,  2,  0,  1,  0, VNONE, 1, "ttail(n, t)") \
    X(OP_INVTTAIL,    251, "invttail",    FN2,  invttail,         0,  2,  0,  1,  0, VNONE, 1, "invttail(n, p)") \
    X(OP_TDEN,        252, "tden",        FN2,  tden,             0,  2,  0,  1,  0, VNONE, 1, "tden(n, t)") \
    X(OP_FDEN,        253, "Fden",        FN3,  fden,             0,  3,  0,  1,  0, VNONE, 1, "Fden(n1, n2, f)") \
    X(OP_BETADEN,     254, "betaden",     FN3,  betaden,          0,  3,  0,  1,  0, VNONE, 1, "betaden(a, b, x)") \
    X(OP_GAMMADEN,    255, "gammaden",    FN4,  gammaden,         0,  4,  0,  1,  0, VNONE, 1, "gammaden(g, b, s, x)") \
    X(OP_NCHI2,        91, "nchi2",       FN3,  nchi2,            0,  3,  0,  1,  0, VNONE, 1, "nchi2(n, nc, x)") \
    X(OP_INVNCHI2,     92, "invnchi2",    FN3,  invnchi2,         0,  3,  0,  1,  0, VNONE, 1, "invnchi2(n, nc, p)") \
    X(OP_NPNCHI2,      93, "npnchi2",     FN3,  npnchi2,          0,  3,  0,  1,  0, VNONE, 1, "npnchi2(n, x, p): the nc at which nchi2 is p") \
    X(OP_BINORMAL,     94, "binormal",    FN3,  binormal,         0,  3,  0,  1,  0, VNONE, 1, "binormal(h, k, rho)") \
    X(OP_NBETADEN,     95, "nbetaden",    FN4,  nbetaden,         0,  4,  0,  1,  0, VNONE, 1, "nbetaden(a, b, nc, x)") \
    X(OP_NIBETA,       96, "nibeta",      FN4,  nibeta,           0,  4,  0,  1,  0, VNONE, 1, "nibeta(a, b, nc, x)") \
    X(OP_INVNIBETA,    97, "invnibeta",   FN4,  invnibeta,        0,  4,  0,  1,  0, VNONE, 1, "invnibeta(a, b, nc, p)") \
    X(OP_NFDEN,        98, "nFden",       FN4,  nFden,            0,  4,  0,  1,  0, VNONE, 1, "nFden(n1, n2, nc, f)") \
    X(OP_NFTAIL,       99, "nFtail",      FN4,  nFtail,           0,  4,  0,  1,  0, VNONE, 1, "nFtail(n1, n2, nc, f)") \
    X(OP_INVNFTAIL,   100, "invnFtail",   FN4,  invnFtail,        0,  4,  0,  1,  0, VNONE, 1, "invnFtail(n1, n2, nc, p)") \
    X(OP_NORMDEN,     101, "normden",     UN,   normalden,        0,  1,  0,  1,  0, VNONE, 1, "normden(z), the normal density") \
    X(OP_LNNORMDEN,   102, "lnnormden",   UN,   lnnormalden,      0,  1,  0,  1,  0, VNONE, 1, "lnnormalden(z), its log")
// clang-format on

enum : int16_t {
#define KV_OP_ENUM(op, word, ...) op = word,
    KV_OPCODE_TABLE(KV_OP_ENUM)
#undef KV_OP_ENUM
};

enum OpKind : uint8_t { UN, BIN, CMP, FN2, FN3, FN4, HAND };
enum OpVary : uint8_t { VNONE, VNUMS, VSTRS, VDATE };

struct OpInfo {
    const char* name; // null for a word that is no opcode (it does nothing)
    uint8_t kind;
    uint8_t operands;     // words of operand after the opcode
    uint8_t npop, spop;   // numbers and strings taken
    uint8_t npush, spush; // numbers and strings left
    uint8_t vary;
    bool block; // runs by blocks of observations
    const char* what;
};

// Words above the last are tested against and do nothing.
inline constexpr int OP_WORDS = 302;

constexpr int op_arity(int kind) {
    return kind == UN                                  ? 1
           : kind == BIN || kind == CMP || kind == FN2 ? 2
           : kind == FN3                               ? 3
           : kind == FN4                               ? 4
                                                       : -1;
}

constexpr std::array<OpInfo, OP_WORDS> make_optab() {
    std::array<OpInfo, OP_WORDS> t{};
#define KV_OP_ROW(op, word, nm, knd, F, opd, np_, sp_, nu_, su_, vry, blk, wht)                    \
    if (t[word].name) throw "two rows for one opcode";                                             \
    if (op_arity(knd) > 0 && (np_ != op_arity(knd) || nu_ != 1 || sp_ || su_ || opd))              \
        throw "a helper row takes its arguments and leaves one number";                            \
    t[word] = OpInfo{nm, knd, opd, np_, sp_, nu_, su_, vry, blk != 0, wht};
    KV_OPCODE_TABLE(KV_OP_ROW)
#undef KV_OP_ROW
    return t;
}
inline constexpr std::array<OpInfo, OP_WORDS> optab = make_optab();

inline const OpInfo& opinfo(int op) {
    static constexpr OpInfo none{};
    return op >= 0 && op < OP_WORDS ? optab[op] : none;
}

// Words of operand that follow an opcode.
inline int exp_operands(int op) {
    return opinfo(op).operands;
}

// What opcode op with operand word arg (0 when it has none) does to the two
// stacks: *dn numbers and *ds strings, net.
inline void op_effect(int op, int arg, int* dn, int* ds) {
    const OpInfo& d = opinfo(op);
    int np = d.npop, sp = d.spop;
    if (d.vary == VNUMS)
        np += arg;
    else if (d.vary == VSTRS)
        sp += arg;
    else if (d.vary == VDATE)
        np += arg & 1;
    *dn = d.npush - np;
    *ds = d.spush - sp;
}

} // namespace korvu
