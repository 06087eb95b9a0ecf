// The tag table and the dispatch of a tag: the word, an optional `?`, the
// depth rule, then the handler with the rest as its arguments.
#include <algorithm>
#include <array>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

// clang-format off
inline constexpr TagDef kTagTable[] = {
    // Style: without text the attribute changes for what follows; with :text it
    // holds during the text and is then put back.
    {"res",       tag_colour, COL_RESULT, 0, "colour 1 (result)"},
    {"result",    tag_colour, COL_RESULT, 0, "colour 1 (result)"},
    {"yellow",    tag_colour, COL_RESULT, 0, "colour 1 (result)"},
    {"ye",        tag_colour, COL_RESULT, 0, "colour 1 (result)"},
    {"txt",       tag_colour, COL_TEXT,   0, "colour 2 (text)"},
    {"text",      tag_colour, COL_TEXT,   0, "colour 2 (text)"},
    {"green",     tag_colour, COL_TEXT,   0, "colour 2 (text)"},
    {"gr",        tag_colour, COL_TEXT,   0, "colour 2 (text)"},
    {"err",       tag_colour, COL_ERROR,  0, "colour 4 (error)"},
    {"error",     tag_colour, COL_ERROR,  0, "colour 4 (error)"},
    {"red",       tag_colour, COL_ERROR,  0, "colour 4 (error)"},
    {"re",        tag_colour, COL_ERROR,  0, "colour 4 (error)"},
    {"com",       tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"command",   tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"inp",       tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"input",     tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"white",     tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"wh",        tag_colour, COL_INPUT,  0, "colour 5 (input)"},
    {"cmd",       tag_colour, COL_HILITE, 0, "colour 7 (highlight)"},
    {"hi",        tag_colour, COL_HILITE, 0, "colour 7 (highlight)"},
    {"hilite",    tag_colour, COL_HILITE, 0, "colour 7 (highlight)"},
    {"bf",        tag_font, ATTR_BOLD,   0, "bold"},
    {"it",        tag_font, ATTR_ITALIC, 0, "italic"},
    {"sf",        tag_font, 0,           0, "standard font"},
    {"rm",        tag_font, 0,           0, "standard font"},
    {"ul",        tag_ul,    0, 0, "ul on, ul off, ul:text: underline"},
    {"reset",     tag_reset, 0, 0, "attribute back to 2; no text allowed"},

    // Modes.
    {"asis",      tag_setmode, PTL_ASIS,    TF_DEPTH1, "asis mode until \"{ptag}\\n\""},
    {"k6hlp",     tag_setmode, PTL_OLDHELP, TF_DEPTH1, "old help mode"},
    {"ptag",      tag_ptag,    0, 0, "only as \"{ptag}\\n\" at the end of a block"},

    // Lines, characters and spacing.
    {"...",       tag_dots,  0, 0, "line mode: the next line feed does not end the line"},
    {".-",        tag_rule,  0, 0, "ends the line, a full-width rule, drops the next line feed"},
    {"hline",     tag_hline, 0, 0, "hline [#]: line art of # characters (negative: less than what is left)"},
    {"c",         tag_char,  0, 0, "c x: one character by name, 0xHH or decimal"},
    {"char",      tag_char,  0, 0, "as c"},
    {"dup",       tag_dup,   0, 0, "dup #:text: the text # times, 0 to 999"},
    {"col",       tag_col,   0, 0, "col #[:text]: line mode, pad (or repeat the text) to column #"},
    {"space",     tag_space, 0, 0, "space #: # blanks, non-breaking in paragraph mode"},
    {"tab",       tag_tab,   0, 0, "line mode: blanks to the next multiple of 8"},
    {"right",     tag_right, 0, 0, "right:text: line mode, right-aligned at the margin"},
    {"center",    tag_center, 0, 0, "center [#]:text: centred (left pad rounds down)"},
    {"centre",    tag_center, 0, 0, "as center"},
    {"rcenter",   tag_center, 1, 0, "rcenter [#]:text: centred (left pad rounds up)"},
    {"rcentre",   tag_center, 1, 0, "as rcenter"},
    {"lalign",    tag_align, 0, 0, "lalign #:text: padded on the right to # columns"},
    {"ralign",    tag_align, 1, 0, "ralign #:text: padded on the left to # columns"},
    {"bind",      tag_bind,  0, 0, "bind:text: paragraph mode, its blanks are non-breaking"},
    {"break",     tag_break, 0, TF_DEPTH1, "ends the line; resets a paragraph's line count"},
    {"title",     tag_title, 0, 0, "title:text: line mode, a title"},
    {"dlgtab",    tag_dlgtab, 0, 0, "dlgtab [# [#]]:text: line mode, a tab drawn over two lines"},
    {"marker",    tag_marker, 0, 0, "marker name: a marker on the line"},
    {"newpage",   tag_newpage, 0, 0, "a form-feed marker"},
    {"ccl",       tag_ccl,   0, 0, "ccl name: the text of c(name)"},

    // Syntax diagrams.
    {"cmdab",     tag_cmdab,   0, 0, "cmdab:first:second[:third]: command with abbreviation"},
    {"opt",       tag_opt,     0, 0, "opt name[(arg)] or opt first:rest[(arg)]: an option"},
    {"opth",      tag_opt,     1, 0, "opth name(arg): an option whose arg is a help link"},
    {"manhelp",   tag_manhelp, 0, 0, "manhelp name SECTION[:text]"},
    {"manhelpi",  tag_manhelp, 1, 0, "manhelpi name SECTION[:text]"},
    {"ifin",      tag_abbrev, 0, 0, "[if] [in] as help links"},
    {"weight",    tag_abbrev, 1, 0, "[weight] as a help link"},
    {"dtype",     tag_abbrev, 2, 0, "[type] linked to datatypes"},
    {"var",       tag_abbrev, 3, 0, "varname as a help link"},
    {"varname",   tag_abbrev, 3, 0, "varname as a help link"},
    {"vars",      tag_abbrev, 4, 0, "varlist as a help link"},
    {"varlist",   tag_abbrev, 4, 0, "varlist as a help link"},
    {"depvar",    tag_abbrev, 5, 0, "depvar as a help link"},
    {"depvars",   tag_abbrev, 6, 0, "depvarlist as a help link"},
    {"depvarlist",tag_abbrev, 6, 0, "depvarlist as a help link"},
    {"indepvars", tag_abbrev, 7, 0, "indepvars as a help link"},
    {"newvar",    tag_abbrev, 8, 0, "newvar as a help link"},

    // Paragraphs.
    {"p",         tag_p, -1, TF_DEPTH1, "p [# [# [#]]]: paragraph: first indent, left indent, right margin"},
    {"pstd",      tag_p, 0, TF_DEPTH1, "p 4 4 2"},
    {"psee",      tag_p, 1, TF_DEPTH1, "p 4 13 2"},
    {"phang",     tag_p, 2, TF_DEPTH1, "p 4 8 2"},
    {"pmore",     tag_p, 3, TF_DEPTH1, "p 8 8 2"},
    {"pin",       tag_p, 3, TF_DEPTH1, "p 8 8 2"},
    {"phang2",    tag_p, 4, TF_DEPTH1, "p 8 12 2"},
    {"pmore2",    tag_p, 5, TF_DEPTH1, "p 12 12 2"},
    {"pin2",      tag_p, 5, TF_DEPTH1, "p 12 12 2"},
    {"phang3",    tag_p, 6, TF_DEPTH1, "p 12 16 2"},
    {"pmore3",    tag_p, 7, TF_DEPTH1, "p 16 16 2"},
    {"pin3",      tag_p, 7, TF_DEPTH1, "p 16 16 2"},
    {"p_end",     tag_p_end, 0, TF_DEPTH1, "ends a paragraph without the empty line"},

    // Two columns.
    {"p2colset",  tag_p2colset,   0, 0, "p2colset # # # # [#]: first, second, wrap column, right margin, dent"},
    {"p2colreset",tag_p2colreset, 0, 0, "p2colset 1 31 35 0 2"},
    {"p2col",     tag_p2col, 0, TF_DEPTH1, "p2col [# # # #]:first: paragraph with a first column"},
    {"p2coldent", tag_p2col, 1, TF_DEPTH1, "as p2col, from the first column plus the dent"},
    {"p2line",    tag_p2line, 0, TF_DEPTH1, "p2line [# #]: a rule from the first column to the margin"},
    {"p2linedent",tag_p2line, 1, TF_DEPTH1, "as p2line, from the first column plus the dent"},
    {"synoptset", tag_synoptset, 0, 0, "synoptset [#] [tabbed]: layout of an option table"},
    {"synopt",    tag_p2col,  0, TF_DEPTH1, "as p2col"},
    {"synoptline",tag_p2line, 1, TF_DEPTH1, "as p2linedent"},
    {"synopthdr", tag_synopthdr, 0, 0, "synopthdr[:text]: options/description header"},
    {"syntab",    tag_syntab, 0, TF_DEPTH1, "syntab:text: a group heading"},

    // Links: tagword [args]:text.
    {"ado_d",     tag_link, LINK_ADO_D,     TF_ARG_NONE, "link kind 1"},
    {"asdialog",  tag_link, LINK_ADO_D,     TF_ARG_NONE, "link kind 1"},
    {"cdialog",   tag_link, LINK_HELP_D,    TF_ARG_NONE, "link kind 2"},
    {"help_d",    tag_link, LINK_HELP_D,    TF_ARG_NONE, "link kind 2"},
    {"nsdialog",  tag_link, LINK_NET_D,     TF_ARG_NONE, "link kind 3"},
    {"net_d",     tag_link, LINK_NET_D,     TF_ARG_NONE, "link kind 3"},
    {"nfdialog",  tag_link, LINK_NETFROM_D, TF_ARG_NONE, "link kind 4"},
    {"netfrom_d", tag_link, LINK_NETFROM_D, TF_ARG_NONE, "link kind 4"},
    {"sdialog",   tag_link, LINK_SEARCH_D,  TF_ARG_NONE, "link kind 5"},
    {"search_d",  tag_link, LINK_SEARCH_D,  TF_ARG_NONE, "link kind 5"},
    {"ufdialog",  tag_link, LINK_UPDATE_D,  TF_ARG_NONE, "link kind 6"},
    {"update_d",  tag_link, LINK_UPDATE_D,  TF_ARG_NONE, "link kind 6"},
    {"vdialog",   tag_link, LINK_VIEW_D,    TF_ARG_NONE, "link kind 7"},
    {"view_d",    tag_link, LINK_VIEW_D,    TF_ARG_NONE, "link kind 7"},
    {"clearmore", tag_link, LINK_CLEARMORE, TF_ARG_NONE, "link kind 8"},
    {"browse",    tag_link, LINK_BROWSE,    TF_ARG_MUST, "link kind 9"},
    {"adorm",     tag_link, LINK_ADORM,     TF_ARG_MUST, "link kind 10"},
    {"back",      tag_link, LINK_BACK,      TF_ARG_NONE, "link kind 11"},
    {"help",      tag_link, LINK_HELP,      TF_ARG_MUST, "link kind 12"},
    {"helpb",     tag_link, LINK_HELPB,     TF_ARG_MUST, "link kind 13: stored as 12, shown bold"},
    {"search",    tag_link, LINK_SEARCH,    TF_ARG_MUST, "link kind 14"},
    {"net",       tag_link, LINK_NET,       TF_ARG_MUST, "link kind 15"},
    {"ado",       tag_link, LINK_ADO,       TF_ARG_MUST, "link kind 16"},
    {"update",    tag_link, LINK_UPDATE,    0,           "link kind 17"},
    {"rnethelp",  tag_link, LINK_RNETHELP,  TF_ARG_MUST, "link kind 18"},
    {"view",      tag_link, LINK_VIEW,      TF_ARG_MUST, "link kind 19"},
    {"news",      tag_link, LINK_NEWS,      TF_ARG_NONE, "link kind 20"},
    {"korvu",     tag_link, -1,             TF_ARG_MUST, "link of the instance's korvu kind (21)"},
    {"lumocmd",   tag_link, -2,             TF_ARG_MUST, "link of the instance's lumocmd kind (23)"},
    {"dialog",    tag_link, LINK_DIALOG,    TF_ARG_MUST, "link kind 25"},
};
// clang-format on

