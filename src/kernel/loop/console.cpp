// The console's line source: a line editor with history on a terminal, plain
// reads from a pipe or file. F1 to F10 replay the global macros "F1".."F10".
#include <histedit.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kernel/loop/loop.h"
#include "kernel/macro/macro.h"

namespace korvu {

static EditLine* el = nullptr;
static History* hist = nullptr;
static HistEvent hev;
static const char* cur_prompt = ". ";
static int tty_state = -1;

int console_is_tty() {
    if (tty_state < 0) tty_state = isatty(0) && isatty(1);
    return tty_state;
}

static char* prompt_fn(EditLine*) {
    return const_cast<char*>(cur_prompt);
}

static unsigned char fkey(EditLine* e, int n) {
    char name[8];
    snprintf(name, sizeof name, "F%d", n);
    const char* text = macptr(name);
    if (!text || !*text) return CC_NORM;
    std::string t = text;
    bool enter = t.back() == ';';
    if (enter) t.pop_back();
    el_insertstr(e, t.c_str());
    return enter ? CC_NEWLINE : CC_REFRESH;
}

#define FKEY(n)                                                                                    \
    static unsigned char fkey##n(EditLine* e, int) {                                               \
        return fkey(e, n);                                                                         \
    }
FKEY(1)
FKEY(2)
FKEY(3)
FKEY(4)
FKEY(5)
FKEY(6)
FKEY(7) FKEY(8) FKEY(9) FKEY(10)
#undef FKEY

    static void editor_init() {
    el = el_init("korvu", stdin, stdout, stderr);
    el_set(el, EL_PROMPT, prompt_fn);
    el_set(el, EL_EDITOR, "emacs");
    hist = history_init();
    history(hist, &hev, H_SETSIZE, 1000);
    el_set(el, EL_HIST, history, hist);
    using Fn = unsigned char (*)(EditLine*, int);
    static constexpr Fn fns[10] = {fkey1, fkey2, fkey3, fkey4, fkey5,
                                   fkey6, fkey7, fkey8, fkey9, fkey10};
    // xterm and the Linux console send these for F1 to F10
    static constexpr const char* seqs[10][2] = {{"\033OP", "\033[11~"},  {"\033OQ", "\033[12~"},
                                                {"\033OR", "\033[13~"},  {"\033OS", "\033[14~"},
                                                {"\033[15~", "\033[[E"}, {"\033[17~", nullptr},
                                                {"\033[18~", nullptr},   {"\033[19~", nullptr},
                                                {"\033[20~", nullptr},   {"\033[21~", nullptr}};
    for (int i = 0; i < 10; i++) {
        char name[16];
        snprintf(name, sizeof name, "korvu-f%d", i + 1);
        el_set(el, EL_ADDFN, strdup(name), "replay a function-key macro", fns[i]);
        for (const char* s : seqs[i])
            if (s) el_set(el, EL_BIND, s, name, nullptr);
    }
    el_source(el, nullptr);
}

int console_readline(char* buf, int maxlen, const char* prompt) {
    if (console_is_tty()) {
        if (!el) editor_init();
        cur_prompt = prompt;
        int count;
        const char* line = el_gets(el, &count);
        if (!line) {
            fputc('\n', stdout);
            return 1;
        }
        size_t n = strlen(line);
        while (n && (line[n - 1] == '\n' || line[n - 1] == '\r')) n--;
        if (static_cast<int>(n) > maxlen - 1) n = maxlen - 1;
        memcpy(buf, line, n);
        buf[n] = 0;
        return 0;
    }
    char* line = nullptr;
    size_t cap = 0;
    ssize_t got = getline(&line, &cap, stdin);
    if (got < 0) {
        free(line);
        return 1;
    }
    size_t n = static_cast<size_t>(got);
    while (n && (line[n - 1] == '\n' || line[n - 1] == '\r')) n--;
    if (static_cast<int>(n) > maxlen - 1) n = maxlen - 1;
    memcpy(buf, line, n);
    buf[n] = 0;
    free(line);
    return 0;
}

void console_history_add(const char* line) {
    if (hist) history(hist, &hev, H_ENTER, line);
}

void console_close() {
    if (el) el_end(el);
    if (hist) history_end(hist);
    el = nullptr;
    hist = nullptr;
}

} // namespace korvu
