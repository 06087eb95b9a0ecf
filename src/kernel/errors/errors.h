// Return codes and their messages. A function that fails prints its message
// where it fails (usually through `error`) and returns the code; nothing throws.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

extern int32_t globalrc; // code of the last request
extern int32_t captrc;   // code of the last captured request; `_rc`
extern uint8_t error_style;

int error(int code);
// A message of the caller's own: the text at the error level (the level is
// put back after), and the code returned, as in `return errtext(198, "...")`.
// errorf formats the text first; errptl takes markup (paragraphs, links).
int errtext(int code, const char* text);
int errorf(int code, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
int errptl(int code, const char* text);
// The same without a code: a message that another one follows, or whose code
// the caller settles later.
void errsay(const char* text);
void errsayf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
int invalid(const char* what);
int required(const char* what);
int notalow(const char* what);
int error2(int kind, const char* name);
int error2part(const char* prefix, int code, int flag);
int errornumlist(int code, int isnumber);
int gnrnotfound(const char* x);
int varnotfound(const char* x);
int matnotfound(const char* x);
int regrnotfound(const char* x);
int eqnotfound(const char* x);
int macnotfound(const char* x);
int veqnonf(const char* x);
int rcptoolong(const char* op);
int rcpinvalid(const char* op);
int rcpdtoobig(const char* op);
int experr(const char* found, int q1, const char* expected, int q2);
int unmatchedquote();
int unbalanced_quotes();
int braceerror(int isopen);
int nomatchbrace();
int noobsnoerr();
int fierr(int code, const char* filename);
int extended_error(double value);
inline constexpr size_t MSGLEN = 32; // loadmsg: longest entry of the table and its end
char* loadmsg(char* dst, int i);
int errcmd();

} // namespace korvu
