// The built-in command table: one piece of data from which dispatch,
// `findbuiltin` and `findbyablebuiltin` all come.
#pragma once
#include <cstdint>

namespace korvu {

using Handler = int (*)(int arg);

struct Builtin {
    const char* word;
    uint8_t minlen; // least abbreviation
    char branch;    // first character by which dispatch reaches the row
    int16_t minver; // row exists only when vernum >= minver (0: no gate)
    int16_t maxver; // row exists only when vernum < maxver (0: no gate)
    uint8_t byable; // accepts the by prefix
    Handler fn;     // null: not built yet
    int arg;
};

const Builtin* lookup_builtin(const char* word);
const char* findbuiltin(const char* word);
const char* findbyablebuiltin(const char* word);
int run_builtin(const Builtin* b);
int notyet(const char* word);

// Handlers that stand in the kernel.
int prefix_quietly(int);
int prefix_noisily(int);
int prefix_capture(int);
int prefix_break(int on);
int byprefix(int sort);
int goexit(int);
int docmd(int mode); // do, run, include: godo(mode, 0)
int unabcmd(int);

} // namespace korvu
