// Storage types: encoders, decoders and cell accessors. Every expected bit
// pattern below was worked out by hand from the layout of IEEE numbers and
// the table of missing codes (sign/exponent/fraction written out), not taken
// from the code under test.
#include <gtest/gtest.h>

#include "dataarea_fixture.h"

#include <cstring>

#include "data/area/dataarea.h"
#include "data/area/storage.h"

using namespace korvu;

namespace {

// `.`, `.a` .. `.z` as doubles: exponent 0x7FE, code byte in bits 40-47.
const uint64_t kDouble[27] = {
    0x7FE0000000000000, 0x7FE0010000000000, 0x7FE0020000000000, 0x7FE0030000000000,
    0x7FE0040000000000, 0x7FE0050000000000, 0x7FE0060000000000, 0x7FE0070000000000,
    0x7FE0080000000000, 0x7FE0090000000000, 0x7FE00A0000000000, 0x7FE00B0000000000,
    0x7FE00C0000000000, 0x7FE00D0000000000, 0x7FE00E0000000000, 0x7FE00F0000000000,
    0x7FE0100000000000, 0x7FE0110000000000, 0x7FE0120000000000, 0x7FE0130000000000,
    0x7FE0140000000000, 0x7FE0150000000000, 0x7FE0160000000000, 0x7FE0170000000000,
    0x7FE0180000000000, 0x7FE0190000000000, 0x7FE01A0000000000};
// As floats: 2^127 (0x7F000000) with the code in fraction bits 11-18.
const uint32_t kFloat[27] = {0x7F000000, 0x7F000800, 0x7F001000, 0x7F001800, 0x7F002000, 0x7F002800,
                             0x7F003000, 0x7F003800, 0x7F004000, 0x7F004800, 0x7F005000, 0x7F005800,
                             0x7F006000, 0x7F006800, 0x7F007000, 0x7F007800, 0x7F008000, 0x7F008800,
                             0x7F009000, 0x7F009800, 0x7F00A000, 0x7F00A800, 0x7F00B000, 0x7F00B800,
                             0x7F00C000, 0x7F00C800, 0x7F00D000};
const int32_t kLong[27] = {2147483621, 2147483622, 2147483623, 2147483624, 2147483625, 2147483626,
                           2147483627, 2147483628, 2147483629, 2147483630, 2147483631, 2147483632,
                           2147483633, 2147483634, 2147483635, 2147483636, 2147483637, 2147483638,
                           2147483639, 2147483640, 2147483641, 2147483642, 2147483643, 2147483644,
                           2147483645, 2147483646, 2147483647};
const int16_t kInt[27] = {32741, 32742, 32743, 32744, 32745, 32746, 32747, 32748, 32749,
                          32750, 32751, 32752, 32753, 32754, 32755, 32756, 32757, 32758,
                          32759, 32760, 32761, 32762, 32763, 32764, 32765, 32766, 32767};
const int8_t kByte[27] = {101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112, 113, 114,
                          115, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 126, 127};

double D(uint64_t b) {
    return bitsd(b);
}

class Storage : public ::testing::Test {
  protected:
    void SetUp() override {
        open_data_area(1 << 20);
        // byte first so that every later cell starts at an odd offset
        const int codes[] = {KV_BYTE,    KV_INT,    KV_LONG,    KV_FLOAT,    KV_DOUBLE,   5,
                             KV_OLDBYTE, KV_OLDINT, KV_OLDLONG, KV_OLDFLOAT, KV_OLDDOUBLE};
        for (int code : codes) ASSERT_EQ(alcvar(code), 0);
        nobs = 3;
    }
    void TearDown() override { news_free(); }
    // variable numbers
    static constexpr int B = 1, I = 2, L = 3, F = 4, Dv = 5, S = 6, OB = 7, OI = 8, OL = 9, OF = 10,
                         OD = 11;
    template <class T> T raw(int v, int i) {
        T x;
        memcpy(&x, dtaptr(v, i), sizeof x);
        return x;
    }
    template <class T> void putraw(int v, int i, T x) { memcpy(dtaptr(v, i), &x, sizeof x); }
};

} // namespace

