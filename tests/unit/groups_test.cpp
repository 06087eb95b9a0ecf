// Finding groups and their statistics: each path of the engine (direct table,
// hash of one number, hash of rows with text) on small data whose groups and
// values are worked out by hand.
#include <gtest/gtest.h>

#include "dataarea_fixture.h"

#include <cmath>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "data/area/storage.h"
#include "data/groups/groups.h"
#include "data/vars/vartab.h"
#include "kernel/parse/cmdparse.h"

using namespace korvu;

namespace {

class GroupsTest : public ::testing::Test {
  protected:
    void SetUp() override { open_data_area(1 << 20); }
    void TearDown() override { news_free(); }
    // x long, y double with fractions and missing values, s text
    void fill() {
        ASSERT_EQ(addvar("x", KV_LONG), 0);
        ASSERT_EQ(addvar("y", KV_DOUBLE), 0);
        ASSERT_EQ(addvar("s", 4), 0);
        ASSERT_EQ(repartobs(8), 0);
        nobs = 8;
        const double xs[] = {5, 3, 5, 9, 3, 5, misval, 9};
        const double ys[] = {0.5, 2.25, 0.5, misval, -1, mkmissing(1), 2.25, 0.5};
        const char* ss[] = {"b", "a", "b", "", "a", "c", "a", "b"};
        for (int i = 1; i <= 8; i++) {
            store(1, i, xs[i - 1]);
            store(2, i, ys[i - 1]);
            sstorez(3, i, ss[i - 1]);
        }
    }
};

TEST_F(GroupsTest, DirectTableNumbersInKeyOrderOrAsMet) {
    fill();
    int32_t key = 1;
    Groups g;
    // x: 3 -> 0, 5 -> 1, 9 -> 2; the missing one is left out with GRP_NOMISS
    ASSERT_EQ(groups_make(&g, &key, 1, 1, 8, nullptr, GRP_ORDER | GRP_MEMBERS | GRP_NOMISS), 0);
    EXPECT_EQ(g.ngroups, 3);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{1, 0, 1, 2, 0, 1, -1, 2}));
    EXPECT_EQ(g.rep, (std::vector<int32_t>{2, 1, 4}));
    EXPECT_EQ(g.members, (std::vector<int32_t>{2, 5, 1, 3, 6, 4, 8}));
    EXPECT_EQ(g.start, (std::vector<int32_t>{0, 2, 5, 7}));
    // as met, and the missing value a group of its own (the hash path)
    ASSERT_EQ(groups_make(&g, &key, 1, 1, 8, nullptr, 0), 0);
    EXPECT_EQ(g.ngroups, 4);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{0, 1, 0, 2, 1, 0, 3, 2}));
    // in key order the missing value comes last
    ASSERT_EQ(groups_make(&g, &key, 1, 1, 8, nullptr, GRP_ORDER), 0);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{1, 0, 1, 2, 0, 1, 3, 2}));
}

TEST_F(GroupsTest, HashOfFractionsAndOfRowsWithText) {
    fill();
    int32_t key = 2;
    Groups g;
    // y: -1 < 0.5 < 2.25 < . < .a
    ASSERT_EQ(groups_make(&g, &key, 1, 1, 8, nullptr, GRP_ORDER), 0);
    EXPECT_EQ(g.ngroups, 5);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{1, 2, 1, 3, 0, 4, 2, 1}));
    // s then x over observations 2..8, observation 5 not taken
    int32_t keys[] = {3, 1};
    uint8_t take[] = {1, 1, 1, 0, 1, 1, 1};
    ASSERT_EQ(groups_make(&g, keys, 2, 2, 8, take, GRP_ORDER), 0);
    // ("", 9) < ("a", 3) < ("a", .) < ("b", 5) < ("b", 9) < ("c", 5)
    EXPECT_EQ(g.ngroups, 6);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{1, 3, 0, -1, 5, 2, 4}));
    // empty text left out with GRP_NOMISS, and the missing x
    ASSERT_EQ(groups_make(&g, keys, 2, 2, 8, nullptr, GRP_ORDER | GRP_NOMISS), 0);
    EXPECT_EQ(g.ngroups, 4);
    EXPECT_EQ(g.gid, (std::vector<int32_t>{0, 1, -1, 0, 3, -1, 2}));
}

