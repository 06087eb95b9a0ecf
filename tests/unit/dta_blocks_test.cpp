// Files of many thousand records, so that reading and writing run over many
// blocks and a partial last one: every cell of every storage type, in both
// byte orders, checked against values laid out by hand; a string cell's bytes
// after its terminator are dropped; the records written are the bytes laid
// out by hand.
#include "capture.h"
#include "data/dta/dta.h"
#include "dta_bytes.h"

using namespace korvu;

namespace {

using DtaBlocks = DtaFixture;

constexpr int N = 25013; // about 2.5 blocks of these 26-byte records

int bval(int i) {
    return i % 200 - 100;
}
int ival(int i) {
    return (i * 37) % 60000 - 30000;
}
int64_t lval(int i) {
    return int64_t{i} * 1000 - 5000000;
}
float fval(int i) {
    return static_cast<float>(i % 1000) * 0.25f;
}
double dval(int i) {
    return i * 1.5 - 7.25;
}
std::string sval(int i) {
    return "s" + std::to_string(i % 100000);
}

// A format-113 file of N records: byte, int, long, float, double, str7 whose
// cells carry junk behind the terminator.
Bytes make_file(bool big) {
    Bytes e;
    e.big = big;
    e.u8(113), e.u8(big ? 1 : 2), e.u8(1), e.u8(0);
    e.i16(6), e.i32(N);
    e.str("blocks", 81), e.str(" 1 Jan  2001 00:00", 18);
    for (int t : {251, 252, 253, 254, 255, 7}) e.u8(t);
    for (auto n : {"b", "i", "l", "f", "d", "s"}) e.str(n, 33);
    for (int k = 0; k < 7; ++k) e.i16(0);
    for (int k = 0; k < 6; ++k) e.str(k == 5 ? "%9s" : "%9.0g", 12);
    for (int k = 0; k < 6; ++k) e.str("", 33);
    for (int k = 0; k < 6; ++k) e.str("", 81);
    e.u8(0), e.i32(0);
    for (int i = 1; i <= N; ++i) {
        e.u8(static_cast<uint8_t>(bval(i)));
        e.i16(ival(i));
        e.i32(lval(i));
        e.f32(fval(i));
        e.f64(dval(i));
        std::string s = sval(i);
        s.push_back('\0');
        while (s.size() < 7) s.push_back('X');
        e.raw(s);
    }
    return e;
}

void expect_row(int i, int obs) {
    char buf[16];
    ASSERT_EQ(korvu_data(1, obs), bval(i)) << i;
    ASSERT_EQ(korvu_data(2, obs), ival(i)) << i;
    ASSERT_EQ(korvu_data(3, obs), static_cast<double>(lval(i))) << i;
    ASSERT_EQ(korvu_data(4, obs), static_cast<double>(fval(i))) << i;
    ASSERT_EQ(korvu_data(5, obs), dval(i)) << i;
    ASSERT_EQ(std::string(skorvu_data(6, obs, buf)), sval(i)) << i;
}

TEST_F(DtaBlocks, ManyBlocksReadInBothByteOrders) {
    CapturedOutput out;
    for (bool big : {false, true}) {
        SCOPED_TRACE(big ? "high byte first" : "low byte first");
        std::string f = path("blocks.dta");
        spill(f, make_file(big).b);
        ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
        ASSERT_EQ(nvar, 6);
        ASSERT_EQ(nobs, N);
        for (int i = 1; i <= N; ++i) expect_row(i, i);
        // the cells behind a string's terminator are zeros in memory
        for (int i : {1, 9999, N}) {
            const uint8_t* p = dtaptr(6, i);
            const size_t n = sval(i).size();
            for (size_t k = n; k < 7; ++k) EXPECT_EQ(p[k], 0) << i;
        }
        // a range of observations starting inside a block
        UseOpts o;
        o.obs1 = 10007, o.obs2 = 22222;
        ASSERT_EQ(dta_use(f.c_str(), o), 0);
        ASSERT_EQ(nobs, 22222 - 10007 + 1);
        for (int i = 10007; i <= 22222; ++i) expect_row(i, i - 10006);
    }
}

TEST_F(DtaBlocks, ManyBlocksWrittenAsRecordsLaidOutByHand) {
    CapturedOutput out;
    std::string f = path("blocks.dta"), g = path("again.dta");
    Bytes e = make_file(false);
    spill(f, e.b);
    ASSERT_EQ(dta_use(f.c_str(), UseOpts{}), 0);
    SaveOpts so;
    ASSERT_EQ(syssave(g.c_str(), so), 0);
    std::vector<uint8_t> got = slurp(g);
    // the records end the file (no labels); the text cells carry zeros
    // behind the terminator where the source carried junk
    const size_t W = 26, data = static_cast<size_t>(N) * W;
    ASSERT_GE(got.size(), data);
    ASSERT_EQ(got.size(), e.b.size());
    std::vector<uint8_t> want(e.b.end() - static_cast<std::ptrdiff_t>(data), e.b.end());
    for (int i = 1; i <= N; ++i) {
        uint8_t* s = want.data() + (i - 1) * W + 19;
        for (size_t k = sval(i).size(); k < 7; ++k) s[k] = 0;
    }
    EXPECT_TRUE(
        std::equal(want.begin(), want.end(), got.end() - static_cast<std::ptrdiff_t>(data)));
}

} // namespace