TEST(StorageConstants, BitPatterns) {
    EXPECT_EQ(dbits(misval), 0x7FE0000000000000u);
    EXPECT_EQ(dbits(misval_z), 0x7FE01A0000000000u);
    EXPECT_EQ(dbits(misval_110), 0x7FE0000000000000u);
    EXPECT_EQ(dbits(misval_107), 0x54C0000000000000u); // 1023 + 333 = 0x54C
    EXPECT_EQ(dbits(max_kvdouble), 0x7FDFFFFFFFFFFFFFu);
    EXPECT_EQ(dbits(min_kvdouble), 0xFFDFFFFFFFFFFFFFu);
    EXPECT_EQ(dbits(min_realdouble), 0xFFEFFFFFFFFFFFFFu);
    EXPECT_EQ(dbits(smallest_kvdouble), 0x001FFFFFFFFFFFFFu);
    EXPECT_EQ(dbits(eps_kvdouble), 0x3CB0000000000000u); // 1023 - 52 = 0x3CB
    EXPECT_EQ(fbits(fltmis), 0x7F000000u);
    EXPECT_EQ(fbits(max_kvfloat), 0x7EFFFFFFu);
    EXPECT_EQ(fbits(min_kvfloat), 0xFEFFFFFFu);
    EXPECT_EQ(fbits(eps_kvfloat), 0x34000000u); // 127 - 23 = 0x68
    EXPECT_EQ(bytemis_110, 0x7F);
    EXPECT_EQ(intmis_110, 0x7FFF);
    EXPECT_EQ(longmis_110, 0x7FFFFFFF);
    for (int k = 0; k < 27; k++) {
        EXPECT_EQ(dbits(mkmissing(k)), kDouble[k]) << k;
        EXPECT_EQ(fltmis_bits_of(k), kFloat[k]);
        EXPECT_EQ(longmis_of(k), kLong[k]);
        EXPECT_EQ(intmis_of(k), kInt[k]);
        EXPECT_EQ(bytemis_of(k), kByte[k]);
    }
}

TEST(StorageConstants, ByteLengthsAndOldCodes) {
    for (int c = 1; c <= 244; c++) EXPECT_EQ(bytlenc(c), c);
    const int len[] = {1, 2, 4, 4, 8, 1, 2, 4, 4, 8};
    for (int c = 246; c <= 255; c++) EXPECT_EQ(bytlenc(c), len[c - 246]) << c;
    uint8_t codes[] = {251, 252, 253, 254, 255, 7, 244};
    map_vartypes_to_old(codes, 7);
    const uint8_t want[] = {246, 247, 248, 249, 250, 7, 244};
    EXPECT_EQ(memcmp(codes, want, 7), 0);
    EXPECT_TRUE(isstrtype(244));
    EXPECT_TRUE(isnumtype(246));
    EXPECT_STREQ(typename_of(KV_INT), "int");
    EXPECT_STREQ(typename_of(17), "str17");
}

TEST_F(Storage, ColumnsArePackedAndAligned) {
    // offsets in the record are the packed ones; each column holds colstride
    // cells (maxobs rounded up to 8), so every numeric column is aligned to
    // its cell size and the cells of one column follow each other
    const int32_t want[] = {0, 1, 3, 7, 11, 19, 24, 25, 27, 31, 35};
    for (int v = 1; v <= 11; v++) EXPECT_EQ(mapi[v - 1], want[v - 1]);
    EXPECT_EQ(usedwidth(), 43);
    EXPECT_EQ(colstride % 8, 0);
    EXPECT_GE(colstride, maxobs);
    EXPECT_LT(colstride, maxobs + 8);
    EXPECT_EQ(dtaptr(Dv, 2) - dtaptr(B, 2), 11 * colstride + 8 - 1);
    EXPECT_EQ(dtaptr(Dv, 3) - dtaptr(Dv, 2), 8);
    for (int v = 1; v <= 11; v++) {
        const int w = bytlenc(typlist[v - 1]);
        if (isnumtype(typlist[v - 1])) {
            EXPECT_EQ(reinterpret_cast<uintptr_t>(colptr(v)) % w, 0u) << v;
        }
    }
}