inline constexpr size_t kNTags = std::size(kTagTable);

// Sorted at compile time; names are compared after a dispatch on the first byte.
inline constexpr auto kSorted = [] {
    std::array<TagDef, kNTags> a{};
    for (size_t i = 0; i < kNTags; i++) a[i] = kTagTable[i];
    std::sort(a.begin(), a.end(), [](const TagDef& x, const TagDef& y) { return x.name < y.name; });
    return a;
}();

inline constexpr auto kFirstByte = [] {
    std::array<uint16_t, 257> idx{};
    size_t k = 0;
    for (int c = 0; c < 256; c++) {
        while (k < kNTags && static_cast<unsigned char>(kSorted[k].name[0]) < c) k++;
        idx[c] = static_cast<uint16_t>(k);
    }
    idx[256] = static_cast<uint16_t>(kNTags);
    return idx;
}();

static_assert(
    [] {
        for (size_t i = 0; i + 1 < kNTags; i++)
            if (kSorted[i].name == kSorted[i + 1].name) return false;
        for (size_t i = 0; i < kNTags; i++)
            if (kSorted[i].name.empty() || kSorted[i].name.size() >= 14) return false;
        return true;
    }(),
    "tag names are unique and below 14 bytes");

const TagDef* find_tagdef(std::string_view name) {
    if (name.empty()) return nullptr;
    unsigned char c = static_cast<unsigned char>(name[0]);
    for (size_t k = kFirstByte[c]; k < kFirstByte[c + 1]; k++)
        if (kSorted[k].name == name) return &kSorted[k];
    return nullptr;
}

