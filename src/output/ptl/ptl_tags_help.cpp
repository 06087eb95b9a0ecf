// Tags of syntax diagrams in help files: cmdab, opt, opth, manhelp,
// manhelpi, and the abbreviations ifin, weight, dtype, var and the like.
#include <string>
#include <vector>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

static uint8_t hilite(uint8_t a) {
    return static_cast<uint8_t>((a & ~ATTR_COLOR) | COL_HILITE);
}

// Splits at a character outside braces.
static std::vector<std::string_view> split_top(std::string_view s, char sep) {
    std::vector<std::string_view> out;
    int d = 0;
    size_t from = 0;
    for (size_t i = 0; i < s.size(); i++) {
        if (s[i] == '{')
            d++;
        else if (s[i] == '}')
            d--;
        else if (s[i] == sep && d == 0) {
            out.push_back(s.substr(from, i - from));
            from = i + 1;
        }
    }
    out.push_back(s.substr(from));
    return out;
}

// Rich: the first part highlighted and underlined, the others highlighted.
// Plain: first and third parts highlighted, the second normal.
static void write_cmdab(Ptl* p, const std::vector<std::string_view>& parts, bool markup) {
    uint8_t save = p->attr;
    for (size_t k = 0; k < parts.size(); k++) {
        if (p->rich)
            p->attr = k == 0 ? (hilite(save) | ATTR_UNDERLINE) : hilite(save);
        else
            p->attr = k == 1 ? save : hilite(save);
        if (markup)
            process_text(p, parts[k]);
        else
            put_text(p, parts[k]);
    }
    p->attr = save;
}

bool tag_cmdab(Ptl* p, TagCall& c) {
    if (!c.a.at_text()) return false;
    auto parts = split_top(c.a.text(), ':');
    if (parts.size() < 2 || parts.size() > 3) return false;
    write_cmdab(p, parts, true);
    return true;
}

// opt name[(arg)], opt first:rest[(arg)], opth name(arg).
bool tag_opt(Ptl* p, TagCall& c) {
    c.a.skip();
    std::string_view s = c.a.s.substr(c.a.i);
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    if (s.size() >= 2 && s.front() == '"' && s.back() == '"') s = s.substr(1, s.size() - 2);
    if (s.empty()) return false;
    std::string_view name = s, arg;
    bool has_arg = false;
    size_t lp = s.find('(');
    if (lp != std::string_view::npos) {
        if (s.back() != ')') return false;
        name = s.substr(0, lp);
        arg = s.substr(lp + 1, s.size() - lp - 2);
        has_arg = true;
    }
    if (name.empty() || (c.def->arg == 1 && !has_arg)) return false;
    uint8_t save = p->attr;
    auto parts = split_top(name, ':');
    if (parts.size() > 2) return false;
    if (parts.size() == 2) {
        write_cmdab(p, parts, false);
    } else {
        p->attr = hilite(save);
        put_text(p, name);
    }
    if (has_arg) {
        p->attr = hilite(save);
        put_text(p, "(", 1);
        if (c.def->arg == 1 && !arg.empty()) {
            p->attr = save;
            process_text(p, "{it:{help " + std::string(arg) + "}}");
        } else {
            // Ordinary characters in italics; % ( ) * , : = as command text;
            // . [ ] { | } plain.
            size_t i = 0;
            while (i < arg.size()) {
                auto cls = [](char ch) {
                    if (std::string_view("%()*,:=").find(ch) != std::string_view::npos) return 1;
                    if (std::string_view(".[]{|}").find(ch) != std::string_view::npos) return 2;
                    return 0;
                };
                int k = cls(arg[i]);
                size_t j = i + 1;
                while (j < arg.size() && cls(arg[j]) == k) j++;
                p->attr = k == 0   ? static_cast<uint8_t>((save & ~ATTR_FONT) | ATTR_ITALIC)
                          : k == 1 ? hilite(save)
                                   : save;
                put_text(p, arg.substr(i, j - i));
                i = j;
            }
        }
        p->attr = hilite(save);
        put_text(p, ")", 1);
    }
    p->attr = save;
    return true;
}

bool tag_manhelp(Ptl* p, TagCall& c) {
    std::string name, sect;
    if (!c.a.next(name) || !c.a.next(sect)) return false;
    std::string text = name;
    if (c.a.at_text())
        text = c.a.text();
    else if (!c.a.end())
        return false;
    std::string s = "{help " + name + ":{bf:[" + sect + "]";
    s += c.def->arg == 0 ? " " + text + "}}" : "} {it:" + text + "}}";
    process_text(p, s);
    return true;
}

struct Abbrev {
    const char* before;
    const char* help;
    const char* shown;
    const char* after;
};

static constexpr Abbrev kAbbrev[] = {
    {"[", "if", "if", "] [{it:{help in}}]"}, // ifin
    {"[", "weight", "weight", "]"},
    {"[", "datatypes", "type", "]"},
    {"", "varname", "varname", ""},
    {"", "varlist", "varlist", ""},
    {"", "depvar", "depvar", ""},
    {"", "depvarlist", "depvarlist", ""},
    {"", "indepvars", "indepvars", ""},
    {"", "newvar", "newvar", ""},
};

// `:text` turns {help x} into {help x:xtext}.
bool tag_abbrev(Ptl* p, TagCall& c) {
    const Abbrev& a = kAbbrev[c.def->arg];
    std::string_view text;
    if (c.a.at_text()) {
        text = c.a.text();
        if (c.def->arg == 0) return false;
    } else if (!c.a.end()) {
        return false;
    }
    std::string s = std::string(a.before) + "{it:{help " + a.help;
    if (!text.empty() || std::string_view(a.help) != a.shown) s += std::string(":") + a.shown;
    s += std::string(text) + "}}" + a.after;
    process_text(p, s);
    return true;
}

} // namespace korvu::ptl