TEST_F(Storage, AllMissingValuesInEveryType) {
    for (int k = 0; k < 27; k++) {
        double m = mkmissing(k);
        for (int v : {B, I, L, F, Dv}) store(v, 2, m);
        EXPECT_EQ(raw<int8_t>(B, 2), kByte[k]) << k;
        EXPECT_EQ(raw<int16_t>(I, 2), kInt[k]) << k;
        EXPECT_EQ(raw<int32_t>(L, 2), kLong[k]) << k;
        EXPECT_EQ(raw<uint32_t>(F, 2), kFloat[k]) << k;
        EXPECT_EQ(raw<uint64_t>(Dv, 2), kDouble[k]) << k;
        for (int v : {B, I, L, F, Dv}) EXPECT_EQ(dbits(korvu_data(v, 2)), kDouble[k]) << v;
        // the conversion functions agree with the cells
        EXPECT_EQ(kvbyte_of_kvdouble(m), kByte[k]);
        EXPECT_EQ(kvint_of_kvdouble(m), kInt[k]);
        EXPECT_EQ(kvlong_of_kvdouble(m), kLong[k]);
        EXPECT_EQ(dbits(kvdouble_of_kvbyte(kByte[k])), kDouble[k]);
        EXPECT_EQ(dbits(kvdouble_of_kvint(kInt[k])), kDouble[k]);
        EXPECT_EQ(dbits(kvdouble_of_kvlong(kLong[k])), kDouble[k]);
        float f;
        EXPECT_EQ(kvfloat(&f, m), 1);
        EXPECT_EQ(fbits(f), kFloat[k]);
        EXPECT_EQ(dbits(kvdouble_of_kvfloatp(&f)), kDouble[k]);
    }
}

TEST_F(Storage, ExtendedMissingQ) {
    double q = D(0x7FE0110000000000); // .q, letter 17
    store(F, 1, q);
    EXPECT_EQ(raw<uint32_t>(F, 1), 0x7F008800u);
    EXPECT_EQ(dbits(korvu_data(F, 1)), 0x7FE0110000000000u);
    store(L, 1, q);
    EXPECT_EQ(raw<int32_t>(L, 1), 2147483621 + 17);
    // a code above .z is not a letter: the integers fall back to `.`
    double odd = D(0x7FE0400000000000);
    store(B, 1, odd);
    store(I, 1, odd);
    store(L, 1, odd);
    EXPECT_EQ(raw<int8_t>(B, 1), 101);
    EXPECT_EQ(raw<int16_t>(I, 1), 32741);
    EXPECT_EQ(raw<int32_t>(L, 1), 2147483621);
    // ... while float and double keep it
    store(F, 1, odd);
    EXPECT_EQ(raw<uint32_t>(F, 1), 0x7F000000u + 0x40u * 0x800u);
    EXPECT_EQ(dbits(korvu_data(F, 1)), 0x7FE0400000000000u);
}

TEST_F(Storage, ByteTruncationAndRange) {
    struct {
        double x;
        int8_t cell;
    } cases[] = {{100.9, 100}, {-127.9, -127}, {101, 101},     {-128, 101},
                 {-129, 101},  {127.5, 101},   {0.7, 0},       {-0.7, 0},
                 {1e10, 101},  {-1e300, 101},  {-100.5, -100}, {5e-324, 0}};
    for (auto& c : cases) {
        store(B, 1, c.x);
        EXPECT_EQ(raw<int8_t>(B, 1), c.cell) << c.x;
    }
    store(B, 1, -127);
    EXPECT_EQ(korvu_data(B, 1), -127.0);
    store(B, 1, 100);
    EXPECT_EQ(korvu_data(B, 1), 100.0);
    putraw<int8_t>(B, 1, 101);
    EXPECT_EQ(dbits(korvu_data(B, 1)), 0x7FE0000000000000u);
}

TEST_F(Storage, IntAndLongTruncationAndRange) {
    struct {
        double x;
        int16_t cell;
    } ic[] = {{32740.9, 32740}, {32741, 32741}, {-32767.5, -32767}, {-32768, 32741},
              {40000, 32741},   {-2.9, -2},     {1e300, 32741}};
    for (auto& c : ic) {
        store(I, 1, c.x);
        EXPECT_EQ(raw<int16_t>(I, 1), c.cell) << c.x;
    }
    struct {
        double x;
        int32_t cell;
    } lc[] = {{2147483620.5, 2147483620},  {2147483621.0, 2147483621},
              {2147483640.0, 2147483621},  {-2147483647.9, -2147483647},
              {-2147483648.0, 2147483621}, {3e9, 2147483621},
              {123456.78, 123456},         {-0.5, 0}};
    for (auto& c : lc) {
        store(L, 1, c.x);
        EXPECT_EQ(raw<int32_t>(L, 1), c.cell) << c.x;
    }
    EXPECT_EQ(kvlong_of_kvdouble(2147483647.0), 2147483621);
    EXPECT_EQ(kvint_of_kvdouble(-32767.0), -32767);
    EXPECT_EQ(kvbyte_of_kvdouble(99.99), 99);
}

