// Minimal line-mode engine: colour tags, {hline}, {c |}, {.-}, {col}, links shown
// by their text; every line leaves as a template with runs by attribute.
#include "output/ptl.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "output/ptl_state.h"

namespace korvu {

static void emit(Ptl* p, int msg) {
    if (!p->sink) return;
    std::vector<uint8_t> t(12, 0);
    t[8] = 0;
    t[9] = static_cast<uint8_t>(p->col + 1);
    t[10] = 0; // link count, then two zero bytes
    t.push_back(0);
    int moff = static_cast<int>(t.size());
    t.push_back(0); // empty marker list
    int roff = static_cast<int>(t.size());
    std::vector<std::pair<int, uint8_t>> runs;
    for (int i = 0; i < p->col; i++)
        if (runs.empty() || runs.back().second != p->lineattr[i])
            runs.push_back({i, p->lineattr[i]});
    if (runs.empty()) runs.push_back({0, p->attr});
    t.push_back(static_cast<uint8_t>(runs.size() - 1));
    for (auto& r : runs) {
        t.push_back(static_cast<uint8_t>(r.first));
        t.push_back(r.second);
    }
    t.push_back(static_cast<uint8_t>(p->col));
    int toff = static_cast<int>(t.size());
    t.insert(t.end(), p->text, p->text + p->col);
    t.push_back(0);
    int len = static_cast<int>(t.size());
    t[0] = len & 255, t[1] = len >> 8, t[2] = moff & 255, t[3] = moff >> 8;
    t[4] = roff & 255, t[5] = roff >> 8, t[6] = toff & 255, t[7] = toff >> 8;
    p->sink(p->user, t.data(), msg);
}

static void putc_attr(Ptl* p, char c, uint8_t attr) {
    if (p->col >= p->width) {
        emit(p, PTL_LINE);
        p->col = 0;
    }
    p->text[p->col] = c;
    p->lineattr[p->col] = attr;
    p->col++;
}

static void newline_out(Ptl* p) {
    emit(p, PTL_LINE);
    p->col = 0;
    if (p->pagesize > 0 && p->more_enable && ++p->pagelines >= p->pagesize) ptlmore(p);
}

static bool dotag(Ptl* p, const std::string& tag) {
    auto colon = tag.find(':');
    std::string name = tag.substr(0, tag.find_first_of(" :"));
    std::string arg = tag.size() > name.size() ? tag.substr(name.size() + 1) : "";
    if (name == "res" || name == "result")
        return p->attr = (p->attr & ~ATTR_COLOR) | COL_RESULT, true;
    if (name == "txt" || name == "text") return p->attr = (p->attr & ~ATTR_COLOR) | COL_TEXT, true;
    if (name == "err" || name == "error")
        return p->attr = (p->attr & ~ATTR_COLOR) | COL_ERROR, true;
    if (name == "com" || name == "inp" || name == "input")
        return p->attr = (p->attr & ~ATTR_COLOR) | COL_INPUT, true;
    if (name == "ptag" || name == "sf" || name == "p_end" || name == "p") return true;
    if (name == "hline" || name == ".-") {
        int n = name == ".-" ? p->width - p->col : (arg.empty() ? 1 : atoi(arg.c_str()));
        for (int i = 0; i < n; i++) putc_attr(p, '-', p->attr | ATTR_LINEART);
        return true;
    }
    if (name == "c") {
        char c = arg == "|" ? '|' : arg == "+" ? '+' : arg == "-(" ? '{' : arg == ")-" ? '}' : 0;
        if (!c) return false;
        putc_attr(p, c, (c == '|' || c == '+') ? p->attr | ATTR_LINEART : p->attr);
        return true;
    }
    if (name == "col") {
        int n = atoi(arg.c_str());
        while (p->col < n - 1) putc_attr(p, ' ', p->attr);
        return true;
    }
    if (colon != std::string::npos) {
        std::string shown = tag.substr(colon + 1);
        uint8_t a = p->attr;
        for (char c : shown) putc_attr(p, c, a);
        return true;
    }
    if (name == "search" || name == "help") {
        for (char c : arg) putc_attr(p, c, p->attr);
        return true;
    }
    return false;
}

static void process(Ptl* p, const char* s, int len, bool raw) {
    for (int i = 0; i < len; i++) {
        char c = s[i];
        if (c == '\n') {
            newline_out(p);
            continue;
        }
        if (c == '{' && !raw) {
            int depth = 1, j = i + 1;
            while (j < len && depth) {
                if (s[j] == '{')
                    depth++;
                else if (s[j] == '}')
                    depth--;
                if (depth) j++;
            }
            if (j < len) {
                std::string tag(s + i + 1, s + j);
                if (dotag(p, tag)) {
                    i = j;
                    continue;
                }
            }
        }
        putc_attr(p, c, p->attr);
    }
}

Ptl* ptlopen() {
    Ptl* p = new Ptl();
    p->mode = PTL_LINEMODE;
    return p;
}
void ptlclose(Ptl* p) {
    if (!p) return;
    ptlflush(p);
    if (p->sink) p->sink(p->user, nullptr, PTL_CLOSING);
    delete p;
}
void ptlreinitialize(Ptl* p) {
    p->attr = 2, p->col = 0;
}
void ptlset_maxwidth(Ptl* p, int w) {
    p->width = w < 40 ? 40 : w > 255 ? 255 : w;
}
int ptlquery_maxwidth(const Ptl* p) {
    return p->width;
}
void ptlset_chars(Ptl* p, const PtlChars* c) {
    ptlset_maxwidth(p, c->width), p->rich = c->rich;
}
void ptlquery_chars(const Ptl* p, PtlChars* c) {
    c->width = p->width, c->rich = p->rich;
}
void ptlset_user(Ptl* p, PtlSink s, void* u) {
    p->sink = p->saved_sink = s, p->user = u;
}
void ptlset_useron(Ptl* p) {
    ptlflush(p), p->sink = p->saved_sink;
}
void ptlset_useroff(Ptl* p) {
    ptlflush(p), p->sink = nullptr;
}
void ptlsend(Ptl* p, const char* b, int n) {
    if (n > 0 && !p->ignore) process(p, b, n, false);
}
void ptlsendraw(Ptl* p, const char* b, int n) {
    if (n > 0 && !p->ignore) process(p, b, n, true);
}
void ptlsend_genascii_begin(uint8_t* st) {
    *st = 0;
}
void ptlsend_genascii(uint8_t* st, Ptl* p, const char* b, int n) {
    ptlsend(p, b, n);
}
void ptlsend_genascii_raw(uint8_t* st, Ptl* p, const char* b, int n) {
    ptlsendraw(p, b, n);
}
void ptlflush(Ptl* p) {
    if (!p->sink) return;
    if (p->col) emit(p, PTL_PARTIAL);
    p->sink(p->user, nullptr, PTL_FLUSH);
}
void ptlcolorset(Ptl* p, int colour) {
    p->attr = (p->attr & ~ATTR_COLOR) | (colour & 7);
}
void ptlptagset(Ptl*) {}
void ptlptagsetweak(Ptl*) {}
void ptlpromptset(Ptl* p) {
    ptlcolorset(p, COL_INPUT);
}
int ptlmore(Ptl* p) {
    p->pagelines = 0;
    return 0;
}
void ptlsendtpl(Ptl* p, const uint8_t* t, int) {
    if (p->sink) p->sink(p->user, t, PTL_LINE);
}
int ptlset_log_input(Ptl*, int, int) {
    return 1;
}
int ptlset_log_output(Ptl*, int, int) {
    return 1;
}
int ptl_query_log_err(const Ptl*) {
    return 0;
}
int ptluserrtn2(Ptl* p, int code) {
    return p->saved_sink ? p->saved_sink(p->user, nullptr, code) : 0;
}
void ptlset_pagesize(Ptl* p, int n) {
    p->pagesize = n;
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

int find_tag(const char* list, const char* name) {
    for (; *list; list += strlen(list) + 1)
        if (!strcmp(list, name)) return 1;
    return 0;
}
int tpl_tagmatch(const char* list, const char* name) {
    return find_tag(list, name);
}
int tpl_renpiece(const uint8_t* runs, int col, uint8_t* attr) {
    int last = runs[0];
    for (int r = 0; r <= last; r++) {
        int start = runs[1 + 2 * r],
            end = r < last ? runs[1 + 2 * (r + 1)] : runs[1 + 2 * (last + 1)];
        if (col >= start && col < end) {
            *attr = runs[2 + 2 * r];
            return end;
        }
    }
    *attr = 0;
    return 0;
}
const uint8_t* tpl_clickable(const uint8_t*, int, int* index) {
    *index = -1;
    return nullptr;
}
const char* tpl_clickable_contents(const uint8_t* e, int* kind) {
    *kind = e[2];
    return reinterpret_cast<const char*>(e + 4);
}
int tpl_has_wide(const uint8_t* runs) {
    for (int r = 0; r <= runs[0]; r++)
        if (runs[2 + 2 * r] & ATTR_LINEART) return 1;
    return 0;
}
void tpl_make_ascii(const uint8_t*, char*) {}

} // namespace korvu
