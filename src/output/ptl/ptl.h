// The ptag markup engine: turns a stream of bytes holding ptag into Line
// templates handed to a sink, one instance per destination.
//
// The engine is split by concern:
//   ptl_core.cpp     open/close, settings, flush, colour/ptag state, the pause
//   ptl_input.cpp    the input path: logs, "{ptag}\n" detection, blocks, scanning
//   ptl_line.cpp     the line writer, runs, links, markers, Line templates
//   ptl_mode.cpp     mode changes and their end work, asis mode
//   ptl_para.cpp     paragraph mode: the word filler
//   ptl_oldhelp.cpp  old help mode (^ and @)
//   ptl_tags*.cpp    the tag table (data) and the tag handlers
//   ptl_log.cpp      the input and output log lists
//   tpl.cpp          helpers that read a finished Line template
#pragma once
#include <cstdint>

namespace korvu {

// Sink messages.
enum : int {
    PTL_LINE = 1,    // a complete line
    PTL_PARTIAL = 2, // the line so far; replaced by the next 1 or 2
    PTL_FLUSH = 3,   // flush now; no template
    PTL_CLOSING = 4, // instance closing; no template
    PTL_MORE = 5,    // show the more prompt template and return the key
    PTL_FOLLOW = 11, // control: follow the end of the text again
    PTL_CTRL12 = 12,
};

// Modes.
enum : int { PTL_ASIS = 1, PTL_LINEMODE = 2, PTL_PARA = 3, PTL_OLDHELP = 4 };

// Attribute byte.
inline constexpr uint8_t ATTR_COLOR = 7;
inline constexpr uint8_t ATTR_FONT = 24;
inline constexpr uint8_t ATTR_ITALIC = 8;
inline constexpr uint8_t ATTR_BOLD = 16;
inline constexpr uint8_t ATTR_UNDERLINE = 32;
inline constexpr uint8_t ATTR_LINEART = 128;
// Colours (bits 0 to 2 of the attribute byte).
inline constexpr int COL_RESULT = 1, COL_TEXT = 2, COL_ERROR = 4, COL_INPUT = 5, COL_LINK = 6,
                     COL_HILITE = 7;

// Line characters in a run with ATTR_LINEART besides '-', '|' and '+'.
inline constexpr uint8_t LA_TT = 1;  // top tee
inline constexpr uint8_t LA_BT = 2;  // bottom tee
inline constexpr uint8_t LA_LT = 3;  // left tee
inline constexpr uint8_t LA_RT = 4;  // right tee
inline constexpr uint8_t LA_BRC = 5; // bottom right corner
inline constexpr uint8_t LA_BLC = 6; // bottom left corner
inline constexpr uint8_t LA_TRC = 7; // top right corner
inline constexpr uint8_t LA_TLC = 8; // top left corner

// Link kinds stored in a template's link table.
enum : int {
    LINK_ADO_D = 1,
    LINK_HELP_D = 2,
    LINK_NET_D = 3,
    LINK_NETFROM_D = 4,
    LINK_SEARCH_D = 5,
    LINK_UPDATE_D = 6,
    LINK_VIEW_D = 7,
    LINK_CLEARMORE = 8,
    LINK_BROWSE = 9,
    LINK_ADORM = 10,
    LINK_BACK = 11,
    LINK_HELP = 12,
    LINK_HELPB = 13,
    LINK_SEARCH = 14,
    LINK_NET = 15,
    LINK_ADO = 16,
    LINK_UPDATE = 17,
    LINK_RNETHELP = 18,
    LINK_VIEW = 19,
    LINK_NEWS = 20,
    LINK_KORVU = 21,
    LINK_LUMOCMD = 23,
    LINK_DIALOG = 25,
};

// Largest Line template: header 10, link table 765, markers 99, runs 514, text 256.
inline constexpr int PTL_TPLMAX = 1644;

// The sink: user data, template (null for messages 3, 4, 11, 12) and message.
// For message 5 it returns the key; otherwise its result is ignored except
// through ptluserrtn2.
using PtlSink = int (*)(void* user, const uint8_t* tpl, int msg);

struct PtlChars {
    int32_t width;
    uint8_t rich;
};

struct Ptl; // defined in ptl_state.h; callers outside the engine use the functions below

Ptl* ptlopen();
void ptlclose(Ptl* p);
void ptlreinitialize(Ptl* p);
void ptlset_maxwidth(Ptl* p, int width);
int ptlquery_maxwidth(const Ptl* p);
void ptlset_chars(Ptl* p, const PtlChars* c);
void ptlquery_chars(const Ptl* p, PtlChars* c);
void ptlset_user(Ptl* p, PtlSink sink, void* user);
void ptlset_useron(Ptl* p);
void ptlset_useroff(Ptl* p);
void ptlsend(Ptl* p, const char* bytes, int len);
void ptlsendraw(Ptl* p, const char* bytes, int len);
void ptlsend_genascii_begin(uint8_t* state);
void ptlsend_genascii(uint8_t* state, Ptl* p, const char* bytes, int len);
void ptlsend_genascii_raw(uint8_t* state, Ptl* p, const char* bytes, int len);
void ptlflush(Ptl* p);
void ptlcolorset(Ptl* p, int colour);
void ptlptagset(Ptl* p);
void ptlptagsetweak(Ptl* p);
void ptlpromptset(Ptl* p);
int ptlmore(Ptl* p); // runs a pause; 113 when the key asked for a break, else 0
void ptlsendtpl(Ptl* p, const uint8_t* tpl, int writelog);
int ptlset_log_input(Ptl* p, int fd, int request);
int ptlset_log_output(Ptl* p, int fd, int request);
int ptl_query_log_err(const Ptl* p);
int ptluserrtn2(Ptl* p, int code);

// Page accounting, read and written by the output layer.
void ptlset_pagesize(Ptl* p, int pagesize);
void ptlset_moreenable(Ptl* p, int on);
int ptlquery_moreenable(const Ptl* p);
void ptlzero_pagelines(Ptl* p);

// Further settings.
int ptlquery_mode(const Ptl* p);
void ptlset_ignore(Ptl* p, int on);      // ignore all sends
void ptlset_nologchange(Ptl* p, int on); // refuse log list changes
void ptlset_linkkinds(Ptl* p, int korvu_kind, int lumocmd_kind);

// `{c name}` accented letters: Latin-1 codes when nonzero (the start value),
// Mac Roman codes when 0.
extern int ptlcharset;

// `{ccl name}` asks this for the text of c(name); absent, or a false result,
// makes the tag fail.
using PtlCclLookup = bool (*)(const char* name, char* out, int outsize);
void ptlset_ccl_lookup(PtlCclLookup fn);

// Prerendered templates, made when the first instance opens.
extern uint8_t tpl_empty[79];
extern int tpl_empty_len;
const uint8_t* ptl_more_template(); // null when the prompt could not be rendered

// Template helpers for sinks and renderers.
int find_tag(const char* list, const char* name);
int tpl_tagmatch(const char* list, const char* name);
int tpl_renpiece(const uint8_t* runs, int col, uint8_t* attr);
const uint8_t* tpl_clickable(const uint8_t* links, int col, int* index);
const char* tpl_clickable_contents(const uint8_t* entry, int* kind);
int tpl_has_wide(const uint8_t* runs);
void tpl_make_ascii(const uint8_t* runs, char* text);

// Field access on a template record.
inline int tpl_u16(const uint8_t* t, int off) {
    return t[off] | (t[off + 1] << 8);
}
inline const uint8_t* tpl_links(const uint8_t* t) {
    return t + 10;
}
inline const uint8_t* tpl_markers(const uint8_t* t) {
    return t + tpl_u16(t, 2);
}
inline const uint8_t* tpl_runs(const uint8_t* t) {
    return t + tpl_u16(t, 4);
}
inline const char* tpl_text(const uint8_t* t) {
    return reinterpret_cast<const char*>(t + tpl_u16(t, 6));
}
// Bytes of text: the record ends with the text and its terminator.
inline int tpl_textlen(const uint8_t* t) {
    return tpl_u16(t, 0) - tpl_u16(t, 6) - 1;
}
inline int tpl_continued(const uint8_t* t) {
    return t[8];
}

} // namespace korvu
