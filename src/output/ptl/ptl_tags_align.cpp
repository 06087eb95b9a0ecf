// Handlers that place text by its visible width: right, center and its
// kin, lalign/ralign, title, dlgtab.
#include <algorithm>
#include <string>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

static void line_art(Ptl* p, int n, char ch = '-') {
    if (n <= 0) return;
    std::string d(n, ch);
    put_chars(p, d.data(), n, cur_cattr(p) | ATTR_LINEART);
}

bool tag_right(Ptl* p, TagCall& c) {
    if (!c.a.at_text()) return false;
    std::string_view t = c.a.text();
    if (p->mode != PTL_LINEMODE) {
        process_text(p, t);
        return true;
    }
    int w = text_width(p, t);
    if (w > p->width - p->col && !p->empty) end_line(p);
    pad(p, p->width - p->col - w);
    process_text(p, t);
    return true;
}

// center, centre (left pad rounds down), rcenter, rcentre (rounds up); with
// # in a field of # columns, else in what is left of the line.
bool tag_center(Ptl* p, TagCall& c) {
    int field = 0;
    bool has_field = c.a.next_int(field);
    if (c.a.bad || (has_field && (field < 1 || field > 255))) return false;
    if (!c.a.at_text()) return false;
    std::string_view t = c.a.text();
    if (p->mode != PTL_LINEMODE) {
        process_text(p, t);
        return true;
    }
    int w = text_width(p, t);
    int space = has_field ? field : p->width - p->col;
    if (std::max(w, space) > p->width - p->col && !p->empty) {
        end_line(p);
        if (!has_field) space = p->width - p->col;
    }
    int extra = std::max(0, space - w);
    int left = c.def->arg ? (extra + 1) / 2 : extra / 2;
    pad(p, left);
    process_text(p, t);
    if (has_field) pad(p, extra - left);
    return true;
}

bool tag_align(Ptl* p, TagCall& c) {
    int n;
    if (!c.a.next_int(n) || n < 0 || n > 255 || !c.a.at_text()) return false;
    std::string_view t = c.a.text();
    int extra = std::max(0, n - text_width(p, t));
    if (c.def->arg == 0) {
        process_text(p, t);
        pad(p, extra);
    } else {
        pad(p, extra);
        process_text(p, t);
    }
    return true;
}

bool tag_title(Ptl* p, TagCall& c) {
    if (!c.a.at_text()) return false;
    std::string_view t = c.a.text();
    if (p->mode != PTL_LINEMODE) {
        process_text(p, t);
        return true;
    }
    uint8_t save = p->attr;
    if (p->rich) {
        p->attr = static_cast<uint8_t>((p->attr & ~ATTR_FONT) | ATTR_BOLD | ATTR_UNDERLINE);
        process_text(p, t);
        p->attr = save;
        return true;
    }
    int c0 = p->col;
    int w = text_width(p, t);
    p->attr = static_cast<uint8_t>((p->attr & ~ATTR_FONT) | ATTR_BOLD);
    process_text(p, t);
    p->attr = save;
    end_line(p);
    pad(p, c0);
    line_art(p, std::min(w, p->width - p->col));
    return true;
}

// A tab drawn with line art across two lines.
bool tag_dlgtab(Ptl* p, TagCall& c) {
    int ldent = 4, rdent = 2;
    if (c.a.next_int(ldent)) c.a.next_int(rdent);
    if (c.a.bad || ldent < 0 || rdent < 0 || !c.a.at_text()) return false;
    std::string_view t = c.a.text();
    if (p->mode != PTL_LINEMODE) {
        process_text(p, t);
        return true;
    }
    int w = text_width(p, t);
    int c0 = p->col;
    int left = p->width - c0;
    if (ldent + rdent + w + 8 > left) rdent = 0;
    ldent = std::max(0, std::min(ldent, left - w - 8 - rdent));
    pad(p, ldent + 4);
    line_art(p, 1, static_cast<char>(LA_TLC));
    line_art(p, w + 2);
    line_art(p, 1, static_cast<char>(LA_TRC));
    end_line(p);
    pad(p, c0 + ldent);
    line_art(p, 4);
    line_art(p, 1, static_cast<char>(LA_BRC));
    pad(p, 1);
    process_text(p, t);
    pad(p, 1);
    line_art(p, 1, static_cast<char>(LA_BLC));
    line_art(p, p->width - p->col - rdent);
    return true;
}

} // namespace korvu::ptl
