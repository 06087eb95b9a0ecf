// A fresh data area for a test: the given memory, the default limits, no
// hooks, and the block allocated. Undo with news_free().
#pragma once
#include <gtest/gtest.h>

#include <cstdint>

#include "data/area/areahooks.h"
#include "data/area/dataarea.h"

inline void open_data_area(uint64_t memory) {
    using namespace korvu;
    totalmemory = memory;
    maxmaxvar = DEFAULT_MAXVAR;
    matsize = DEFAULT_MATSIZE;
    dahooks = {};
    ASSERT_EQ(news_alloc(), 0);
    sysflag = 0;
}
