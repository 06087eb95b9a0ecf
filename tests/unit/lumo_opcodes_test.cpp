// The instruction table read by the length function and the byte swapper,
// checked against instruction boundaries and byte orders worked out by hand.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "lumo/codegen/opcodes.h"

using namespace korvu;

namespace {

uint32_t w4(const char* s) {
    uint32_t w = 0;
    memcpy(&w, s, strlen(s) + 1 < 4 ? strlen(s) + 1 : 4);
    return w;
}

// The unoptimized words of
//   real scalar f(real scalar x) { real scalar y; y = x + 1; return(y) }
const std::vector<uint32_t> worked = {920, 920, 1,  24, 1,  8, 1,   20, 7,       0,  80, 32, 5,
                                      1,   2,   7,  1,  1,  6, 42,  12, 75,      3,  30, 4,  1,
                                      7,   0,   11, 12, 75, 2, 105, 1,  w4("y"), 12, 75, 1,  4};

TEST(LumoOpcodes, LengthsWalkTheInstructionBoundaries) {
    std::vector<int> starts;
    const int n = static_cast<int>(worked.size());
    for (int at = 2; at < n;) {
        starts.push_back(at);
        const int len = m_lofmop(worked.data(), at, n);
        ASSERT_GT(len, 0) << at;
        at += len;
    }
    EXPECT_EQ(starts, (std::vector<int>{2,  4,  6,  8,  10, 11, 12, 14, 15, 17, 19, 20, 21,
                                        22, 23, 24, 26, 28, 29, 30, 31, 32, 35, 36, 37}));
    // a text that runs past the end, and words that are no instruction
    const uint32_t cut[] = {920, 920, 105, 5, 0};
    EXPECT_EQ(m_lofmop(cut, 2, 5), 0);
    const uint32_t bad[] = {920, 920, 0, 45, 139, 155, 156};
    for (int i = 2; i < 7; i++) EXPECT_EQ(m_lofmop(bad, i, 7), 0) << bad[i];
    // literal blocks: header, count, two words a double; strings by their counts
    const uint32_t blocks[] = {38, 2, 0, 0, 0, 0, 39, 2, 2, 2, 0, 3, 5, 0, 0};
    EXPECT_EQ(m_lofmop(blocks, 0, 15), 6);
    EXPECT_EQ(m_lofmop(blocks, 6, 15), 9);
}

TEST(LumoOpcodes, EveryNamedInstructionHasALength) {
    for (uint32_t op = 0; op < MOP_COUNT; op++) {
        if (!mop_table[op].name) continue;
        EXPECT_TRUE(mop_table[op].what && *mop_table[op].what) << op;
        uint32_t code[16] = {op, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
        if (mop_table[op].layout == ML_SBLOCK) code[2] = 1;
        EXPECT_GT(m_lofmop(code, 0, 16), 0) << mop_table[op].name;
    }
    // the names the emitters rely on
    EXPECT_STREQ(mop_table[28].name, "optst0");
    EXPECT_STREQ(mop_table[105].name, "opalc_rs");
    EXPECT_STREQ(mop_table[138].name, "opfindf");
    EXPECT_STREQ(mop_table[142].name, "opldmatdd");
}

TEST(LumoOpcodes, ByteSwapReversesWordsButNotText) {
    std::vector<uint32_t> c = worked;
    const double lit = 2.5;
    uint32_t d[2];
    memcpy(d, &lit, 8);
    // a literal block behind the code
    c.push_back(38);
    c.push_back(1);
    c.push_back(d[0]);
    c.push_back(d[1]);
    const int n = static_cast<int>(c.size());
    ASSERT_EQ(m_byteswap(c.data(), n, false), 0);
    EXPECT_EQ(c[0], 0x98030000u);  // 920 = 0x398
    EXPECT_EQ(c[3], 0x18000000u);  // 24
    EXPECT_EQ(c[33], 0x01000000u); // the word count of "y"
    EXPECT_EQ(c[34], w4("y"));     // the text keeps its bytes
    // the double's eight bytes are reversed as one
    unsigned char want[8], got[8];
    memcpy(want, &lit, 8);
    memcpy(got, &c[n - 2], 8);
    for (int i = 0; i < 8; i++) EXPECT_EQ(got[i], want[7 - i]);
    ASSERT_EQ(m_byteswap(c.data(), n, true), 0);
    std::vector<uint32_t> back(worked);
    back.insert(back.end(), {38, 1, d[0], d[1]});
    EXPECT_EQ(c, back);
    // a word that is no instruction stops the walk
    uint32_t bad[] = {920, 920, 45};
    EXPECT_EQ(m_byteswap(bad, 3, false), -1);
}

} // namespace
