// The reader over many damaged copies of valid files: truncations at every
// length, flipped bytes, and huge counts. No crash, no leak (the sanitizer
// build checks), a known return code, and after a failure the dataset that
// was in memory stands unchanged.
#include <random>
#include <set>

#include "capture.h"
#include "data/dta/dta.h"
#include "data/vars/char.h"
#include "dta_bytes.h"

using namespace korvu;

namespace {

using DtaFuzz = DtaFixture;

void marker() {
    drop_all(0);
    labels_clear(1);
    ASSERT_EQ(addvar_named(KV_INT, "marker", "%8.0g"), 0);
    ASSERT_EQ(setobs(1), 0);
    store(1, 1, 42);
}

std::vector<uint8_t> valid_file(const std::string& f, int format) {
    drop_all(0);
    labels_clear(1);
    addvar_named(KV_BYTE, "b", "%8.0g");
    addvar_named(KV_DOUBLE, "d", "%10.0g");
    addvar_named(5, "s", "%9s");
    setobs(3);
    for (int i = 1; i <= 3; ++i) {
        store(1, i, i);
        store(2, i, i * 0.5);
        sstorez(3, i, "abc");
    }
    std::strcpy(lblname(1), "l");
    int32_t* t = vlallocate("l", 0, 0);
    t = vladdlab(t, 0, "one", 1);
    t = vladdlab(t, 1, "two", 2);
    charsave("_dta", "c", "text");
    charsave("d", "note1", "n");
    putvarlab(2, "dd");
    SaveOpts o;
    o.oldformat = format != 113;
    o.midband = format == 110;
    o.replace = true;
    EXPECT_EQ(syssave(f.c_str(), o), 0);
    return slurp(f);
}

} // namespace

TEST_F(DtaFuzz, DamagedCopiesNeverCrashAndNeverHalfLoad) {
    CapturedOutput out;
    const std::set<int> allowed = {0, 609, 610, 688, 692, 900, 901, 902, 903};
    std::mt19937 rng(12345);
    std::string f = path("v.dta"), g = path("x.dta");
    int runs = 0, failures = 0;
    for (int format : {113, 111, 110}) {
        auto good = valid_file(f, format);
        ASSERT_GT(good.size(), 300u);
        std::vector<std::vector<uint8_t>> cases;
        for (size_t n = 0; n < good.size(); n += n < 120 ? 1 : 5)
            cases.emplace_back(good.begin(), good.begin() + n);
        for (int k = 0; k < 250; ++k) {
            auto b = good;
            int flips = 1 + static_cast<int>(rng() % 4);
            for (int j = 0; j < flips; ++j)
                b[rng() % b.size()] ^= static_cast<uint8_t>(1 + rng() % 255);
            cases.push_back(b);
        }
        // huge counts and lengths at every 4-byte boundary
        for (size_t at = 0; at + 4 <= good.size(); at += at < 120 ? 1 : 3) {
            auto b = good;
            b[at] = 0xFF, b[at + 1] = 0xFF, b[at + 2] = 0xFF, b[at + 3] = 0x7F;
            cases.push_back(b);
        }
        for (auto& c : cases) {
            marker();
            spill(g, c);
            int rc = dta_use(g.c_str(), UseOpts{});
            ++runs;
            EXPECT_TRUE(allowed.count(rc)) << "rc " << rc;
            if (rc) {
                ++failures;
                ASSERT_EQ(nvar, 1);
                ASSERT_EQ(nobs, 1);
                ASSERT_EQ(korvu_data(1, 1), 42);
            } else {
                ASSERT_LE(nvar, 3);
            }
            out.take();
        }
    }
    EXPECT_GT(failures, runs / 4);
}
