// Handlers of the style tags and of the tags for lines, characters, spacing
// and markers.
#include <algorithm>
#include <string>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

static uint8_t with(uint8_t attr, uint8_t mask, int value) {
    return static_cast<uint8_t>((attr & ~mask) | value);
}

// No text: the attribute changes for what follows. `:text`: it holds during
// the text and is then put back.
static bool style(Ptl* p, TagCall& c, uint8_t mask, int value) {
    if (c.a.end()) {
        p->attr = with(p->attr, mask, value);
        return true;
    }
    if (!c.a.at_text()) return false;
    uint8_t save = p->attr;
    p->attr = with(p->attr, mask, value);
    process_text(p, c.a.text());
    p->attr = save;
    return true;
}

bool tag_colour(Ptl* p, TagCall& c) {
    return style(p, c, ATTR_COLOR, c.def->arg);
}
bool tag_font(Ptl* p, TagCall& c) {
    return style(p, c, ATTR_FONT, c.def->arg);
}

bool tag_ul(Ptl* p, TagCall& c) {
    if (c.a.at_text()) return style(p, c, ATTR_UNDERLINE, ATTR_UNDERLINE);
    std::string w;
    if (!c.a.next(w) || !c.a.end()) return false;
    if (w == "on")
        p->attr |= ATTR_UNDERLINE;
    else if (w == "off")
        p->attr &= ~ATTR_UNDERLINE;
    else
        return false;
    return true;
}

bool tag_reset(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    p->attr = COL_TEXT;
    return true;
}

bool tag_setmode(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    set_mode(p, c.def->arg);
    return true;
}

// "{ptag}" counts only as "{ptag}\n" at the end of a block (the input path
// sees it there); anywhere else it is not a tag.
bool tag_ptag(Ptl*, TagCall&) {
    return false;
}

bool tag_dots(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    if (p->mode == PTL_LINEMODE) p->lfcounts = 0;
    return true;
}

// Ends the line, draws a rule to the margin, ends that line, and the next
// line feed does not end another.
bool tag_rule(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    if (p->mode == PTL_PARA) para_place_held(p);
    if (!p->empty) end_line(p);
    std::string rule(std::max(0, p->width - p->col), '-');
    put_chars(p, rule.data(), static_cast<int>(rule.size()), cur_cattr(p) | ATTR_LINEART);
    end_line(p);
    p->lfcounts = 0;
    return true;
}

bool tag_hline(Ptl* p, TagCall& c) {
    int n;
    if (c.a.next_int(n)) {
        if (n > 255) return false;
        if (n < 0) n += p->width - p->col;
    } else {
        if (c.a.bad || p->mode != PTL_LINEMODE) return false;
        n = p->width - p->col;
    }
    if (!c.a.end()) return false;
    if (n <= 0) return true;
    std::string d(n, '-');
    put_text(p, d.data(), n, cur_cattr(p) | ATTR_LINEART);
    return true;
}

bool tag_char(Ptl* p, TagCall& c) {
    std::string x;
    if (!c.a.next(x, 0) || !c.a.end()) return false;
    int code;
    bool art;
    if (!char_lookup(x, code, art)) return false;
    char ch = static_cast<char>(code);
    put_text(p, &ch, 1, cur_cattr(p) | (art ? ATTR_LINEART : 0));
    return true;
}

bool tag_dup(Ptl* p, TagCall& c) {
    int n;
    if (!c.a.next_int(n) || n < 0 || n > 999 || !c.a.at_text()) return false;
    std::string_view t = c.a.text();
    for (int i = 0; i < n; i++) process_text(p, t);
    return true;
}

bool tag_col(Ptl* p, TagCall& c) {
    std::string x;
    if (!c.a.next(x)) return false;
    int target;
    if (x[0] == '-')
        target = 1;
    else if (!parse_int(x, target) || target < 1 || target > 255)
        return false;
    bool has_text = c.a.at_text();
    std::string_view t;
    if (has_text) {
        t = c.a.text();
        if (t.empty()) return false;
    } else if (!c.a.end()) {
        return false;
    }
    if (p->mode != PTL_LINEMODE) return true; // line mode only
    if (!has_text) {
        pad(p, target - 1 - p->col);
        return true;
    }
    while (p->col < target - 1) { // until the column is reached or a pass adds nothing
        int before = p->col;
        process_text(p, t);
        if (p->col <= before) break;
    }
    return true;
}

bool tag_space(Ptl* p, TagCall& c) {
    int n = 1;
    if (c.a.next_int(n)) {
        if (n < 0 || n > 255) return false;
    } else if (c.a.bad) {
        return false;
    }
    if (!c.a.end()) return false;
    pad(p, n);
    return true;
}

bool tag_tab(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    if (p->mode == PTL_PARA)
        put_text(p, "  ", 2);
    else
        pad(p, 8 - p->col % 8);
    return true;
}

bool tag_bind(Ptl* p, TagCall& c) {
    if (!c.a.at_text()) return false;
    p->bind++;
    process_text(p, c.a.text());
    p->bind--;
    return true;
}

bool tag_break(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    if (p->mode == PTL_PARA) para_place_held(p);
    end_line(p);
    if (p->mode == PTL_PARA) p->p_lines = 0;
    return true;
}

bool tag_marker(Ptl* p, TagCall& c) {
    std::string name;
    if (!c.a.next(name, 0) || !c.a.end()) return false;
    return add_marker(p, name);
}

bool tag_newpage(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    return add_marker(p, "\f");
}

bool tag_ccl(Ptl* p, TagCall& c) {
    std::string name;
    if (!c.a.next(name, 0) || !c.a.end() || name.size() > 32 || !ccl_lookup) return false;
    char out[1024];
    out[0] = 0;
    if (!ccl_lookup(name.c_str(), out, sizeof out)) return false;
    out[sizeof out - 1] = 0;
    put_text(p, std::string_view(out));
    return true;
}

} // namespace korvu::ptl
