// A sink that keeps what it is given: every template and message, and keys
// to answer the `more` prompt from a script. For redirections and tests.
#pragma once
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "output/ptl/ptl.h"

namespace korvu {

struct PtlCapture {
    std::vector<std::vector<uint8_t>> lines;    // message 1, in order
    std::vector<std::vector<uint8_t>> partials; // message 2
    std::vector<int> msgs;                      // every message, in order
    std::deque<int> keys;                       // answers to message 5; ' ' when empty
    int prompts = 0;

    std::string text(size_t i) const; // line i, line art as ASCII
    std::string all_text() const;     // every line with a line feed after it
};

int ptl_capture_sink(void* user, const uint8_t* tpl, int msg);

} // namespace korvu
