// The observation generator behind the sort's pre-shuffle, and ranking a
// variable through an index. Expected values are worked out by hand from the
// generator's recurrence and from the values stored.
#include <gtest/gtest.h>

#include "dataarea_fixture.h"

#include <cstring>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/select/generate.h"
#include "data/sort/sort.h"
#include "data/vars/vartab.h"

using namespace korvu;

namespace {

TEST(SortGenerator, RecurrenceFromTheInitialSeed) {
    setsortseed(1001);
    srndobs(1, 10);
    // s' = ((s*3433) & M) + ((s*65536) & M), & M; draw = trunc(s'/(M-1) * 9 + .5) + 1
    const uint32_t states[] = {69037969u,  508436345u, 85790113u,
                               540853257u, 317316273u, 2127659417u};
    const int32_t draws[] = {1, 3, 1, 3, 2, 10};
    for (int k = 0; k < 6; k++) {
        EXPECT_EQ(rndobs(), draws[k]) << k;
        EXPECT_EQ(sortseed(), states[k]) << k;
    }
    // srndobs sets the range only; the state goes on
    srndobs(5, 5);
    EXPECT_EQ(rndobs(), 5);
    setsortseed(1001);
}

class Ranking : public ::testing::Test {
  protected:
    void SetUp() override { open_data_area(1 << 20); }
    void TearDown() override { news_free(); }
    int32_t idx(int i) {
        int32_t r;
        std::memcpy(&r, dtaptr(3, i), 4);
        return r;
    }
};

TEST_F(Ranking, SelectedNonMissingFirstInOrderOfValues) {
    ASSERT_EQ(addvar("x", KV_DOUBLE), 0);
    ASSERT_EQ(addvar("s", 5), 0);
    ASSERT_EQ(addvar("ix", KV_LONG), 0);
    ASSERT_EQ(repartobs(6), 0);
    nobs = 6;
    const double xs[] = {4.5, misval, -1, 2, mkmissing(1), 3};
    const char* ss[] = {"pear", "fig", "apple", "kiwi", "date", "lime"};
    for (int i = 1; i <= 6; i++) {
        store(1, i, xs[i - 1]);
        sstorez(2, i, ss[i - 1]);
    }
    srtlist[0] = 0;
    // all selected: the two missing go behind, in observation order
    EXPECT_EQ(sortvar(1, 3, 1, 6, nullptr), 4);
    const int32_t want[] = {3, 4, 6, 1, 2, 5};
    for (int i = 1; i <= 6; i++) EXPECT_EQ(idx(i), want[i - 1]) << i;
    // a selection and a range: observations 1..5 with the 4th left out
    const uint8_t sel[] = {1, 1, 1, 0, 1, 1};
    EXPECT_EQ(sortvar(1, 3, 1, 5, sel), 2);
    EXPECT_EQ(idx(1), 3);
    EXPECT_EQ(idx(2), 1);
    // strings rank by byte order and have no missing
    EXPECT_EQ(sortvar(2, 3, 1, 6, nullptr), 6);
    const int32_t bystr[] = {3, 5, 2, 4, 6, 1};
    for (int i = 1; i <= 6; i++) EXPECT_EQ(idx(i), bystr[i - 1]) << i;
    // the data did not move
    for (int i = 1; i <= 6; i++) EXPECT_EQ(mapj[i - 1], i - 1);
}

TEST_F(Ranking, SecondKeyBreaksTies) {
    ASSERT_EQ(addvar("a", KV_BYTE), 0);
    ASSERT_EQ(addvar("b", KV_INT), 0);
    ASSERT_EQ(addvar("ix", KV_LONG), 0);
    ASSERT_EQ(repartobs(5), 0);
    nobs = 5;
    const double as[] = {2, 1, 2, 1, 0}, bs[] = {9, 8, 7, 6, 5};
    for (int i = 1; i <= 5; i++) {
        store(1, i, as[i - 1]);
        store(2, i, bs[i - 1]);
        int32_t k = i;
        std::memcpy(dtaptr(3, i), &k, 4);
    }
    srtlist[0] = 0;
    sortvar1(1, 2, 3, 5);
    const int32_t want[] = {5, 4, 2, 3, 1};
    for (int i = 1; i <= 5; i++) EXPECT_EQ(idx(i), want[i - 1]) << i;
}

TEST_F(Ranking, DroppingMarkedObservationsKeepsTheOthersInOrder) {
    ASSERT_EQ(addvar("x", KV_DOUBLE), 0);
    ASSERT_EQ(addvar("m", KV_LONG), 0);
    ASSERT_EQ(repartobs(6), 0);
    nobs = 6;
    const double marks[] = {0, 1, 0, 0, 7, 0};
    for (int i = 1; i <= 6; i++) {
        store(1, i, i * 10);
        store(2, i, marks[i - 1]);
    }
    updata = 0;
    EXPECT_EQ(dropobsifmarked(2), 2);
    ASSERT_EQ(nobs, 4);
    const double left[] = {10, 30, 40, 60};
    for (int i = 1; i <= 4; i++) EXPECT_EQ(korvu_data(1, i), left[i - 1]);
    // the columns hold the kept observations in order, read straight
    int type;
    const double* x = static_cast<const double*>(colbase(1, &type));
    EXPECT_EQ(type, KV_DOUBLE);
    for (int i = 1; i <= 4; i++) EXPECT_EQ(x[i - 1], left[i - 1]);
    for (int k = 0; k < 6; k++) EXPECT_EQ(mapj[k], k);
    EXPECT_EQ(updata, 1);
    EXPECT_EQ(dropobsifmarked(2), 0);
}

} // namespace
