// The tag table and what its handlers share: the argument scanner and the
// call record. The table itself (ptl_tags.cpp) is data: one constexpr list of
// tag names, each with its handler, a parameter for it, flags and a line of
// documentation.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "output/ptl/ptl_internal.h"

namespace korvu::ptl {

// Reads a tag's arguments one at a time: blanks are skipped; `"` starts a
// quoted argument up to the next `"`; `` `" `` a compound-quoted one, nested,
// up to the matching `"'`; otherwise an argument runs to a blank or the stop
// character. An argument longer than 254 bytes sets `bad`.
struct ArgScan {
    std::string_view s;
    size_t i = 0;
    bool bad = false;

    void skip() {
        while (i < s.size() && s[i] == ' ') i++;
    }
    bool end() {
        skip();
        return i >= s.size();
    }
    // At the `:` that starts the tag's text.
    bool at_text() {
        skip();
        return i < s.size() && s[i] == ':';
    }
    std::string_view text() const { return s.substr(i + 1); }
    // The next argument; false at the end, at the stop character, or when bad.
    bool next(std::string& out, char stop = ':');
    // The next argument as a whole number; false if there is none (`bad` set
    // when there is one that is not a number).
    bool next_int(int& v, char stop = ':');
    // A link's argument: quoted, or everything up to the `:` less trailing blanks.
    bool link_arg(std::string& out);
};

bool parse_int(std::string_view s, int& v);

struct TagDef;
struct TagCall {
    const TagDef* def;
    std::string_view word;
    ArgScan a;
};

using TagFn = bool (*)(Ptl*, TagCall&);

enum : uint8_t {
    TF_DEPTH1 = 1,   // refused below the outermost level (changes mode or margins)
    TF_ARG_MUST = 2, // links: the target argument is required
    TF_ARG_NONE = 4, // links: no target argument allowed
};

struct TagDef {
    std::string_view name;
    TagFn fn = nullptr;
    int16_t arg = 0; // handler parameter: colour, font, link kind, preset, ...
    uint8_t flags = 0;
    std::string_view doc;
};

const TagDef* find_tagdef(std::string_view name);

// The `c` tag's names: code and whether it is line art.
bool char_lookup(std::string_view name, int& code, bool& lineart);

// Handlers.
bool tag_colour(Ptl*, TagCall&);
bool tag_font(Ptl*, TagCall&);
bool tag_ul(Ptl*, TagCall&);
bool tag_reset(Ptl*, TagCall&);
bool tag_setmode(Ptl*, TagCall&);
bool tag_ptag(Ptl*, TagCall&);
bool tag_dots(Ptl*, TagCall&);
bool tag_rule(Ptl*, TagCall&);
bool tag_hline(Ptl*, TagCall&);
bool tag_char(Ptl*, TagCall&);
bool tag_dup(Ptl*, TagCall&);
bool tag_col(Ptl*, TagCall&);
bool tag_space(Ptl*, TagCall&);
bool tag_tab(Ptl*, TagCall&);
bool tag_bind(Ptl*, TagCall&);
bool tag_break(Ptl*, TagCall&);
bool tag_marker(Ptl*, TagCall&);
bool tag_newpage(Ptl*, TagCall&);
bool tag_ccl(Ptl*, TagCall&);
bool tag_right(Ptl*, TagCall&);
bool tag_center(Ptl*, TagCall&);
bool tag_align(Ptl*, TagCall&);
bool tag_title(Ptl*, TagCall&);
bool tag_dlgtab(Ptl*, TagCall&);
bool tag_link(Ptl*, TagCall&);
bool tag_cmdab(Ptl*, TagCall&);
bool tag_opt(Ptl*, TagCall&);
bool tag_manhelp(Ptl*, TagCall&);
bool tag_abbrev(Ptl*, TagCall&);
bool tag_p(Ptl*, TagCall&);
bool tag_p_end(Ptl*, TagCall&);
bool tag_p2colset(Ptl*, TagCall&);
bool tag_p2colreset(Ptl*, TagCall&);
bool tag_p2col(Ptl*, TagCall&);
bool tag_p2line(Ptl*, TagCall&);
bool tag_synoptset(Ptl*, TagCall&);
bool tag_synopthdr(Ptl*, TagCall&);
bool tag_syntab(Ptl*, TagCall&);

} // namespace korvu::ptl
