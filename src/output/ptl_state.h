// The engine instance record. Only the engine and its tests look inside.
#pragma once
#include "output/ptl.h"
#include <cstdint>

namespace korvu {

struct Ptl {
    int32_t mode = 0;
    uint8_t ignore = 0;
    uint8_t nologchange = 0;
    PtlSink sink = nullptr;
    PtlSink saved_sink = nullptr;
    void* user = nullptr;
    int32_t width = 79;
    uint8_t attr = 2;
    uint8_t rich = 0;
    uint8_t more_pending = 0;
    int32_t pagesize = 0;
    int32_t pagelines = 0;
    uint8_t more_enable = 1;
    // line being built
    int32_t col = 0;
    char text[512] = {};
    uint8_t lineattr[512] = {};
    char held[1024] = {};
    int32_t nheld = 0;
};

} // namespace korvu
