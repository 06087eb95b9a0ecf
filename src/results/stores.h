// The result stores: r() of the last general command, e() of the last
// estimation, s() of parsing programs, and the return a running r-class
// program builds. Items live in the dictionary under fixed type numbers;
// r and e keep a 20-entry table of scalars in front of it so that posting a
// number costs no dictionary traffic.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

namespace korvu {

// Dictionary types of the stores.
enum : int {
    RT_SCALAR = 20, // r scalars beyond the internal table
    RT_MACRO = 21,
    RT_MATRIX = 22,
    RT_MATROW = 23,
    RT_MATCOL = 24,
    ET_SCALAR = 25,
    ET_MACRO = 26,
    ET_MATRIX = 27,
    ET_MATROW = 28,
    ET_MATCOL = 29,
    ST_MACRO = 30,
    ET_RECORD = 5, // gamma, colnames, _bn, recipes, _b, VCE, Cns
};
// The return being built: typelmac + 64 * k, k = 1 scalars, 2 macros,
// 3 matrices, 4 row stripes, 5 column stripes.
int myrettype(int k);

inline constexpr int RETVAL_MAX = 20; // entries of an internal scalar table
inline constexpr double RETVAL_NOTGIVEN = 1000000;

struct RetvalEntry {
    char name[33];
    double value;
};

extern int32_t retval_flag;    // bit 1 table current, bit 2 dictionary types may hold items
extern int32_t local_retval_n; // entries of the r table
extern RetvalEntry local_retval[RETVAL_MAX];
extern int32_t estval_n; // entries of the e table
extern RetvalEntry estval[RETVAL_MAX];
extern int32_t lastest, lastest_op;

// Find codes.
enum : int { RF_ABSENT = 0, RF_SCALAR = 15, RF_MACRO = 3059, RF_MATRIX = 9 };
// Class numbers for gretval_find and the listings.
enum : int { RC_R = 3, RC_MINE = 4, RC_E = 5, RC_S = 6 };

// --- r -----------------------------------------------------------------------
void retval_clear();
void retval_zap();
int retval_set_scalar(const char* name, double value);
int retval_set_local(const char* name, const char* text);
int retval_reset_scalar(const char* name, double value);
void retval_erase(const char* name);
int retval_internal_to_dynamic();
int retval_get_internal_scalar(int i, char* name, double* value);

// --- finding and reading through the last-found cursor ---------------------
int retval_find(const char* name);
int estval_find(const char* name);
int sretval_find(const char* name);
int myretval_find(const char* name);
int gretval_find(int cls, const char* name);
void retval_not_found();
double retval_get_as_double();
int retval_get_as_double_any(double* out);
void retval_get_as_string(char* buf, size_t size);
const char* retval_get_strptr();
void* retval_cursor_item(); // the dictionary item found, or null
void retval_debug();        // the table and its flag, for debugging

// --- the return being built --------------------------------------------------
void myretval_clear();
void myretval_erase(const char* name);
int myretval_reset_scalar(const char* name, double value);
int myretval_reset_local(const char* name, const char* text);
int myretval_add();
// Program exit: cls 1 r-class (the return becomes r()), 2 e-class, 3 s-class,
// 0 none (the return is dropped, r() stays).
int endreturn(int cls);

// --- s -----------------------------------------------------------------------
void sretval_clear();
int sretval_reset_local(const char* name, const char* text);

// --- e -----------------------------------------------------------------------
void estval_clear();
int ab_est(int flag);
void estval_partial_clear_for_huber();
void estval_partial_clear_for_post();
int estval_set_scalar(const char* name, double value);
int estval_reset_scalar(const char* name, double value);
int estval_set_local(const char* name, const char* text);
int estval_reset_local(const char* name, const char* text);
void estval_erase(const char* name);
int estval_get_internal_scalar(int i, char* name, double* value);
int estval_internal_to_dynamic();
double estval_get_double(const char* name);
int estval_save_vcetype(const char* text);
int estval_resave_vcetype(const char* text);
void estval_use_vcetype(char* buf, size_t size);
int estval_save_clustvar(const char* text);
void estval_use_clustvar(char* buf, size_t size);
void estval_erase_clustvar();
int estval_save_N_clust(int n);
int estval_use_N_clust();
void estval_erase_N_clust();
void estuseshort(const char* name, char* buf, size_t size);
bool hasmatforretval(int type, char which);

// The e(sample) marker variable: its number, or 0.
int esample_var();
// Names behind e(scalars) and kin: kind 1 scalars, 2 macros, 3 matrices,
// 4 functions; cls as for gretval_find. 0 or 1000 (list too long).
int retvals_dir(int cls, int kind, std::string& out);

// Saved macros: NUL-terminated, tag the length with the NUL; empty text
// removes. 0 or 950.
int retmac_save(const char* name, int type, const char* text);
// Removes every item of the type whose name starts with prefix.
void dmzap_prefix(int type, const char* prefix);

// --- commands ----------------------------------------------------------------
int returncmd(int);
int sreturncmd(int);
int ereturncmd(int);
int estimatescmd(int); // the old word, below version 8
int _estimatescmd(int);
int _returncmd(int);
int creturncmd(int);

// Hold table of estimates.
inline constexpr int NHOLD = 301;
extern uint8_t hastmp_estheld;
void zapesti();
int cleanesti_level(int32_t since);
const char* estidir_one(int i);
int estirestore_pending();

void link_results();

} // namespace korvu
