// The line being built: the line writer, the run table, links and markers,
// emitting a line and assembling its Line template.
#include <algorithm>
#include <cstring>

#include "output/ptl/ptl_internal.h"

namespace korvu::ptl {

// A run starts when text comes in another attribute, unless the last run is
// still empty, whose attribute is then overwritten.
static void run_ensure(Ptl* p, uint8_t a) {
    int last = p->nruns - 1;
    if (p->runs[2 * last + 1] == a) return;
    if (p->runs[2 * last] == p->col) {
        p->runs[2 * last + 1] = a;
        return;
    }
    p->runs[2 * p->nruns] = static_cast<uint8_t>(p->col);
    p->runs[2 * p->nruns + 1] = a;
    p->nruns++;
}

static void append_raw(Ptl* p, const char* s, int n, uint8_t a) {
    if (n <= 0) return;
    run_ensure(p, a);
    bool para = p->mode == PTL_PARA;
    for (int i = 0; i < n; i++) {
        char c = s[i];
        if (c == 19 && para) c = ' '; // the non-breaking blank
        p->text[p->col++] = c;
    }
}

bool link_room(const Ptl* p, int tlen) {
    return p->linkbytes + tlen + 1 <= PTL_LINKTAB_MAX;
}

static void link_add_entry(Ptl* p, int start, int end) {
    if (end <= start || !link_room(p, p->link_tlen) || p->nlinks >= 255) return;
    uint8_t* e = p->links + p->linkbytes;
    e[0] = static_cast<uint8_t>(start);
    e[1] = static_cast<uint8_t>(end);
    e[2] = p->link_kind;
    e[3] = static_cast<uint8_t>(p->link_tlen + 1);
    memcpy(e + 4, p->link_target, p->link_tlen);
    e[4 + p->link_tlen] = 0;
    p->linkbytes += 5 + p->link_tlen;
    p->nlinks++;
}

// Text that belongs to a link opens its entry on this line; text that does not
// closes it.
static void track_link(Ptl* p, uint16_t cattr) {
    if (cattr & CA_LINK) {
        if (p->link_open && p->link_start < 0) p->link_start = p->col;
    } else if (p->link_start >= 0) {
        link_add_entry(p, p->link_start, p->col);
        p->link_start = -1;
        if (!p->link_active) p->link_open = 0;
    }
}

bool link_open(Ptl* p, int kind, std::string_view target) {
    int tlen = static_cast<int>(target.size());
    if (tlen > PTL_TARGETMAX || !link_room(p, tlen)) return false;
    p->link_open = 1;
    p->link_active = 1;
    p->link_kind = static_cast<uint8_t>(kind);
    p->link_tlen = tlen;
    memcpy(p->link_target, target.data(), tlen);
    p->link_target[tlen] = 0;
    p->link_start = -1;
    return true;
}

void link_end_tag(Ptl* p) {
    p->link_active = 0;
    // In paragraph mode a link that ends in a held word closes when it is written.
    if (p->mode == PTL_PARA && held_has_link(p)) return;
    if (p->link_start >= 0) link_add_entry(p, p->link_start, p->col);
    p->link_start = -1;
    p->link_open = 0;
}

void link_force_close(Ptl* p) {
    if (p->link_start >= 0) link_add_entry(p, p->link_start, p->col);
    p->link_start = -1;
    p->link_open = 0;
    p->link_active = 0;
}

bool add_marker(Ptl* p, std::string_view name) {
    if (name.size() > PTL_MARKER_NAME) name = name.substr(0, PTL_MARKER_NAME);
    int need = static_cast<int>(name.size()) + 1;
    if (p->markerlen + need + 1 > PTL_MARKER_MAX) return false;
    memcpy(p->markers + p->markerlen, name.data(), name.size());
    p->markers[p->markerlen + need - 1] = 0;
    p->markerlen += need;
    return true;
}

void start_line(Ptl* p, bool cont, bool keep_markers) {
    p->nruns = 1;
    p->runs[0] = 0;
    p->runs[1] = p->attr;
    p->col = 0;
    p->linemode = p->mode;
    if (p->mode == PTL_PARA) {
        if (p->p_first > 0 && p->p_first < p->width - 5) {
            char blanks[PTL_MAXWIDTH];
            memset(blanks, ' ', p->p_first);
            append_raw(p, blanks, p->p_first, COL_TEXT);
        }
        p->p_first = p->p_left;
    }
    if (cont) append_raw(p, "> ", 2, p->attr);
    p->nlinks = 0;
    p->linkbytes = 0;
    if (!keep_markers) p->markerlen = 0;
    p->empty = 1;
    p->link_start = -1; // a link crossing the line end reopens with its next text
}

void reset_line_plain(Ptl* p, bool keep_markers) {
    p->nruns = 1;
    p->runs[0] = 0;
    p->runs[1] = p->attr;
    p->col = 0;
    p->linemode = PTL_LINEMODE;
    p->nlinks = 0;
    p->linkbytes = 0;
    if (!keep_markers) p->markerlen = 0;
    p->empty = 1;
    p->link_start = -1;
}

int build_tpl(const Ptl* p, uint8_t* o, bool partial) {
    int k = 10;
    int nl = p->nlinks;
    memcpy(o + 11, p->links, p->linkbytes);
    k = 11 + p->linkbytes;
    if (partial && p->link_start >= 0 && p->col > p->link_start && link_room(p, p->link_tlen)) {
        o[k++] = static_cast<uint8_t>(p->link_start);
        o[k++] = static_cast<uint8_t>(p->col);
        o[k++] = p->link_kind;
        o[k++] = static_cast<uint8_t>(p->link_tlen + 1);
        memcpy(o + k, p->link_target, p->link_tlen);
        k += p->link_tlen;
        o[k++] = 0;
        nl++;
    }
    o[10] = static_cast<uint8_t>(nl);
    o[k++] = 0;
    o[k++] = 0;
    int moff = k;
    memcpy(o + k, p->markers, p->markerlen);
    k += p->markerlen;
    o[k++] = 0;
    int roff = k;
    o[k++] = static_cast<uint8_t>(p->nruns - 1);
    memcpy(o + k, p->runs, 2 * p->nruns);
    k += 2 * p->nruns;
    o[k++] = static_cast<uint8_t>(p->col);
    int toff = k;
    memcpy(o + k, p->text, p->col);
    k += p->col;
    o[k++] = 0;
    o[0] = k & 255, o[1] = k >> 8;
    o[2] = moff & 255, o[3] = moff >> 8;
    o[4] = roff & 255, o[5] = roff >> 8;
    o[6] = toff & 255, o[7] = toff >> 8;
    o[8] = (p->linemode == PTL_PARA && p->p_lines > 0) ? 1 : 0;
    o[9] = static_cast<uint8_t>(std::min(p->col + 1, 255));
    return k;
}

// The line as plain text: line art through tpl_make_ascii on a copy.
static void ascii_copy(const Ptl* p, char* out) {
    memcpy(out, p->text, p->col);
    out[p->col] = 0;
    bool wide = false;
    for (int r = 0; r < p->nruns; r++) wide |= (p->runs[2 * r + 1] & ATTR_LINEART) != 0;
    if (!wide) return;
    uint8_t table[2 * (PTL_MAXWIDTH + 2) + 2];
    table[0] = static_cast<uint8_t>(p->nruns - 1);
    memcpy(table + 1, p->runs, 2 * p->nruns);
    table[1 + 2 * p->nruns] = static_cast<uint8_t>(p->col);
    tpl_make_ascii(table, out);
}

void count_page(Ptl* p) {
    if (p->pagesize > 0 && p->more_enable) {
        if (++p->pagelines >= p->pagesize) ptlmore(p);
    }
}

void emit_line(Ptl* p) {
    if (p->link_start >= 0) {
        link_add_entry(p, p->link_start, p->col); // a link with no width is dropped
        p->link_start = -1;
    }
    if (p->logout.n) {
        char plain[PTL_MAXWIDTH + 2];
        ascii_copy(p, plain);
        log_output_line(p, plain, p->col, true);
    }
    if (p->sink) {
        uint8_t buf[PTL_TPLMAX + 16];
        build_tpl(p, buf, false);
        if (p->linemode == PTL_PARA) p->p_lines++;
        p->sink(p->user, buf, PTL_LINE);
    } else if (p->linemode == PTL_PARA) {
        p->p_lines++;
    }
    count_page(p);
}

void end_line(Ptl* p) {
    emit_line(p);
    start_line(p, false);
}

// The line writer: while the text does not fit, fill the line to the width,
// emit it and go on on a new line that starts with the mark "> ".
void put_chars(Ptl* p, const char* s, int n, uint16_t cattr) {
    while (n > 0) {
        int room = p->width - p->col;
        if (room <= 0) {
            emit_line(p);
            start_line(p, true);
            continue;
        }
        int k = n < room ? n : room;
        track_link(p, cattr);
        append_raw(p, s, k, static_cast<uint8_t>(cattr & 0xff));
        p->empty = 0;
        s += k;
        n -= k;
    }
}

} // namespace korvu::ptl
