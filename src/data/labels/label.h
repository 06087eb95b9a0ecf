// Labels: value-label tables, variable labels, the data label and the label
// languages. All live in the dictionary: kind 1 a value-label table under the
// label's name, kind 6 a variable label under the variable's name.
//
// A value-label table is one block, which is also its form on disk:
//     int32 n, int32 txtlen, int32 off[n], int32 val[n], char txt[txtlen]
// val ascending; each off[i] indexes a zero-terminated text in txt. Extended
// missing values are held as their `long` codes (kvlong_of_kvdouble).
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace korvu {

inline constexpr int VL_MAXENTRIES = 65536;
inline constexpr int VL_MAXTEXT = 32000; // longest label text accepted from a file
inline constexpr int VARLAB_MAX = 80;    // variable and data labels

extern char datalbl[VARLAB_MAX + 1]; // the data label
extern int vl_error;                 // last failure: 950, 134, 9270

// --- the table ----------------------------------------------------------------
inline int32_t vl_n(const int32_t* t) {
    return t[0];
}
inline int32_t vl_txtlen(const int32_t* t) {
    return t[1];
}
inline int32_t* vl_off(int32_t* t) {
    return t + 2;
}
inline const int32_t* vl_off(const int32_t* t) {
    return t + 2;
}
inline const int32_t* vl_val(const int32_t* t) {
    return t + 2 + t[0];
}
inline int32_t* vl_val(int32_t* t) {
    return t + 2 + t[0];
}
inline const char* vl_txt(const int32_t* t) {
    return reinterpret_cast<const char*>(t + 2 + 2 * t[0]);
}
inline char* vl_txt(int32_t* t) {
    return reinterpret_cast<char*>(t + 2 + 2 * t[0]);
}
inline size_t vl_bytes(int64_t n, int64_t txtlen) {
    return static_cast<size_t>(8 + 8 * n + txtlen);
}

int32_t* vlfind(const char* name);
int32_t* vlallocate(const char* name, int32_t n, int32_t txtlen);
// Index of x, or -(insertion point + 1). Text to dst when given: whole when
// maxlen > 32000, else cut to maxlen characters.
int vlfindval(const int32_t* tbl, char* dst, int maxlen, double x);
int vlfindzval(const int32_t* tbl, char* dst, int maxlen, double x);
// New table with x/text inserted at `position`; the old block is replaced and
// the new one returned (null with vl_error set).
int32_t* vladdlab(int32_t* tbl, int position, const char* text, double x);
int32_t* vlrmlab(int32_t* tbl, int index);
int vlfindtxt(const int32_t* tbl, const char* text, double* x);
// `label:"text"` of expressions: 1 and the value when label `name` has the text.
int vlsearch(const char* name, const char* text, double* x);
int vlgetcount(const int32_t* tbl);
int vlnmappings(const char* name); // entries, or -1 when there is no such label
int vlgetmapping(const int32_t* tbl, int i, double* x, const char** text);
double vlgetofi(const int32_t* tbl, int i);      // value of entry i
const char* vlgetofz(const int32_t* tbl, int i); // text of entry i
int vllist(const int32_t* tbl);                  // 0 or 1 on break
int vlmaxlen(const int32_t* tbl);
int vlable(int report, double x); // 0 or 198
// Do-file form of one table; 0 or 693.
int vlwrite(FILE* f, const int32_t* tbl);
// Swaps n, txtlen and every offset and value; `tonative` says the table is in
// the foreign order now (n is read after swapping), else before.
void vlrevbytes(int32_t* tbl, int tonative = 1);
// 0 when a block of `len` bytes read from a file is a well-formed table; it
// checks sizes, offsets, terminators and ascending values. Byte order native.
int vlcheck(const int32_t* tbl, int64_t len);
// Builds a modern table from the entries of an old file (8-character texts).
int32_t* vloldvlab(const char* name, int n, const int16_t* vals, const char* texts8);
// Is the label used by some variable?
int vallabinuse(const char* name);
// Text of value x in label `name` (the hook behind reforml_lookup); null for none.
const char* vl_lookup(const char* name, double x);

// --- variable labels ---------------------------------------------------------
char* getvarlab(int v, char* buf); // buf of 81 bytes; "" when none
char* getvarlabshort(int v, char* buf, int n);
int putvarlab(int v, const char* text); // cut to 80; "" removes; 0 or 950
const char* ptrvarlab(int v);           // null when none
// Data label: cut to 80.
void putdatalbl(const char* text);

// --- the dataset's labels as a whole ------------------------------------------
// Removes variable labels, characteristics and the data label; with `vallabs`
// the value-label tables too (what `clear` and `use` do).
void labels_clear(int vallabs);
// Links the labels subsystem into the data area and the formats (drop_all,
// reforml_lookup, macro `var[char]'); idempotent.

// --- label languages ------------------------------------------------------------
inline constexpr int MLL_MAXLANG = 100;
int mll_chkname(const char* name, int mustexist, int report);
char* mll_current(char* dst); // 33 bytes
int mll_setcurrent(const char* name);
int mll_languages(char names[][33], int max);
char* mll_build_langstr(char* dst, size_t n);
int mll_langexists(const char* name);
int mll_addlanguage(const char* name);
int mll_rmlanguage(const char* name);
int mll_langrename(const char* from, const char* to);
int mlc_post(const char* lang); // labels in use -> characteristics of lang
int mlc_clear();                // removes the labels in use
int mlc_copy(const char* lang); // characteristics of lang -> labels in use

// --- commands ------------------------------------------------------------------
int labelcmd(int);

} // namespace korvu
