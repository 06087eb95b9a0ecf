// Mode changes with the end work of the old mode, entering a paragraph, and
// the asis writer.
#include <algorithm>
#include <cstring>

#include "output/ptl/ptl_internal.h"

namespace korvu::ptl {

// End work by mode: line mode sends a line feed if tag text is held and emits
// an unfinished line; paragraph mode does the same after placing any held
// word, emits the empty line if marked and restores the width; asis emits an
// unfinished line; old help finishes the line it holds.
static void end_work(Ptl* p) {
    int m = p->mode;
    if (m == PTL_PARA) para_place_held(p);
    if ((m == PTL_LINEMODE || m == PTL_PARA) && p->nheld) {
        p->depth++; // tags in the held text run below the outer level
        process_block(p, "\n", 1);
        p->depth--;
        if (m == PTL_PARA) para_place_held(p);
    }
    if (m == PTL_OLDHELP && p->nheld) {
        int n = p->nheld;
        p->nheld = 0;
        oldhelp_piece(p, p->held, n);
    }
    if (!p->empty) {
        emit_line(p);
        reset_line_plain(p, false);
    }
    if (m == PTL_PARA) {
        if (p->p_endblank) {
            reset_line_plain(p, true);
            emit_line(p);
            reset_line_plain(p, false);
        }
        p->width = p->p_savedwidth;
    }
}

void set_mode(Ptl* p, int m) {
    int old = p->mode;
    end_work(p);
    link_force_close(p);
    p->lfcounts = 1;
    p->nprefix = 0;
    if (m == PTL_LINEMODE && old == PTL_PARA && !p->p_endblank) p->para_droplf = 1;
    if (m == PTL_PARA) {
        p->sentence = 2;
        p->nblanks = 0;
        p->wordlen = 0;
        p->p_savedwidth = p->width;
        p->p_endblank = 1;
        p->para_lastlf = 0;
        p->p_lines = 0;
        p->p_first = p->p_left = p->p_right = 0;
    }
    if (m == PTL_OLDHELP) p->attr = COL_TEXT;
    p->mode = m;
    p->atstart = 1;
    p->mode_changes++;
    start_line(p, false, true); // markers on a still empty line survive
}

bool enter_para(Ptl* p, int first, int left, int right) {
    if (first < 0 || left < 0 || right < 0 || first > 255 || left > 255) return false;
    set_mode(p, PTL_PARA);
    int w = p->width;
    first = std::min(first, w - 20);
    left = std::min(left, w - 20);
    int maxr = std::max(0, w - std::max(first, left) - 20);
    right = std::min(right, maxr);
    p->p_first = first;
    p->p_left = left;
    p->p_right = right;
    p->width = w - right;
    start_line(p, false, true);
    return true;
}

// Asis: line by line, tags not read; a leading line feed right after entering
// the mode is dropped. Tabs go to the next multiple of 8 so that columns stay
// true in the run table.
void asis_write(Ptl* p, const char* s, int n) {
    if (p->atstart) {
        p->atstart = 0;
        if (n > 0 && s[0] == '\n') s++, n--;
    }
    uint16_t ca = cur_cattr(p);
    int i = 0;
    while (i < n) {
        int j = i;
        while (j < n && s[j] != '\n' && s[j] != '\t') j++;
        if (j > i) put_chars(p, s + i, j - i, ca);
        if (j < n) {
            if (s[j] == '\n') {
                end_line(p);
            } else {
                static const char blanks[8] = {' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
                put_chars(p, blanks, 8 - p->col % 8, ca);
            }
            j++;
        }
        i = j;
    }
}

// At close: held bytes that never completed are shown as they stand, and a
// held word is placed.
void close_pending(Ptl* p) {
    if (p->nprefix) {
        int k = p->nprefix;
        p->nprefix = 0;
        if (p->mode == PTL_ASIS)
            asis_write(p, "{ptag}\n", k);
        else if (p->mode == PTL_OLDHELP)
            oldhelp_feed(p, "{ptag}\n", k);
        else
            out_text(p, "{ptag}\n", k);
    }
    if (p->nheld) {
        int k = p->nheld;
        p->nheld = 0;
        if (p->mode == PTL_OLDHELP)
            oldhelp_piece(p, p->held, k);
        else
            out_text(p, p->held, k);
    }
    if (p->mode == PTL_PARA) para_place_held(p);
}

} // namespace korvu::ptl
