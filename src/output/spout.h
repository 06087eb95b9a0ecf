// The output layer: every byte a command prints goes through this family,
// which applies the output levels and hands the text to the current engine.
#pragma once
#include <cstdint>
#include <string>

#include "output/ptl/ptl.h"

namespace korvu {

// Levels: 0 result, 1 and 2 text, 3 error, 4 command echo.
extern uint8_t c_outlev;  // level of the text about to be printed
extern uint8_t s_outlev;  // threshold: text passes if c_outlev >= s_outlev
extern uint8_t ls_outlev; // threshold at entry of the enclosing do-file or program
extern uint8_t entertainflg;
extern int32_t moretime; // 0 pause on, 1 off, >1 old numeric form (acts as on)
extern int32_t korvu_linewidth, korvu_pagesize;
extern Ptl* ptl_reswin;
extern Ptl* ptl_cur;
extern char outbuf[512];

int spout21(const char* text);
int spoutptl(const char* text);
int spoutnoptl(const char* text);
int spout21o();
int spoutch(char c);
int spoutvbar();
int spoutdiv(int kind);
int spouthi(int level, const char* text);
int spouterr(const char* text);
void spoutsetptagweak();
void spoutflush();
void spout_setcoloroflev();
int dupch(char c, int count);
int dupstr(const char* text, int count);
int dupblnk(int count);
int blnk();
int spoutblnk(const char* text, int count);
int newline();
int spout20(const char* text);
int spoutfordo(const char* text);
void entertain(const char* text);
void entertainbegin(const char* text);
void entertaincont(const char* text);
void entertainend();
int sysmore();

// printf-style helpers that format into `outbuf` and print at the current level
int spoutf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
// Text at a level of its own, the caller's level kept: a note at level 1, a
// remark at level 4 that `quietly` lets through.
int spoutlev(int level, const char* text);
// Text to be shown as itself inside markup: the braces escaped.
std::string plainmarkup(const char* text);
int spoutlevf(int level, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
int spoutptlf(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

} // namespace korvu
