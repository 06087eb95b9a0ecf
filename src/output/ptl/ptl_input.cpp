// The input path: the input log, "{ptag}\n" at the end of a block, the cut at
// line feeds, the per-block rules and the scan for tags.
#include <algorithm>
#include <cstring>
#include <string>

#include "output/ptl/ptl_internal.h"

namespace korvu {
namespace ptl {

static constexpr char kPtag[] = "{ptag}\n";
static constexpr int kPtagLen = 7;

// "{ptag}\n" at the very end of a piece switches to line mode; the longest
// tail that is a prefix of it is held back for the next send.
static void feed_piece(Ptl* p, const char* s, int n) {
    if (n >= kPtagLen && memcmp(s + n - kPtagLen, kPtag, kPtagLen) == 0) {
        process_block(p, s, n - kPtagLen);
        set_mode(p, PTL_LINEMODE);
        return;
    }
    for (int t = std::min(kPtagLen - 1, n); t >= 1; t--) {
        if (memcmp(s + n - t, kPtag, t) == 0) {
            process_block(p, s, n - t);
            p->nprefix = t;
            return;
        }
    }
    process_block(p, s, n);
}

// Every send is cut at its line feeds before the per-block rules; held prefix
// bytes that the new piece does not complete are processed in front of it.
void feed(Ptl* p, const char* s, int n) {
    int i = 0;
    while (i < n) {
        const char* lf = static_cast<const char*>(memchr(s + i, '\n', n - i));
        int end = lf ? static_cast<int>(lf - s) + 1 : n;
        if (p->nprefix) {
            std::string c(kPtag, p->nprefix);
            p->nprefix = 0;
            c.append(s + i, end - i);
            feed_piece(p, c.data(), static_cast<int>(c.size()));
        } else {
            feed_piece(p, s + i, end - i);
        }
        i = end;
    }
}

static int scan(Ptl* p, const char* s, int n);

void process_block(Ptl* p, const char* s, int n) {
    if (n <= 0) return;
    if (p->mode == PTL_ASIS) {
        asis_write(p, s, n);
        return;
    }
    if (p->mode == PTL_OLDHELP) {
        oldhelp_feed(p, s, n);
        return;
    }
    p->atstart = 0;
    if (p->nheld) {
        char buf[PTL_HELDMAX];
        int h = p->nheld;
        memcpy(buf, p->held, h);
        p->nheld = 0;
        if (h >= PTL_HELDMAX) { // the held text alone fills the buffer
            out_text(p, buf, 1);
            memcpy(p->held, buf + 1, h - 1);
            p->nheld = h - 1;
            process_block(p, s, n);
            return;
        }
        int take = std::min(n, PTL_HELDMAX - h);
        memcpy(buf + h, s, take);
        process_block(p, buf, h + take);
        if (take < n) process_block(p, s + take, n - take);
        return;
    }
    p->depth++;
    if (p->mode == PTL_PARA && p->depth == 1) {
        if (s[n - 1] == '\n') {
            bool blank = true;
            for (int i = 0; i < n - 1 && blank; i++) blank = s[i] == ' ' || s[i] == '\t';
            if (blank && p->para_lastlf) { // an empty line ends the paragraph
                p->depth--;
                set_mode(p, PTL_LINEMODE);
                return;
            }
            p->para_lastlf = 1;
        } else {
            p->para_lastlf = 0;
        }
    }
    if (p->mode == PTL_LINEMODE && p->para_droplf) {
        p->para_droplf = 0;
        if (s[0] == '\n') {
            s++;
            n--;
            if (n == 0) {
                p->depth--;
                return;
            }
        }
    }
    uint32_t mc = p->mode_changes;
    int used = scan(p, s, n);
    p->depth--;
    if (p->mode_changes != mc && used < n) process_block(p, s + used, n - used);
}

// Text, tags, text: a tag that fails shows its brace literally and the scan
// goes on from the next byte, so tags inside it still work.
static int scan(Ptl* p, const char* s, int n) {
    int i = 0;
    while (i < n) {
        const char* b = static_cast<const char*>(memchr(s + i, '{', n - i));
        int j = b ? static_cast<int>(b - s) : n;
        if (j > i) out_text(p, s + i, j - i);
        if (j >= n) break;
        int d = 0, k = j;
        for (; k < n; k++) {
            if (s[k] == '{')
                d++;
            else if (s[k] == '}' && --d == 0)
                break;
        }
        if (k < n) {
            uint32_t mc = p->mode_changes;
            if (run_tag(p, std::string_view(s + j + 1, k - j - 1))) {
                i = k + 1;
                if (p->mode_changes != mc && p->depth <= 1) return i;
                continue;
            }
            out_text(p, "{", 1);
            i = j + 1;
            continue;
        }
        if (p->depth == 1 && s[n - 1] != '\n' && n - j < PTL_HELDMAX) {
            memcpy(p->held, s + j, n - j);
            p->nheld = n - j;
            return n;
        }
        out_text(p, "{", 1);
        i = j + 1;
    }
    return n;
}

void process_text(Ptl* p, std::string_view s) {
    if (s.empty()) return;
    p->depth++;
    scan(p, s.data(), static_cast<int>(s.size()));
    p->depth--;
}

static void tab_to_8(Ptl* p) {
    pad(p, 8 - p->col % 8);
}

void out_text(Ptl* p, const char* s, int n) {
    int i = 0;
    while (i < n) {
        int j = i;
        while (j < n && s[j] != '\t') j++;
        if (j > i) put_text(p, s + i, j - i);
        if (j < n) {
            if (p->mode == PTL_PARA)
                put_text(p, "  ", 2);
            else
                tab_to_8(p);
            j++;
        }
        i = j;
    }
}

void put_text(Ptl* p, const char* s, int n, uint16_t cattr) {
    if (n <= 0) return;
    if (p->mode == PTL_PARA) {
        para_text(p, s, n, cattr);
        return;
    }
    int i = 0;
    while (i < n) {
        int j = i;
        while (j < n && s[j] != '\n') j++;
        if (j > i) put_chars(p, s + i, j - i, cattr);
        if (j < n) {
            if (p->mode != PTL_LINEMODE || p->lfcounts)
                end_line(p);
            else
                p->lfcounts = 1;
            j++;
        }
        i = j;
    }
}

void pad(Ptl* p, int n) {
    char buf[256];
    memset(buf, p->mode == PTL_PARA ? 19 : ' ', sizeof buf);
    while (n > 0) {
        int k = std::min(n, 256);
        put_text(p, buf, k);
        n -= k;
    }
}

static int width_sink(void* user, const uint8_t* t, int msg) {
    if ((msg == PTL_LINE || msg == PTL_PARTIAL) && t) *static_cast<int*>(user) += tpl_textlen(t);
    return 0;
}

// Visible width of text with markup: a private instance of width 254 whose
// sink only adds the line lengths.
int text_width(const Ptl* p, std::string_view s) {
    if (s.find('{') == std::string_view::npos) return static_cast<int>(s.size());
    Ptl* q = ptlopen();
    if (!q) return static_cast<int>(s.size());
    q->width = 254;
    q->rich = p->rich;
    q->korvu_kind = p->korvu_kind;
    q->lumocmd_kind = p->lumocmd_kind;
    q->attr = p->attr;
    int total = 0;
    ptlset_user(q, width_sink, &total);
    ptlsend(q, s.data(), static_cast<int>(s.size()));
    ptlflush(q);
    q->sink = nullptr;
    ptlclose(q);
    return total;
}

} // namespace ptl

using namespace ptl;

void ptlsend(Ptl* p, const char* bytes, int len) {
    if (!p || len < 1 || p->ignore) return;
    log_input(p, bytes, len);
    feed(p, bytes, len);
}

void ptlsendraw(Ptl* p, const char* bytes, int len) {
    if (!p || len < 1 || p->ignore) return;
    if (p->mode == PTL_ASIS || p->mode == PTL_OLDHELP) {
        ptlsend(p, bytes, len);
        return;
    }
    std::string t;
    t.reserve(len + 16);
    for (int i = 0; i < len; i++) {
        if (bytes[i] == '{')
            t += "{c -(}";
        else if (bytes[i] == '}')
            t += "{c )-}";
        else
            t += bytes[i];
    }
    ptlsend(p, t.data(), static_cast<int>(t.size()));
}

void ptlsend_genascii_begin(uint8_t* state) {
    *state = 0;
}

// CR, LF and CRLF all become LF; a CR at the end of a block is remembered so
// that a LF starting the next block is not doubled.
static void genascii(uint8_t* state, Ptl* p, const char* b, int n, bool raw) {
    std::string out;
    out.reserve(n);
    for (int i = 0; i < n; i++) {
        char c = b[i];
        if (c == '\r') {
            out += '\n';
            *state = 1;
            continue;
        }
        if (c == '\n' && *state) {
            *state = 0;
            continue;
        }
        *state = 0;
        out += c;
    }
    if (out.empty()) return;
    if (raw)
        ptlsendraw(p, out.data(), static_cast<int>(out.size()));
    else
        ptlsend(p, out.data(), static_cast<int>(out.size()));
}

void ptlsend_genascii(uint8_t* state, Ptl* p, const char* bytes, int len) {
    genascii(state, p, bytes, len, false);
}

void ptlsend_genascii_raw(uint8_t* state, Ptl* p, const char* bytes, int len) {
    genascii(state, p, bytes, len, true);
}

} // namespace korvu
