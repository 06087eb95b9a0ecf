// Paragraph tags and the two-column layout.
#include <algorithm>
#include <string>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

// first-line indent, left indent, right margin of pstd, psee, phang, pmore,
// phang2, pmore2, phang3, pmore3
static constexpr int kPresets[8][3] = {{4, 4, 2},  {4, 13, 2},  {4, 8, 2},   {8, 8, 2},
                                       {8, 12, 2}, {12, 12, 2}, {12, 16, 2}, {16, 16, 2}};

bool tag_p(Ptl* p, TagCall& c) {
    int v[3] = {0, 0, 0};
    if (c.def->arg >= 0) {
        if (!c.a.end()) return false;
        std::copy(kPresets[c.def->arg], kPresets[c.def->arg] + 3, v);
    } else {
        for (int k = 0; k < 3 && c.a.next_int(v[k]); k++) {
        }
        if (c.a.bad || !c.a.end()) return false;
    }
    return enter_para(p, v[0], v[1], v[2]);
}

bool tag_p_end(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    if (p->mode != PTL_PARA) return true;
    p->p_endblank = 0;
    set_mode(p, PTL_LINEMODE);
    return true;
}

// Four column numbers: a 0 counts as 1 (the right margin may be 0), all below
// 256, the second above the first.
static bool check_cols(int* v) {
    for (int i = 0; i < 3; i++)
        if (v[i] == 0) v[i] = 1;
    for (int i = 0; i < 4; i++)
        if (v[i] < 0 || v[i] > 255) return false;
    return v[1] > v[0];
}

bool tag_p2colset(Ptl* p, TagCall& c) {
    int v[5];
    int k = 0;
    while (k < 5 && c.a.next_int(v[k])) k++;
    if (c.a.bad || k < 4 || !c.a.end() || !check_cols(v)) return false;
    if (k == 5) {
        if (v[4] > 255 || (v[4] < 0 && -v[4] >= v[0])) return false;
    } else {
        v[4] = p->p2[4]; // without a fifth number the dent stands
    }
    std::copy(v, v + 5, p->p2);
    return true;
}

bool tag_p2colreset(Ptl* p, TagCall& c) {
    if (!c.a.end()) return false;
    static constexpr int32_t def[5] = {1, 31, 35, 0, 2};
    std::copy(def, def + 5, p->p2);
    return true;
}

// Starts a paragraph with the first column as first-line indent and the wrap
// column as left indent, writes the first column's text, ends the word and
// moves to the second column.
bool tag_p2col(Ptl* p, TagCall& c) {
    int v[4] = {p->p2[0], p->p2[1], p->p2[2], p->p2[3]};
    int t[4];
    int k = 0;
    while (k < 4 && c.a.next_int(t[k])) k++;
    if (c.a.bad || (k != 0 && k != 4)) return false;
    if (k == 4) {
        if (!check_cols(t)) return false;
        std::copy(t, t + 4, v);
    }
    if (!c.a.at_text()) return false;
    std::string_view text = c.a.text();
    int dent = c.def->arg ? p->p2[4] : 0;
    if (p->mode == PTL_PARA) p->p_endblank = 0;
    if (!enter_para(p, std::max(0, v[0] + dent - 1), v[2] - 1, v[3])) return false;
    process_text(p, text);
    para_place_held(p);
    int target = v[1] - 1;
    if (p->col < target) {
        pad(p, target - p->col); // {space n}: non-breaking, joins what follows
    } else {
        end_line(p); // {break}
        p->p_lines = 0;
    }
    p->sentence = 2;
    p->nblanks = 0;
    return true;
}

static void rule_to(Ptl* p, int right) {
    int n = right - p->col;
    if (n <= 0) return;
    std::string d(n, '-');
    put_chars(p, d.data(), n, cur_cattr(p) | ATTR_LINEART);
}

// Line mode: a rule from the first column to the right margin, on a line of
// its own; the line feed after it is dropped.
bool tag_p2line(Ptl* p, TagCall& c) {
    int a = 0, b = 0;
    if (c.a.next_int(a) && !c.a.next_int(b)) return false;
    if (c.a.bad || !c.a.end()) return false;
    if (p->mode == PTL_PARA) {
        p->p_endblank = 0;
        set_mode(p, PTL_LINEMODE);
    }
    int dent = c.def->arg ? p->p2[4] : 0;
    int left = p->p2[0] - 1 + dent + a;
    int right = p->width - p->p2[3] + b;
    pad(p, left - p->col);
    rule_to(p, std::min(right, p->width));
    end_line(p);
    if (!p->para_droplf) p->lfcounts = 0;
    return true;
}

bool tag_synoptset(Ptl* p, TagCall& c) {
    int n = 20;
    bool tabbed = false;
    std::string w;
    while (c.a.next(w)) {
        int v;
        if (parse_int(w, v))
            n = v;
        else if (w == "tabbed")
            tabbed = true;
        else
            return false;
    }
    if (c.a.bad || !c.a.end() || n < 0 || n + 9 > 255) return false;
    int32_t v[5] = {tabbed ? 7 : 5, n + 7, n + 9, 2, tabbed ? -2 : 0};
    std::copy(v, v + 5, p->p2);
    return true;
}

bool tag_synopthdr(Ptl* p, TagCall& c) {
    std::string_view text = "options";
    if (c.a.at_text())
        text = c.a.text();
    else if (!c.a.end())
        return false;
    pad(p, p->p2[0] + p->p2[4] - 1 - p->col);
    p->attr = static_cast<uint8_t>((p->attr & ~ATTR_FONT) | ATTR_ITALIC);
    process_text(p, text);
    p->attr &= ~ATTR_FONT;
    pad(p, std::max(1, p->p2[1] - 1 - p->col));
    put_text(p, "description");
    return true;
}

// A group heading from the first column plus the dent; back in line mode with
// the line feed after it dropped.
bool tag_syntab(Ptl* p, TagCall& c) {
    if (!c.a.at_text()) return false;
    if (p->mode == PTL_PARA) {
        p->p_endblank = 0;
        set_mode(p, PTL_LINEMODE);
    } else if (!p->empty) {
        end_line(p);
    }
    pad(p, p->p2[0] + p->p2[4] - 1 - p->col);
    process_text(p, c.a.text());
    end_line(p);
    if (!p->para_droplf) p->lfcounts = 0;
    return true;
}

} // namespace korvu::ptl