bool parse_int(std::string_view s, int& v) {
    size_t i = 0;
    bool neg = false;
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) neg = s[i++] == '-';
    if (i >= s.size() || s.size() - i > 9) return false;
    int x = 0;
    for (; i < s.size(); i++) {
        if (s[i] < '0' || s[i] > '9') return false;
        x = x * 10 + (s[i] - '0');
    }
    v = neg ? -x : x;
    return true;
}

bool ArgScan::next(std::string& out, char stop) {
    out.clear();
    skip();
    if (bad || i >= s.size() || (stop && s[i] == stop)) return false;
    if (s[i] == '"') {
        size_t k = s.find('"', i + 1);
        if (k == std::string_view::npos) return bad = true, false;
        out = s.substr(i + 1, k - i - 1);
        i = k + 1;
    } else if (s[i] == '`' && i + 1 < s.size() && s[i + 1] == '"') {
        size_t k = i + 2;
        int d = 1;
        while (k < s.size()) {
            if (s[k] == '`' && k + 1 < s.size() && s[k + 1] == '"') {
                d++, k += 2;
                continue;
            }
            if (s[k] == '"' && k + 1 < s.size() && s[k + 1] == '\'') {
                if (--d == 0) break;
                k += 2;
                continue;
            }
            k++;
        }
        if (k >= s.size()) return bad = true, false;
        out = s.substr(i + 2, k - i - 2);
        i = k + 2;
    } else {
        size_t k = i;
        while (k < s.size() && s[k] != ' ' && !(stop && s[k] == stop)) k++;
        out = s.substr(i, k - i);
        i = k;
    }
    if (out.size() > PTL_TARGETMAX) return bad = true, false;
    return true;
}

