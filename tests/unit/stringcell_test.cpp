// A string store writes the text and zero bytes to the end of the cell, and
// reads nothing of its source past the terminator.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "dataarea_fixture.h"

using namespace korvu;

TEST(StringCell, StoreZeroFillsAndReadsOnlyTheText) {
    open_data_area(1 << 20);
    ASSERT_EQ(alcvar(10), 0);
    nobs = 1;
    uint8_t* cell = dtaptr(1, 1);
    std::memset(cell, 0xAB, 10);
    // a source of exactly its text and terminator: any read past it is out
    // of bounds of the allocation
    auto one = std::make_unique<char[]>(1);
    one[0] = 0;
    sstore(1, 1, one.get());
    for (int k = 0; k < 10; k++) EXPECT_EQ(cell[k], 0) << k;
    auto three = std::make_unique<char[]>(3);
    std::memcpy(three.get(), "ab", 3);
    std::memset(cell, 0xAB, 10);
    sstore(1, 1, three.get());
    const uint8_t want[10] = {'a', 'b', 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(cell, want, 10), 0);
    // a text as wide as the cell fills it, with no terminator
    sstore(1, 1, "0123456789xyz");
    EXPECT_EQ(std::memcmp(cell, "0123456789", 10), 0);
    nobs = 0;
    nvar = 0;
    news_free();
}
