// Compiled expressions. `compexp` reads an expression from the token stream
// and compiles it into a program of 16-bit words held in an expression
// object; `xeq` runs the program for one observation, `xeqblock` for a range
// of observations at once.
//
// The compiler splits the text at operators (loosest first, rightmost place
// first) instead of building a tree. Constants live in pools shared by all
// expressions of a command (`systak`, `ssystak`).
#pragma once
#include <cstdint>

namespace korvu {

inline constexpr int EXP_CODELEN = 2400; // words of a program
inline constexpr int EXP_NSUMS = 5;      // sum() accumulators
inline constexpr int EXP_MAXSYSTAK = 300;
inline constexpr int EXP_SSYSTAKLEN = 32000; // bytes of the string-constant pool
inline constexpr int EXP_TYPESTACK = 250;
inline constexpr int EXP_MAXSTRINGS = 10;
inline constexpr int EXP_MAXMATRICES = 20;
inline constexpr int EXP_STRMAX = 244;   // longest string value
inline constexpr int EXP_STRFRAME = 246; // a frame of the string stack
inline constexpr int EXP_MATFRAME = 34;  // 'm' and a name of up to 32 characters

// The compiled-expression object.
struct ExpObj {
    double accumulators[EXP_NSUMS];
    int16_t code[EXP_CODELEN];
    int32_t code_end; // index of the last word; -1 for empty
    int32_t n_sums;   // index of the last accumulator in use; -1 for none
    int32_t nobs1, nobs2;
    int32_t nobss1, nobss2;
    const char* text_begin;
    const char* text_end;
    uint8_t result_kind; // 0 numeric, 1 string, 4 matrix
    uint8_t needs_matrix_scratch;
};

extern ExpObj ifpgm, wepgm; // the `if` and `=exp` of the current command

// Shared constant pools.
extern double systak[EXP_MAXSYSTAK];
extern int32_t nsystak;
extern char ssystak[EXP_SSYSTAKLEN];
extern int32_t nssystak;

extern volatile int kv_fpeerror; // set by the SIGFPE handler: the result is `.`

// wanted: 0 numeric, 1 string, 3 numeric or string, 4 matrix, 5 numeric or
// matrix. end_flag 1: an unmatched `]` ends the text (left unread). Returns 0
// or a code, the message printed.
int compexp(ExpObj* obj, int wanted, int end_flag, int syntax_only);
int compmatexp(ExpObj* obj, int wanted, int end_flag, int syntax_only, int comma_ok);
int compalgonly(ExpObj* obj, int wanted, int end_flag);
// Compiles the text [b, e) instead of the token stream.
int compexp_text(ExpObj* obj, const char* b, const char* e, int wanted, int syntax_only);

void initialize_compexp_shared(); // empty the pools (a fresh command)
void initialize_compexp_xeq(ExpObj* obj);
void initialize_xeq();    // zero the accumulators of ifpgm and wepgm
void zapexp(ExpObj* obj); // empty object: no program

// Runs for observation i, taking the ranges from nobs1/nobs2/nobss1/nobss2.
double xeq(ExpObj* obj, int i);
// The same with a string result copied into buf (EXP_STRMAX + 1 bytes).
char* sxeq(ExpObj* obj, int i, char* buf);
// Runs with the ranges as they stand in the object.
double xeqforby(ExpObj* obj, int i);
// Observations from..to at once into out[0 .. to-from]; the same bits as xeq
// for each observation, in order. Subscripts read the data as it stands, so a
// caller that writes a variable the program reads at other observations
// (exp_reads_other_obs) must go one observation at a time.
void xeqblock(ExpObj* obj, int from, int to, double* out);
// A matrix-kind or numeric program: a number goes to *out; a matrix result
// is installed under name by the matrix store. 0 or a code.
int xeqmat_g(ExpObj* obj, const char* name, int namelen, double* out);
// The same, a number becoming a 1x1 matrix; before version 8 a missing
// number is 504.
int xeqmat_mat(ExpObj* obj, const char* name, int namelen);
// True when the program reads variable v (or any variable when v is 0) at
// observations other than the current one: subscripts and time-series
// operators.
bool exp_reads_other_obs(const ExpObj* obj, int v);
// True when the program draws random numbers: it must then run only for the
// observations selected, in order, so the stream is one draw per observation.
bool exp_draws_random(const ExpObj* obj);

// Date literal text [start, end) by kind 'd', 'w', 'm', 'q', 'h', 'y'; `.`
// when invalid.
double dtranslate(int format_kind, const char* start, const char* end);

// Links to stores that come later; every one may be null.
struct ExpHooks {
    // Time-series operated variable ("L.x"): recipe id >= 0, or a negated
    // code (message printed). Null: time-series operators are not allowed.
    int (*rcp_compile)(const char* name);
    double (*rcpxeq)(int id, int obs);
    // Scalars: id >= 0 for an existing scalar, -1 none; value by id at run time.
    int (*scalar_find)(const char* name);
    double (*scalar_value)(int id);
    // Matrices: non-zero when a matrix of the name exists.
    int (*matrix_find)(const char* name);
    // Matrix element name[r, c]: 0 and the value, or a code (message printed).
    int (*matrix_element)(const char* name, double r, double c, double* out);
    // A number-valued matrix expression (el(), matrix(), A[i,j], trace() and
    // kin) given as the text [b, e): 0 and the value, or a code (message
    // printed). Called while compiling; it may compile expressions itself.
    int (*matrix_value)(const char* b, const char* e, double* out);
    // Runs a compiled matrix program: 0 or a code.
    int (*matrix_xeq)(ExpObj* obj, const char* name, int namelen, double* out);
    // _b[name] (se 0) and _se[name] (se 1): 0 and the value, or a code.
    int (*coef)(int se, const char* name, double* out);
    // c(name): 1 number, 2 string (into str, EXP_STRMAX + 1 bytes), 0 unknown.
    int (*cfcn)(const char* name, double* num, char* str);
    // r(), e(), s() by the letter: 1 number, 2 string, 0 not there.
    int (*rfcn)(int letter, const char* name, double* num, char* str);
    // e(sample): the marker variable's number, 0 when there are no estimates.
    int (*esample)();
    // Value label `label`, text -> value: 0, or a code (message printed).
    int (*vlsearch)(const char* label, const char* text, double* out);
    // _by() family by index 0 _by, 1 _bylastcall, 2 _byindex, 3 _byn1, 4 _byn2.
    double (*byfcn)(int which, int obs);
    // cls(name) and scls(name): the class value by its name as a number
    // (missing when it is not one) and as text (EXP_STRMAX + 1 bytes).
    double (*clsnum)(const char* name);
    void (*clsstr)(const char* name, char* out);
};
extern ExpHooks exphooks;

// Command handlers.
int display(int);
int assertcmd(int);
int countcmd(int);

} // namespace korvu