TEST_F(Storage, FloatEncoding) {
    struct {
        double x;
        uint32_t bits;
    } cases[] = {
        {1.5, 0x3FC00000}, // 1.1b x 2^0
        {0.1, 0x3DCCCCCD}, // rounded to nearest
        {-2.0, 0xC0000000},
        {0x1p127, 0x7F000000},  // e = 127: too large, becomes `.`
        {-0x1p127, 0x7F000000}, // the test is on the magnitude
        {1e39, 0x7F000000},
        {0x1.fffffep126, 0x7EFFFFFF}, // largest float number
        {0x1p-128, 0x00000000},       // e = -128: zero, never a denormal
        {1e-300, 0x00000000},
        {0x1p-127, 0x00400000}, // e = -127 still converts
        // integers past 2^24 round to the nearest float, ties to even:
        // 2^24 + 1 to 2^24 (0x4B800000), 2^24 + 3 to 2^24 + 4 (mantissa 2)
        {16777217.0, 0x4B800000},
        {16777219.0, 0x4B800002},
        {-16777219.0, 0xCB800002},
    };
    for (auto& c : cases) {
        store(F, 1, c.x);
        EXPECT_EQ(raw<uint32_t>(F, 1), c.bits) << c.x;
    }
    float f;
    EXPECT_EQ(kvfloat(&f, 1.5), 0);
    EXPECT_EQ(kvfloat(&f, 1e39), 1);
    EXPECT_EQ(fbits(f), 0x7F000000u);
    EXPECT_EQ(kvfloat(&f, 1e-300), 0);
    EXPECT_EQ(fbits(f), 0u);
    // decoding: a float at or above 2^127 that is no code is still missing
    putraw<uint32_t>(F, 1, 0x7F7FFFFF);
    double d = korvu_data(F, 1);
    EXPECT_GE(d, misval);
    EXPECT_EQ(dbits(d), 0x7FEFFFFFE0000000u);
    putraw<uint32_t>(F, 1, 0x3FC00000);
    EXPECT_EQ(korvu_data(F, 1), 1.5);
}

TEST_F(Storage, DoubleStoredAsItIs) {
    for (uint64_t b : {0x7FE0FF0000000000ull, 0x3FF0000000000001ull, 0x8000000000000000ull}) {
        store(Dv, 1, D(b));
        EXPECT_EQ(raw<uint64_t>(Dv, 1), b);
        EXPECT_EQ(dbits(korvu_data(Dv, 1)), b);
    }
}

TEST_F(Storage, OldTypesHaveOneMissing) {
    const double a = mkmissing(1);
    store(OB, 1, a);
    EXPECT_EQ(raw<int8_t>(OB, 1), 0x7F);
    store(OB, 1, 126.9);
    EXPECT_EQ(raw<int8_t>(OB, 1), 126);
    store(OB, 1, 128); // e = 7
    EXPECT_EQ(raw<int8_t>(OB, 1), 0x7F);
    EXPECT_EQ(dbits(korvu_data(OB, 1)), 0x7FE0000000000000u);
    store(OI, 1, 1e6);
    EXPECT_EQ(raw<int16_t>(OI, 1), 0x7FFF);
    store(OI, 1, -300.5);
    EXPECT_EQ(korvu_data(OI, 1), -300.0);
    store(OL, 1, a);
    EXPECT_EQ(raw<int32_t>(OL, 1), 0x7FFFFFFF);
    EXPECT_EQ(dbits(korvu_data(OL, 1)), 0x7FE0000000000000u);
    store(OF, 1, 0x1p125); // e = 125 > 124
    EXPECT_EQ(raw<uint32_t>(OF, 1), 0x7F000000u);
    store(OF, 1, 0x1p124); // e = 124 converts
    EXPECT_EQ(raw<uint32_t>(OF, 1), 0x7D800000u);
    store(OF, 1, 0x1p-121); // e = -121: zero
    EXPECT_EQ(raw<uint32_t>(OF, 1), 0u);
    store(OF, 1, 0x1p-120);
    EXPECT_EQ(raw<uint32_t>(OF, 1), 0x03800000u);
    putraw<uint32_t>(OF, 1, 0x7F000800); // a new-style .a reads as `.` here
    EXPECT_EQ(dbits(korvu_data(OF, 1)), 0x7FE0000000000000u);
    store(OD, 1, mkmissing(2));
    EXPECT_EQ(raw<uint64_t>(OD, 1), 0x7FE0020000000000u);
    EXPECT_EQ(dbits(korvu_data(OD, 1)), 0x7FE0000000000000u);
}

