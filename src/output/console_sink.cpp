#include "output/console_sink.h"

#include <cstring>

namespace korvu {

static std::string plain_text(const uint8_t* tpl) {
    int n = tpl_textlen(tpl);
    std::string s(tpl_text(tpl), n);
    if (tpl_has_wide(tpl_runs(tpl))) tpl_make_ascii(tpl_runs(tpl), s.data());
    return s;
}

// SGR codes by colour number: 1 result, 2 text, 4 error, 5 input, 6 link,
// 7 highlight.
static const char* colour_code(int c) {
    switch (c) {
    case COL_RESULT: return "33";
    case COL_ERROR: return "31";
    case COL_INPUT: return "1";
    case COL_LINK: return "34;4";
    case COL_HILITE: return "1";
    default: return "39";
    }
}

std::string console_render(const uint8_t* tpl, bool colour) {
    std::string text = plain_text(tpl);
    if (!colour) return text;
    const uint8_t* runs = tpl_runs(tpl);
    std::string out;
    int n = static_cast<int>(text.size());
    int col = 0;
    while (col < n) {
        uint8_t a = 0;
        int end = tpl_renpiece(runs, col, &a);
        if (end <= col || end > n) end = n;
        out += "\x1b[0;";
        out += colour_code(a & ATTR_COLOR);
        if (a & ATTR_BOLD) out += ";1";
        if (a & ATTR_ITALIC) out += ";3";
        if (a & ATTR_UNDERLINE) out += ";4";
        out += 'm';
        out.append(text, col, end - col);
        col = end;
    }
    if (!out.empty()) out += "\x1b[0m";
    return out;
}

static void put(ConsoleSink* s, const std::string& t) {
    if (!t.empty()) fwrite(t.data(), 1, t.size(), s->out);
}

// Plain: write what of the line is not out yet.
static void write_rest(ConsoleSink* s, const std::string& line) {
    if (line.compare(0, s->written.size(), s->written) == 0) {
        put(s, line.substr(s->written.size()));
    } else {
        if (!s->written.empty()) put(s, "\n");
        put(s, line);
    }
}

int console_sink(void* user, const uint8_t* tpl, int msg) {
    auto* s = static_cast<ConsoleSink*>(user);
    switch (msg) {
    case PTL_LINE:
        if (s->colour) {
            if (s->partial_shown) put(s, "\r\x1b[K");
            put(s, console_render(tpl, true));
            s->partial_shown = false;
        } else {
            write_rest(s, plain_text(tpl));
            s->written.clear();
            s->pending.clear();
        }
        put(s, "\n");
        return 0;
    case PTL_PARTIAL:
        if (s->colour) {
            put(s, "\r" + console_render(tpl, true) + "\x1b[K");
            s->partial_shown = true;
        } else {
            s->pending = plain_text(tpl);
        }
        return 0;
    case PTL_FLUSH:
    case PTL_CLOSING:
        if (!s->colour && !s->pending.empty()) {
            write_rest(s, s->pending);
            s->written = s->pending;
            s->pending.clear();
        }
        fflush(s->out);
        return 0;
    case PTL_MORE: {
        if (!s->keysource) return ' ';
        put(s, console_render(tpl, s->colour));
        fflush(s->out);
        int key = s->keysource(s->keyctx);
        put(s, s->colour ? "\r\x1b[K" : "\n");
        fflush(s->out);
        return key;
    }
    default: return 0;
    }
}

} // namespace korvu
