#include "output/results_sink.h"

#include <unistd.h>

#include <cstring>
#include <string>

#include "kernel/loop.h"

namespace korvu {

static int out_fd = 1;
static bool colour = false;
static size_t partial_len = 0; // bytes of the current line already written
static std::string pending;

static void flushout() {
    size_t off = 0;
    while (off < pending.size()) {
        ssize_t w = write(out_fd, pending.data() + off, pending.size() - off);
        if (w <= 0) break;
        off += static_cast<size_t>(w);
    }
    pending.clear();
}

static const char* ansi_of(uint8_t attr) {
    switch (attr & ATTR_COLOR) {
    case COL_RESULT: return "\033[1m";
    case COL_ERROR: return "\033[31m";
    case COL_INPUT: return "\033[0m";
    case COL_LINK: return "\033[34;4m";
    case COL_HILITE: return "\033[1m";
    default: return "\033[0m";
    }
}

// The line as plain text with line art turned into -, | and +.
static std::string render(const uint8_t* tpl) {
    const char* text = tpl_text(tpl);
    std::string s = text;
    const uint8_t* runs = tpl_runs(tpl);
    if (tpl_has_wide(runs)) {
        std::string tmp = s;
        tpl_make_ascii(runs, tmp.data());
        s = tmp;
    }
    if (!colour) return s;
    std::string out;
    int col = 0, n = static_cast<int>(s.size());
    while (col < n) {
        uint8_t attr;
        int end = tpl_renpiece(runs, col, &attr);
        if (end <= col) end = n;
        out += ansi_of(attr);
        out.append(s, col, end - col);
        col = end;
    }
    out += "\033[0m";
    return out;
}

static int sink(void*, const uint8_t* tpl, int msg) {
    switch (msg) {
    case PTL_LINE:
    case PTL_PARTIAL: {
        std::string line = render(tpl);
        if (partial_len <= line.size()) pending.append(line, partial_len, std::string::npos);
        if (msg == PTL_LINE) {
            pending += '\n';
            partial_len = 0;
        } else {
            partial_len = line.size();
        }
        if (pending.size() > 4096) flushout();
        return 0;
    }
    case PTL_FLUSH:
    case PTL_CLOSING: flushout(); return 0;
    case PTL_MORE: flushout(); return ' ';
    }
    return 0;
}

void results_sink_attach(Ptl* p) {
    colour = isatty(1) && out_fd == 1;
    ptlset_user(p, sink, nullptr);
}

void results_sink_to_fd(int fd) {
    flushout();
    out_fd = fd;
    colour = false;
}

void results_sink_close() {
    flushout();
}

// A line typed at the terminal is already on the screen; only logs take its
// echo, and the console edition has none open until the log command does.
void log_echo(const char*) {}

} // namespace korvu
