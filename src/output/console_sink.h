// The console sink: writes the engine's Line templates to a stream, in colour
// by attribute on a terminal and as plain text otherwise; line art is drawn
// with '-', '|' and '+'.
#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

#include "output/ptl/ptl.h"

namespace korvu {

struct ConsoleSink {
    FILE* out = stdout;
    // Set by the caller only when the stream is a terminal: ANSI colour and
    // fonts, and a partial line (message 2) drawn at once and redrawn later.
    bool colour = false;
    // Where the `more` prompt gets its key; absent, the prompt answers a blank
    // (next page) at once, so no pause happens without a terminal.
    int (*keysource)(void* ctx) = nullptr;
    void* keyctx = nullptr;

    // state
    std::string written;        // plain: text of the current line already written
    std::string pending;        // plain: the partial line held until a flush
    bool partial_shown = false; // colour: a partial line is on the screen
};

// A PtlSink whose user data is a ConsoleSink.
int console_sink(void* user, const uint8_t* tpl, int msg);

// The template's text, line art as '-', '|', '+', with ANSI escapes by
// attribute when `colour` is set.
std::string console_render(const uint8_t* tpl, bool colour);

} // namespace korvu
