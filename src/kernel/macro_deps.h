// What the macro code needs from the command loop and the tokenizer.
#pragma once
#include <cstdint>

namespace korvu {
extern int32_t macrolen, conslen, vernum;
extern char* console;
extern uint8_t procflg;
extern char* tmpdir;
extern int32_t unix_pid;
} // namespace korvu