bool ArgScan::next_int(int& v, char stop) {
    size_t save = i;
    std::string t;
    if (!next(t, stop)) return false;
    if (!parse_int(t, v)) {
        i = save;
        bad = true;
        return false;
    }
    return true;
}

bool ArgScan::link_arg(std::string& out) {
    out.clear();
    skip();
    if (i >= s.size() || s[i] == ':') return false;
    if (s[i] == '"' || (s[i] == '`' && i + 1 < s.size() && s[i + 1] == '"')) return next(out, ':');
    size_t k = s.find(':', i);
    if (k == std::string_view::npos) k = s.size();
    std::string_view t = s.substr(i, k - i);
    while (!t.empty() && t.back() == ' ') t.remove_suffix(1);
    i = k;
    if (t.size() > PTL_TARGETMAX) return bad = true, false;
    out = t;
    return true;
}

bool run_tag(Ptl* p, std::string_view body) {
    size_t i = 0;
    while (i < body.size() && body[i] == ' ') i++;
    if (i < body.size() && body[i] == '*') return true; // comment
    size_t j = i;
    while (j < body.size() && body[j] != ' ' && body[j] != ':') j++;
    std::string_view word = body.substr(i, j - i);
    bool optional = !word.empty() && word[0] == '?';
    if (optional) word.remove_prefix(1);
    const TagDef* def = word.size() < 14 ? find_tagdef(word) : nullptr;
    if (!def) {
        if (!optional) return false;
        // An unknown optional tag: the part after the first ':' is text.
        size_t c = body.find(':', j);
        if (c != std::string_view::npos) process_text(p, body.substr(c + 1));
        return true;
    }
    if ((def->flags & TF_DEPTH1) && p->depth != 1) return false;
    TagCall call{def, word, ArgScan{body.substr(j)}};
    return def->fn(p, call);
}

} // namespace korvu::ptl
