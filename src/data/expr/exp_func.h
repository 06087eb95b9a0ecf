// The function table of expressions and the string functions behind it.
#pragma once
#include <cstdint>

namespace korvu {

// A row: name and packed description: low 16 bits opcode (0: not available
// yet); bits 16-23 argument count; bit 24 string arguments; bit 31 may be
// written without parentheses; bit 32 string result.
struct FnRow {
    const char* name;
    uint64_t desc;
};
constexpr uint64_t fndesc(int op, int nargs, int strargs, int noparen, int strres) {
    return static_cast<uint64_t>(static_cast<uint16_t>(op)) | static_cast<uint64_t>(nargs) << 16 |
           static_cast<uint64_t>(strargs) << 24 | static_cast<uint64_t>(noparen) << 31 |
           static_cast<uint64_t>(strres) << 32;
}
inline int fn_op(const FnRow& r) {
    return static_cast<int>(r.desc & 0xFFFF);
}
inline int fn_nargs(const FnRow& r) {
    return static_cast<int>(r.desc >> 16 & 0xFF);
}
extern const FnRow fntable[];
extern const int nfntable;
const FnRow* findfn(const char* name); // exact name; null when none

// String functions: the result goes to out (EXP_STRMAX + 1 bytes), cut at
// EXP_STRMAX characters.
void s_lower(const char* s, char* out);
void s_upper(const char* s, char* out);
void s_proper(const char* s, char* out);
void s_itrim(const char* s, char* out);
void s_ltrim(const char* s, char* out);
void s_rtrim(const char* s, char* out);
void s_trim(const char* s, char* out);
void s_reverse(const char* s, char* out);
void s_substr(const char* s, double n1, double n2, char* out);
void s_subinstr(const char* s, const char* from, const char* to, double count, int words,
                char* out);
void s_word(const char* s, double n, char* out);
void s_abbrev(const char* s, double n, char* out);
void s_char(double n, char* out);
void s_strsubdp(const char* s, char* out);
void s_string(double x, const char* fmt, char* out);               // fmt null: the default
void s_plural(double n, const char* s, const char* s2, char* out); // s2 null: add "s"
void s_regexr(const char* s, const char* re, const char* repl, char* out);
void s_regexs(double n, char* out);
double s_real(const char* s);
double s_strpos(const char* s, const char* t);
double s_indexnot(const char* s, const char* t);
double s_wordcount(const char* s);
double s_match(const char* s, const char* pattern);
double s_regexm(const char* s, const char* re);
double s_sdate(const char* s, const char* order, int kind);

} // namespace korvu
