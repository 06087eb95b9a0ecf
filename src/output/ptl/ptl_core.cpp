// Instances: open, close, reinitialize, settings, the sink, flushing, the
// colour and ptag state requests, and the `more` pause.
#include <cstring>
#include <new>

#include "kernel/loop/brk.h"
#include "output/ptl/ptl_internal.h"

namespace korvu {

int ptlcharset = 1;
// The empty line as the first instance renders it; valid before that too.
uint8_t tpl_empty[79] = {19, 0, 13, 0, 14, 0, 18, 0, 0, 1, 0, 0, 0, 0, 0, 0, 2, 0, 0};
int tpl_empty_len = 19;

namespace ptl {
PtlCclLookup ccl_lookup = nullptr;
}

using namespace ptl;

static uint8_t tpl_more[79];
static int tpl_more_len = 0;
static bool prerendered = false;

struct Prerender {
    uint8_t* dst;
    int* len;
};

// Copies the first complete line if it fits in 79 bytes.
static int copy_sink(void* user, const uint8_t* t, int msg) {
    auto* d = static_cast<Prerender*>(user);
    if (msg == PTL_LINE && t && *d->len == 0) {
        int n = tpl_u16(t, 0);
        if (n <= 79) {
            memcpy(d->dst, t, n);
            *d->len = n;
        }
    }
    return 0;
}

static void prerender(const char* src, uint8_t* dst, int* len) {
    Ptl* q = ptlopen();
    if (!q) return;
    uint8_t buf[79];
    int n = 0;
    Prerender d{buf, &n};
    ptlset_user(q, copy_sink, &d);
    q->rich = 1;
    ptlsend(q, src, static_cast<int>(strlen(src)));
    q->sink = nullptr;
    ptlclose(q);
    if (n) {
        memcpy(dst, buf, n);
        *len = n;
    }
}

const uint8_t* ptl_more_template() {
    return tpl_more_len ? tpl_more : nullptr;
}

static void reinit(Ptl* p) {
    p->mode = PTL_LINEMODE;
    p->nprefix = 0;
    p->attr = COL_TEXT;
    p->lfcounts = 1;
    p->atstart = 1;
    p->more_pending = 0;
    p->korvu_kind = LINK_KORVU;
    p->lumocmd_kind = LINK_LUMOCMD;
    p->pagelines = 0;
    p->depth = 0;
    p->para_droplf = p->para_lastlf = 0;
    p->p_first = p->p_left = p->p_lines = p->p_right = 0;
    p->p_endblank = 0;
    p->nheld = 0;
    p->wordlen = 0;
    p->sentence = 2;
    p->nblanks = 0;
    p->blankattr = COL_TEXT;
    p->bind = 0;
    static constexpr int32_t p2def[5] = {1, 31, 35, 0, 2};
    memcpy(p->p2, p2def, sizeof p2def);
    p->link_open = p->link_active = 0;
    p->link_start = -1;
    p->link_tlen = 0;
    start_line(p, false);
}

Ptl* ptlopen() {
    Ptl* p = new (std::nothrow) Ptl();
    if (!p) return nullptr;
    log_alloc(p);
    if (!p->login.buf || !p->logout.buf) {
        log_free(p);
        delete p;
        return nullptr;
    }
    reinit(p);
    if (!prerendered) {
        prerendered = true;
        prerender("{clearmore:{hline 2}more{hline 2}}\n", tpl_more, &tpl_more_len);
        prerender("\n", tpl_empty, &tpl_empty_len);
    }
    return p;
}

void ptlclose(Ptl* p) {
    if (!p) return;
    close_pending(p);
    if (!p->empty) { // the unfinished line: shown as it stands, and kept in the logs
        if (p->sink) {
            uint8_t buf[PTL_TPLMAX + 16];
            build_tpl(p, buf, true);
            p->sink(p->user, buf, PTL_PARTIAL);
        }
        if (p->logout.n) {
            char plain[PTL_MAXWIDTH + 2];
            memcpy(plain, p->text, p->col);
            plain[p->col] = 0;
            uint8_t table[2 * (PTL_MAXWIDTH + 2) + 2];
            table[0] = static_cast<uint8_t>(p->nruns - 1);
            memcpy(table + 1, p->runs, 2 * p->nruns);
            table[1 + 2 * p->nruns] = static_cast<uint8_t>(p->col);
            tpl_make_ascii(table, plain);
            log_output_line(p, plain, p->col, false);
        }
    }
    if (p->sink) {
        p->sink(p->user, nullptr, PTL_FLUSH);
        p->sink(p->user, nullptr, PTL_CLOSING);
    }
    log_flush(p->login);
    log_flush(p->logout);
    log_free(p);
    delete p;
}

void ptlreinitialize(Ptl* p) {
    if (p) reinit(p);
}

void ptlset_maxwidth(Ptl* p, int width) {
    if (!p) return;
    int w = width < 40 ? 40 : width > PTL_MAXWIDTH ? PTL_MAXWIDTH : width;
    if (p->mode == PTL_PARA) {
        p->p_savedwidth = w;
        p->width = w - p->p_right;
    } else {
        p->width = w;
    }
}

int ptlquery_maxwidth(const Ptl* p) {
    return p->mode == PTL_PARA ? p->p_savedwidth : p->width;
}

void ptlset_chars(Ptl* p, const PtlChars* c) {
    ptlset_maxwidth(p, c->width);
    p->rich = c->rich;
}

void ptlquery_chars(const Ptl* p, PtlChars* c) {
    c->width = ptlquery_maxwidth(p);
    c->rich = p->rich;
}

void ptlset_user(Ptl* p, PtlSink sink, void* user) {
    p->sink = p->saved_sink = sink;
    p->user = user;
}

void ptlset_useron(Ptl* p) {
    ptlflush(p);
    p->sink = p->saved_sink;
}

void ptlset_useroff(Ptl* p) {
    ptlflush(p);
    p->sink = nullptr;
}

void ptlflush(Ptl* p) {
    if (!p) return;
    if (p->sink) {
        if (!p->empty) {
            uint8_t buf[PTL_TPLMAX + 16];
            build_tpl(p, buf, true);
            p->sink(p->user, buf, PTL_PARTIAL);
        }
        p->sink(p->user, nullptr, PTL_FLUSH);
    }
    log_flush(p->login);
    log_flush(p->logout);
}

static bool held_pending(const Ptl* p) {
    return p->nheld > 0 || p->nprefix > 0;
}

void ptlcolorset(Ptl* p, int colour) {
    if (!p || (p->mode != PTL_LINEMODE && p->mode != PTL_PARA)) return;
    if ((p->attr & ATTR_COLOR) == colour && !held_pending(p)) return;
    const char* tag = colour == COL_RESULT  ? "{res}"
                      : colour == COL_TEXT  ? "{txt}"
                      : colour == COL_ERROR ? "{err}"
                      : colour == COL_INPUT ? "{com}"
                                            : nullptr;
    if (tag) ptlsend(p, tag, 5);
}

void ptlptagset(Ptl* p) {
    if (!p) return;
    if (p->mode == PTL_LINEMODE && p->empty && !held_pending(p)) return;
    ptlsend(p, "{ptag}\n", 7);
}

void ptlptagsetweak(Ptl* p) {
    if (!p) return;
    if (p->mode == PTL_LINEMODE && !held_pending(p)) return;
    ptlsend(p, "{ptag}\n", 7);
}

void ptlpromptset(Ptl* p) {
    if (!p) return;
    ptlptagsetweak(p);
    if ((p->attr & ATTR_COLOR) != COL_INPUT) ptlsend(p, "{com}", 5);
    if (p->attr & ATTR_FONT) ptlsend(p, "{sf}", 4);
    if (p->attr & ATTR_UNDERLINE) ptlsend(p, "{ul off}", 8);
}

// The pause: the sink shows the prompt and returns a key. 13, 10 or `l`: one
// more line; `q` or 3: break; anything else: next page.
int ptlmore(Ptl* p) {
    if (!p || !p->sink || !p->more_enable || !tpl_more_len || p->more_pending) return 0;
    p->more_pending = 1;
    int key = p->sink(p->user, tpl_more, PTL_MORE);
    p->more_pending = 0;
    if (key == 13 || key == 10 || key == 'l') {
        p->pagelines = p->pagesize;
        return 0;
    }
    if (key == 'q' || key == 3) {
        stopflag = stopflag_val;
        altstopflag = altstopflag_val;
        p->pagelines = 0;
        return 113;
    }
    p->pagelines = 0;
    return 0;
}

void ptlsendtpl(Ptl* p, const uint8_t* tpl, int writelog) {
    if (!p || !tpl) return;
    if (writelog && p->logout.n) {
        int n = tpl_textlen(tpl);
        char plain[PTL_MAXWIDTH + 2];
        if (n > PTL_MAXWIDTH) n = PTL_MAXWIDTH;
        memcpy(plain, tpl_text(tpl), n);
        plain[n] = 0;
        if (tpl_has_wide(tpl_runs(tpl))) tpl_make_ascii(tpl_runs(tpl), plain);
        log_output_line(p, plain, n, true);
    }
    if (p->sink) p->sink(p->user, tpl, PTL_LINE);
    count_page(p);
}

int ptluserrtn2(Ptl* p, int code) {
    return p && p->saved_sink ? p->saved_sink(p->user, nullptr, code) : 0;
}

void ptlset_pagesize(Ptl* p, int pagesize) {
    p->pagesize = pagesize < 0 ? 0 : pagesize;
}
void ptlset_moreenable(Ptl* p, int on) {
    p->more_enable = on != 0;
}
int ptlquery_moreenable(const Ptl* p) {
    return p->more_enable;
}
void ptlzero_pagelines(Ptl* p) {
    p->pagelines = 0;
}
int ptlquery_mode(const Ptl* p) {
    return p->mode;
}
void ptlset_ignore(Ptl* p, int on) {
    p->ignore = on != 0;
}
void ptlset_nologchange(Ptl* p, int on) {
    p->nologchange = on != 0;
}
void ptlset_linkkinds(Ptl* p, int korvu_kind, int lumocmd_kind) {
    p->korvu_kind = static_cast<uint8_t>(korvu_kind);
    p->lumocmd_kind = static_cast<uint8_t>(lumocmd_kind);
}
void ptlset_ccl_lookup(PtlCclLookup fn) {
    ptl::ccl_lookup = fn;
}

} // namespace korvu
