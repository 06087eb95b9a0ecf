// Macros: strings held in the dictionary, and their expansion in command lines.
//
// A global macro is an item of type 2 under its name; a local is an item of
// type `typelmac` under its name with a leading underscore ("_x" for `x'), so
// a name beginning with an underscore is a local and a local scope is just a
// type number. The value is NUL-terminated and the tag holds its length with
// the NUL. Empty macros don't exist: saving empty text erases.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

extern int32_t typelmac; // type of the current level's locals, from 3059
extern int32_t tmpvctr;  // counter behind temporary names
extern int32_t tmpfctr;  // counter behind temporary file names

// --- expansion --------------------------------------------------------------

// Expands `console` in place and primes the tokenizer on it. Returns 0, or 920
// after reporting it. Does nothing when `procflg` is 0.
int macexp();
// Expands any writable line of `cap` bytes in place (the line must stay below
// `cap`). Returns 0 or 920, without reporting and without touching the
// tokenizer.
int macexp_text(char* line, size_t cap);
// The backquote forms `=exp' and `:fcn'; text is the form without its mark.
// Both leave the result in dst (macrolen bytes), empty on failure.
int exp_xpand(const char* text, char* dst);
int extended_xpand(const char* text, char* dst);

// --- the store --------------------------------------------------------------

char* macptr(const char* name);                       // value or null
char* macfind(const char* name, int* lenout);         // the same; length with the NUL
char* macload(const char* value, int len, char* dst); // copy; null value: ""
char* macuse(const char* name, char* dst);
char* macuseshort(const char* name, char* dst, size_t n);
int macsave(const char* name, const char* text);     // add, no replace; "" adds nothing
int macsave0(const char* name);                      // add with empty value
int macresave(const char* name, const char* text);   // replace, or erase for ""
int macresaveq(const char* name, const char* text);  // stored in compound quotes
int macresave_c(const char* name, const char* text); // one scope up; 198 at the base
void macerase(const char* name);
// Walks all globals, then the current scope's locals; item null begins.
void* macnext(void* item, char* nameout);
// op "+" or "-"; mode 1 leaves the new value in out, -1 the old, 0 nothing.
int macincr(const char* name, const char* op, char* out, int mode);
// Checks the length of a local's own name; prints and returns 198 if too long.
int chklmname(const char* name);
// chkname(name, 1): at most 32 characters, no special character, first a
// letter or an underscore. Returns 0 or 198 (silently).
int chkmacname(const char* name);

// --- commands ---------------------------------------------------------------

// kind 0 `macro define`, 1 `local`, 2 `global`, 4 `return local`,
// 5 `ereturn local`, 6 `sreturn local`, 7 `c_local`.
int macgen(int kind);
int macro(int);          // `macro` and its subcommands (the argument is unused)
int macexfcn(char* dst); // extended functions, reading the tokenizer
int maclistfcn(char* dst);
int tmpvcmd(int isvar); // 1: `tempvar`, `tempname`; 0: `tempfile`

// --- temporary names --------------------------------------------------------

char* mktmpvn(char* dst); // "__" and six base-36 digits of tmpvctr
// The one temporary file name of the system: "%s/S%c%05d." of tmpdir, the
// letter, the process number, then the counter n in six base-34 digits, into
// dst of size bytes. 0, or 914 (printed by the caller) when the name does not
// fit. mktmpfn takes the letter 't' and the next value of tmpfctr.
int gettmpfn(char* dst, size_t size, int letter, int32_t n);
int mktmpfn(char* dst, size_t size);
bool istmpvn(const char* name, int32_t since);
// Frame end: rmtmpfn unlinks the temporary files named since `since`;
// rmtmpvn drops the temporary variables named since then; rmtmpdyn clears the
// scope's locals, moves an r-class program's return into r() (cls 1; 2 for
// e-class and 3 for s-class leave r() alone) and removes temporary-named items
// of types 18, 9, 11, 10, 15 and 1.
int rmtmpfn(int32_t since);
int rmtmpvn(int32_t since);
int rmtmpdyn(int32_t since, int cls);
// All three in the order the frame end wants them: files, variables, items.
int mac_frame_end(int32_t tmpv_since, int32_t tmpf_since, int cls);

// --- hooks to other subsystems ----------------------------------------------
//
// Each is null until its subsystem sets it; a null hook makes the caller print
// "... not available yet" and give 199. Each writes at most `n` bytes with the
// NUL and returns 0 or a code.
struct MacHooks {
    // `=exp': the expression's value as text ("%18.0g" for numbers, trimmed).
    int (*expvalue)(const char* exp, char* dst, size_t n);
    // `.class.ref'
    int (*clsvalue)(const char* ref, char* dst, size_t n);
    // `var[char]'
    int (*charvalue)(const char* var, const char* ch, char* dst, size_t n);
    // `r(x)', `e(x)', `s(x)', `return(x)' (which 'R'), `c(x)'
    int (*resultvalue)(int which, const char* name, char* dst, size_t n);
    // `ferest()': the rest of the innermost foreach list
    int (*ferest)(char* dst, size_t n);
    // `gdi(x)'
    int (*gdivalue)(const char* arg, char* dst, size_t n);
    // Drops the temporary variables named since `since` (frame end).
    int (*droptmpvars)(int32_t since);
    // Moves or drops what the running program's return built (frame end);
    // cls as for rmtmpdyn. When null, the dictionary types are moved here.
    int (*endreturn)(int cls);
};
extern MacHooks mac_hooks;

// Extended macro functions whose data belong to other subsystems. Each entry,
// when set, is called with the tokenizer standing just behind the function's
// word (for `rownames` and kin, `r` `e` `s`: behind the word, which is passed)
// and writes its result to dst (macrolen bytes); it returns 0 or a code.
enum MacFcnHook {
    MXF_TYPE,       // type var
    MXF_FORMAT,     // format var
    MXF_VALUELABEL, // value label var
    MXF_VARLABEL,   // variable label var
    MXF_MATNAMES,   // rownames colnames roweq coleq rowfullnames colfullnames,
                    // rowsof colsof rownumb colnumb
    MXF_SORTEDBY,   // sortedby
    MXF_DISPLAY,    // display ...
    MXF_CHAR,       // char ...
    MXF_LABEL,      // label ...
    MXF_SET,        // set ...
    MXF_LOG,        // log ...
    MXF_SYSDIR,     // sysdir ...
    MXF_DATA,       // data ...
    MXF_PROPERTIES, // properties ...
    MXF_TSNORM,     // tsnorm ...
    MXF_RESULTS,    // r(...) e(...) s(...) c(...)
    MXF_SERSET,     // serset ...
    MXF_PERMNAME,   // permname ...
    MXF_CONSTRAINT, // constraint ...
    MXF_ALLSCALMAT, // all [numeric|string] scalars, all matrices
    MXF_N
};
extern int (*mac_fcn_hooks[MXF_N])(const char* word, char* dst);
// Sets the hooks of label, display, log, properties, tsnorm and permname.
void link_more_macro_functions();

} // namespace korvu