TEST_F(Storage, Strings) {
    char buf[300];
    sstorez(S, 1, "hello world");
    EXPECT_EQ(memcmp(dtaptr(S, 1), "hello", 5), 0); // full width, no terminator
    EXPECT_STREQ(skorvu_data(S, 1, buf), "hello");
    sstorez(S, 1, "ab");
    EXPECT_EQ(memcmp(dtaptr(S, 1), "ab\0\0\0", 5), 0);
    EXPECT_STREQ(skorvu_data(S, 1, buf), "ab");
    sstore(S, 2, "xyz\0\0");
    EXPECT_STREQ(skorvu_data(S, 2, buf), "xyz");
    EXPECT_STREQ(skorvu_data(Dv, 2, buf), ""); // numeric gives ""
    store(Dv, 2, 7.0);
    sstore(Dv, 2, "abcdefgh"); // no effect on a number
    EXPECT_EQ(korvu_data(Dv, 2), 7.0);
    EXPECT_EQ(dbits(korvu_data(S, 2)), dbits(misval)); // a string reads as `.`
    // the neighbours are untouched
    store(F, 1, 2.5);
    store(OB, 1, 3);
    sstorez(S, 1, "12345");
    EXPECT_EQ(korvu_data(F, 1), 2.5);
    EXPECT_EQ(korvu_data(OB, 1), 3.0);
    bstore(S, 1, 'Z');
    EXPECT_STREQ(skorvu_data(S, 1, buf), "Z2345");
}

TEST_F(Storage, RawRecordCopies) {
    uint8_t rec[43], back[43];
    for (int k = 0; k < 43; k++) rec[k] = static_cast<uint8_t>(k * 7 + 1);
    putdtaobs(rec, 3, 43);
    getdtaobs(back, 3, 43);
    EXPECT_EQ(memcmp(rec, back, 43), 0);
    EXPECT_EQ(*dtaptr(I, 3), rec[1]);
}

TEST_F(Storage, IntegerRounding) {
    EXPECT_EQ(int4ofdouble(2.5), 3);
    EXPECT_EQ(int4ofdouble(-2.5), -3);
    EXPECT_EQ(int4ofdouble(2.49), 2);
    EXPECT_EQ(int4ofdouble(3e9), 0x7FFFFFFF);
    EXPECT_EQ(int4ofdouble(-3e9), static_cast<int32_t>(0x80000001));
    EXPECT_EQ(int4ofdouble(misval), 0x7FFFFFFF);
}

TEST_F(Storage, CollapseToOldMissing) {
    store(B, 1, mkmissing(3));
    store(I, 1, mkmissing(4));
    store(F, 1, mkmissing(5));
    store(Dv, 1, mkmissing(6));
    store(L, 1, 12);
    change_mv_to_old();
    EXPECT_EQ(raw<int8_t>(B, 1), 0x7F);
    EXPECT_EQ(raw<int16_t>(I, 1), 0x7FFF);
    EXPECT_EQ(raw<uint32_t>(F, 1), 0x7F000000u);
    EXPECT_EQ(raw<uint64_t>(Dv, 1), 0x7FE0060000000000u); // an old double keeps its bits
    EXPECT_EQ(raw<int32_t>(L, 1), 12);
    EXPECT_EQ(typlist[B - 1], KV_BYTE); // the codes themselves stay
}
