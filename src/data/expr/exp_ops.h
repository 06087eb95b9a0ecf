// Opcodes of compiled expressions and the numeric operations behind them.
// The observation-at-a-time evaluator and the block evaluator both call the
// inline functions here, so the two give the same bits.
#pragma once
#include <cmath>
#include <cstdint>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/formats/dates.h"

namespace korvu {

enum : int16_t {
    OP_OR = 1,
    OP_AND = 2,
    OP_EQ = 3,
    OP_NE = 4,
    OP_GE = 5,
    OP_LE = 6,
    OP_LT = 7,
    OP_GT = 8,
    OP_ADD = 9,
    OP_SUB = 10,
    OP_MUL = 11,
    OP_POW = 12,
    OP_DIV = 13,
    OP_NOT = 18,
    OP_CONST = 21, // + systak index + 1
    OP_SUM = 22,   // + accumulator
    OP_SCAT = 23,
    OP_LENGTH = 24,
    OP_REAL = 25,
    OP_STRPOS = 27,
    OP_STRING = 28, // + 1 when a format argument is on the stack
    OP_SCONST = 35, // + ssystak offset
    OP_SVARSUB = 36,
    OP_SVAR = 37,
    OP_SEQ = 38,
    OP_SGE = 39,
    OP_SLE = 40,
    OP_SLT = 41,
    OP_SGT = 42,
    OP_SNE = 43,
    OP_NEG = 54,
    OP_ABS = 55,
    OP_LOG = 56,
    OP_EXP = 57,
    OP_SQRT = 58,
    OP_TRUNC = 59,
    OP_FLOAT = 60,
    OP_ATAN = 61,
    OP_SIN = 62,
    OP_COS = 63,
    OP_SIGN = 64,
    OP_LOG10 = 65,
    OP_TAN = 66,
    OP_ASIN = 67,
    OP_ACOS = 68,
    OP_FLOOR = 69,
    OP_CEIL = 70,
    OP_LNGAMMA = 71,
    OP_TANH = 72,
    OP_GROUP = 73,
    OP_VAR = 74,
    OP_VARSUB = 75,
    OP_OBSN = 76,
    OP_OBSNN = 77,
    OP_AUTOCODE = 86,
    OP_MIN = 87,   // + count
    OP_MAX = 88,   // + count
    OP_ROUND = 89, // + 1 or 2 arguments
    OP_MOD = 90,
    OP_RCP = 109, // + recipe id
    OP_SCOND = 111,
    OP_MNEG = 116,
    OP_MADD = 118,
    OP_MWRAP = 119,
    OP_MMUL = 120,
    OP_MTRANS = 123,
    OP_MROW = 124,
    OP_MCOL = 125,
    OP_MKRON = 126,
    OP_MBIN = 134, // + numeric opcode: a binary operator on matrices
    OP_ATANH = 140,
    OP_LOGIT = 141,
    OP_INVLOGIT = 142,
    OP_CLOGLOG = 143,
    OP_INVCLOGLOG = 144,
    OP_LNFACT = 145,
    OP_DIGAMMA = 146,
    OP_TRIGAMMA = 147,
    OP_DOW = 150,
    OP_DAY = 151,
    OP_MONTH = 152,
    OP_YEAR = 153,
    OP_DOY = 154,
    OP_WEEK = 155,
    OP_QUARTER = 156,
    OP_HALFYEAR = 157,
    OP_DOFD = 158,
    OP_DOFW = 159,
    OP_DOFM = 160,
    OP_DOFQ = 161,
    OP_DOFH = 162,
    OP_DOFY = 163,
    OP_WOFD = 164,
    OP_MOFD = 165,
    OP_QOFD = 166,
    OP_HOFD = 167,
    OP_ATAN2 = 170,
    OP_RELDIF = 171,
    OP_CHOP = 172,
    OP_YW = 173,
    OP_YM = 174,
    OP_YQ = 175,
    OP_YH = 176,
    OP_COMB = 177,
    OP_MDY = 180,
    OP_CLIP = 181,
    OP_COND = 182,
    OP_COND4 = 183,
    OP_BY = 184,     // + which
    OP_INLIST = 185, // + count of arguments
    OP_INRANGE = 186,
    OP_TWITHIN = 187,
    OP_ISMISS = 188,
    OP_LOWER = 190,
    OP_UPPER = 191,
    OP_PROPER = 192,
    OP_ITRIM = 193,
    OP_LTRIM = 194,
    OP_RTRIM = 195,
    OP_TRIM = 196,
    OP_REVERSE = 197,
    OP_MATCH = 198,
    OP_REGEXM = 199,
    OP_REGEXR = 200,
    OP_REGEXS = 201,
    OP_CHAR = 202,
    OP_WORDCOUNT = 203,
    OP_INDEXNOT = 204,
    OP_STRSUBDP = 205,
    OP_SUBSTR = 208,
    OP_SUBINSTR = 209, // + 1 for subinword
    OP_WORD = 211,
    OP_ABBREV = 212,
    OP_SDATE = 213,   // + kind * 2 + (1 when a top year is on the stack)
    OP_SINLIST = 215, // + count of arguments
    OP_SISEMPTY = 216,
    OP_PLURAL = 218, // + 1 when the plural form is given
    OP_SCALAR = 220, // + scalar id
    OP_RC = 221,
    OP_SCOND4 = 222,
    OP_UNIFORM = 223,  // the main generator's next draw
    OP_UNIFORM0 = 224, // the old generator's next draw
    OP_CLS = 225,      // a class value by its name, as a number
    OP_SCLS = 226,     // the same as a string
};

// Numeric helpers; `.` is misval and anything at or above it is missing.
inline bool xmis(double x) {
    return x >= misval;
}
inline double n_add(double a, double b) {
    return xmis(a) || xmis(b) ? misval : a + b;
}
inline double n_sub(double a, double b) {
    return xmis(a) || xmis(b) ? misval : a - b;
}
inline double n_mul(double a, double b) {
    return xmis(a) || xmis(b) ? misval : a * b;
}
inline double n_div(double a, double b) {
    return xmis(a) || xmis(b) || b == 0 ? misval : a / b;
}
inline double kvpow(double a, double b) {
    return xmis(a) || xmis(b) ? misval : std::pow(a, b);
}
inline double n_and(double a, double b) {
    return a != 0 && b != 0 ? 1.0 : 0.0;
}
inline double n_or(double a, double b) {
    return a != 0 || b != 0 ? 1.0 : 0.0;
}
inline double n_not(double a) {
    return a == 0 ? 1.0 : 0.0;
}
inline double n_neg(double a) {
    return xmis(a) ? a : -a;
}
// Comparison operand: infinities and not-a-numbers become `.`; under the old
// rules every missing value is `.`.
inline double cmpval(double x) {
    uint64_t b = dbits(x);
    if ((b & 0x7FF0000000000000ULL) == 0x7FF0000000000000ULL) return misval;
    if (!mvmodern && x >= misval) return misval;
    return x;
}
inline double n_eq(double a, double b) {
    return cmpval(a) == cmpval(b) ? 1.0 : 0.0;
}
inline double n_ne(double a, double b) {
    return cmpval(a) != cmpval(b) ? 1.0 : 0.0;
}
inline double n_ge(double a, double b) {
    return cmpval(a) >= cmpval(b) ? 1.0 : 0.0;
}
inline double n_le(double a, double b) {
    return cmpval(a) <= cmpval(b) ? 1.0 : 0.0;
}
inline double n_lt(double a, double b) {
    return cmpval(a) < cmpval(b) ? 1.0 : 0.0;
}
inline double n_gt(double a, double b) {
    return cmpval(a) > cmpval(b) ? 1.0 : 0.0;
}
// The result as it may reach data: infinities and not-a-numbers are `.`.
inline double cleanres(double x) {
    return (dbits(x) & 0x7FF0000000000000ULL) == 0x7FF0000000000000ULL ? misval : x;
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
KV_MATH1(f_lngamma, std::lgamma(x))
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
double f_digamma(double x);
double f_trigamma(double x);

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

// Unary numeric functions: opcode and helper.
#define KV_UNARY_OPS(X)                                                                            \
    X(OP_ABS, f_abs)                                                                               \
    X(OP_LOG, f_log)                                                                               \
    X(OP_EXP, f_exp)                                                                               \
    X(OP_SQRT, f_sqrt)                                                                             \
    X(OP_TRUNC, f_trunc)                                                                           \
    X(OP_FLOAT, f_float)                                                                           \
    X(OP_ATAN, f_atan)                                                                             \
    X(OP_SIN, f_sin)                                                                               \
    X(OP_COS, f_cos)                                                                               \
    X(OP_SIGN, f_sign)                                                                             \
    X(OP_LOG10, f_log10)                                                                           \
    X(OP_TAN, f_tan)                                                                               \
    X(OP_ASIN, f_asin)                                                                             \
    X(OP_ACOS, f_acos)                                                                             \
    X(OP_FLOOR, f_floor)                                                                           \
    X(OP_CEIL, f_ceil)                                                                             \
    X(OP_LNGAMMA, f_lngamma)                                                                       \
    X(OP_TANH, f_tanh)                                                                             \
    X(OP_ATANH, f_atanh)                                                                           \
    X(OP_LOGIT, f_logit)                                                                           \
    X(OP_INVLOGIT, f_invlogit)                                                                     \
    X(OP_CLOGLOG, f_cloglog)                                                                       \
    X(OP_INVCLOGLOG, f_invcloglog)                                                                 \
    X(OP_LNFACT, f_lnfact)                                                                         \
    X(OP_DIGAMMA, f_digamma)                                                                       \
    X(OP_TRIGAMMA, f_trigamma)                                                                     \
    X(OP_NOT, n_not)                                                                               \
    X(OP_NEG, n_neg)                                                                               \
    X(OP_ISMISS, f_ismiss)                                                                         \
    X(OP_DOW, datefn::dow)                                                                         \
    X(OP_DAY, datefn::day)                                                                         \
    X(OP_MONTH, datefn::month)                                                                     \
    X(OP_YEAR, datefn::year)                                                                       \
    X(OP_DOY, datefn::doy)                                                                         \
    X(OP_WEEK, datefn::week)                                                                       \
    X(OP_QUARTER, datefn::quarter)                                                                 \
    X(OP_HALFYEAR, datefn::halfyear)                                                               \
    X(OP_DOFD, datefn::dofd)                                                                       \
    X(OP_DOFW, datefn::dofw)                                                                       \
    X(OP_DOFM, datefn::dofm)                                                                       \
    X(OP_DOFQ, datefn::dofq)                                                                       \
    X(OP_DOFH, datefn::dofh)                                                                       \
    X(OP_DOFY, datefn::dofy)                                                                       \
    X(OP_WOFD, datefn::wofd)                                                                       \
    X(OP_MOFD, datefn::mofd)                                                                       \
    X(OP_QOFD, datefn::qofd)                                                                       \
    X(OP_HOFD, datefn::hofd)

// Binary numeric operations: opcode and helper (left, right).
#define KV_BINARY_OPS(X)                                                                           \
    X(OP_OR, n_or)                                                                                 \
    X(OP_AND, n_and)                                                                               \
    X(OP_EQ, n_eq)                                                                                 \
    X(OP_NE, n_ne)                                                                                 \
    X(OP_GE, n_ge)                                                                                 \
    X(OP_LE, n_le)                                                                                 \
    X(OP_LT, n_lt)                                                                                 \
    X(OP_GT, n_gt)                                                                                 \
    X(OP_ADD, n_add)                                                                               \
    X(OP_SUB, n_sub)                                                                               \
    X(OP_MUL, n_mul)                                                                               \
    X(OP_POW, kvpow)                                                                               \
    X(OP_DIV, n_div)

// Two-argument functions (first argument, second argument).
#define KV_BINFN_OPS(X)                                                                            \
    X(OP_MOD, f_mod)                                                                               \
    X(OP_ATAN2, f_atan2)                                                                           \
    X(OP_RELDIF, f_reldif)                                                                         \
    X(OP_CHOP, f_chop)                                                                             \
    X(OP_COMB, f_comb)                                                                             \
    X(OP_YW, datefn::yw)                                                                           \
    X(OP_YM, datefn::ym)                                                                           \
    X(OP_YQ, datefn::yq)                                                                           \
    X(OP_YH, datefn::yh)

// Three-argument numeric functions (first, second, third argument).
#define KV_TERNARY_OPS(X)                                                                          \
    X(OP_MDY, datefn::mdy)                                                                         \
    X(OP_CLIP, f_clip)                                                                             \
    X(OP_COND, f_cond)                                                                             \
    X(OP_INRANGE, f_inrange)                                                                       \
    X(OP_TWITHIN, f_twithin)

// Four-argument numeric functions.
#define KV_QUATERNARY_OPS(X)                                                                       \
    X(OP_AUTOCODE, f_autocode)                                                                     \
    X(OP_COND4, f_cond4)

// Words of operand that follow an opcode.
int exp_operands(int op);

} // namespace korvu
