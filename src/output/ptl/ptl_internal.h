// Functions the parts of the engine share. Not for callers outside src/output/ptl*.
#pragma once
#include <cstdint>
#include <string_view>

#include "output/ptl/ptl_state.h"

namespace korvu::ptl {

// The system's line ending written to log files.
inline constexpr const char* eolchar = "\n";
inline constexpr int szeolchar = 1;

inline uint16_t cur_cattr(const Ptl* p) {
    return static_cast<uint16_t>(p->attr | (p->link_active ? CA_LINK : 0));
}

// ---- the line (ptl_line.cpp)
void start_line(Ptl* p, bool cont, bool keep_markers = false);
void reset_line_plain(Ptl* p, bool keep_markers); // empty line, no indent, line mode
void emit_line(Ptl* p);                           // hand the line out; state stays stale
void end_line(Ptl* p);                            // emit, then a fresh line
void put_chars(Ptl* p, const char* s, int n, uint16_t cattr); // line writer, no line feeds
int build_tpl(const Ptl* p, uint8_t* out, bool partial);
bool link_room(const Ptl* p, int tlen);
bool link_open(Ptl* p, int kind, std::string_view target);
void link_end_tag(Ptl* p); // the link tag's text is over
void link_force_close(Ptl* p);
bool add_marker(Ptl* p, std::string_view name);
void count_page(Ptl* p);

// ---- input (ptl_input.cpp)
void feed(Ptl* p, const char* s, int n);          // after the input log: cut, ptag detection
void process_block(Ptl* p, const char* s, int n); // per-block rules
void process_text(Ptl* p, std::string_view s);    // tag text, one depth deeper
void out_text(Ptl* p, const char* s, int n);      // text between tags: tabs, then put_text
void put_text(Ptl* p, const char* s, int n, uint16_t cattr);
inline void put_text(Ptl* p, const char* s, int n) {
    put_text(p, s, n, cur_cattr(p));
}
inline void put_text(Ptl* p, std::string_view s) {
    put_text(p, s.data(), static_cast<int>(s.size()));
}
void pad(Ptl* p, int n); // blanks (non-breaking in paragraph mode)
int text_width(const Ptl* p, std::string_view s);

// ---- modes (ptl_mode.cpp)
void set_mode(Ptl* p, int mode);
bool enter_para(Ptl* p, int first, int left, int right);
void asis_write(Ptl* p, const char* s, int n);
void close_pending(Ptl* p); // at close: held prefix, held tag text, held word

// ---- paragraph (ptl_para.cpp)
void para_text(Ptl* p, const char* s, int n, uint16_t cattr);
void para_place_held(Ptl* p);
bool held_has_link(const Ptl* p);

// ---- old help (ptl_oldhelp.cpp)
void oldhelp_feed(Ptl* p, const char* s, int n);
void oldhelp_line(Ptl* p, const char* s, int n);  // a whole line, then its end
void oldhelp_piece(Ptl* p, const char* s, int n); // ^ and @ pairs, line left open

// ---- tags (ptl_tags.cpp)
bool run_tag(Ptl* p, std::string_view body);

// ---- logs (ptl_log.cpp)
void log_alloc(Ptl* p);
void log_free(Ptl* p);
void log_input(Ptl* p, const char* s, int n);
void log_output_line(Ptl* p, const char* text, int n, bool eol);
void log_flush(PtlLogList& l);

// ---- core (ptl_core.cpp)
extern PtlCclLookup ccl_lookup;

} // namespace korvu::ptl
