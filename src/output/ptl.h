// The ptag markup engine: turns a stream of bytes holding ptag into Line
// templates handed to a sink, one instance per destination.
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
enum : uint8_t {
    ATTR_COLOR = 7,
    ATTR_FONT = 24,
    ATTR_ITALIC = 8,
    ATTR_BOLD = 16,
    ATTR_UNDERLINE = 32,
    ATTR_LINEART = 128,
};
enum : int {
    COL_RESULT = 1,
    COL_TEXT = 2,
    COL_ERROR = 4,
    COL_INPUT = 5,
    COL_LINK = 6,
    COL_HILITE = 7
};

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

} // namespace korvu