TEST_F(GroupsTest, StatisticsOfEachGroup) {
    fill();
    int32_t key = 1;
    Groups g;
    ASSERT_EQ(groups_make(&g, &key, 1, 1, 8, nullptr, GRP_ORDER | GRP_MEMBERS | GRP_NOMISS), 0);
    std::vector<double> y(8);
    groups_column(2, 1, 8, y.data());
    // groups: x=3 {2.25, -1}, x=5 {0.5, 0.5, .a}, x=9 {., 0.5}
    auto stat = [&](int s, double p = 0, const double* w = nullptr, int wk = 0) {
        std::vector<double> out(3);
        EXPECT_EQ(group_stat(g, GStatReq{s, p}, y.data(), w, wk, out.data()), 0);
        return out;
    };
    EXPECT_EQ(stat(GS_MEAN), (std::vector<double>{0.625, 0.5, 0.5}));
    EXPECT_EQ(stat(GS_SUM), (std::vector<double>{1.25, 1.0, 0.5}));
    EXPECT_EQ(stat(GS_COUNT), (std::vector<double>{2, 2, 1}));
    EXPECT_EQ(stat(GS_MIN), (std::vector<double>{-1, 0.5, 0.5}));
    EXPECT_EQ(stat(GS_FIRST), (std::vector<double>{2.25, 0.5, misval}));
    EXPECT_EQ(stat(GS_LAST), (std::vector<double>{-1, mkmissing(1), 0.5}));
    EXPECT_EQ(stat(GS_LASTNM), (std::vector<double>{-1, 0.5, 0.5}));
    EXPECT_EQ(stat(GS_NMISS), (std::vector<double>{0, 1, 1}));
    // sd of {2.25, -1}: |2.25 + 1| / sqrt 2
    std::vector<double> sd = stat(GS_SD);
    EXPECT_DOUBLE_EQ(sd[0], 3.25 / std::sqrt(2.0));
    EXPECT_EQ(sd[1], 0);
    EXPECT_EQ(sd[2], misval);
    // the median of two values is their mean
    EXPECT_EQ(stat(GS_PCTILE, 50), (std::vector<double>{0.625, 0.5, 0.5}));
    // frequency weights 1..8: x=3 holds 2.25 twice and -1 five times
    std::vector<double> w = {1, 2, 3, 4, 5, 6, 7, 8};
    // (x=5 and x=9 keep only values of 0.5 once their missing ones go)
    std::vector<double> m = stat(GS_MEAN, 0, w.data(), WGT_FW);
    EXPECT_DOUBLE_EQ(m[0], (2 * 2.25 - 5) / 7);
    EXPECT_EQ(m[1], 0.5);
    EXPECT_EQ(m[2], 0.5);
    EXPECT_EQ(stat(GS_SUM, 0, w.data(), WGT_FW), (std::vector<double>{2 * 2.25 - 5, 2, 4}));
    EXPECT_EQ(stat(GS_COUNT, 0, w.data(), WGT_FW), (std::vector<double>{7, 4, 8}));
    // weighted median: cumulative weight 5 of 7 reaches 3.5 at -1
    EXPECT_EQ(stat(GS_PCTILE, 50, w.data(), WGT_FW), (std::vector<double>{-1, 0.5, 0.5}));
}

TEST(GroupsPercentile, RuleOfNeighbours) {
    // n*p/100 whole: mean of the order statistics at n*p/100 and the next
    double v[] = {4, 1, 3, 2};
    EXPECT_EQ(gpctile(v, 4, 50), 2.5);
    double v2[] = {4, 1, 3, 2};
    EXPECT_EQ(gpctile(v2, 4, 25), 1.5);
    // not whole: the next one up (4*0.3 = 1.2 -> the 2nd)
    double v3[] = {4, 1, 3, 2};
    EXPECT_EQ(gpctile(v3, 4, 30), 2);
    double v4[] = {7};
    EXPECT_EQ(gpctile(v4, 1, 99), 7);
}

} // namespace
