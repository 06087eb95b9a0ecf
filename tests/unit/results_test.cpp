// Result stores, the checks of a posted variance matrix, compensated sums and
// percentiles, each against values worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "capture.h"
#include "kernel/dict/dict.h"
#include "kernel/loop/limits.h"
#include "kernel/macro/macro.h"
#include "results/estore.h"
#include "results/settings.h"
#include "results/stores.h"
#include "results/summarize.h"

using namespace korvu;

namespace korvu {
int cfcnstr(const char* name, char* buf, size_t size);
}

namespace {

struct Stores : ::testing::Test {
    void SetUp() override {
        dminit();
        retval_zap();
        estval_clear();
    }
    void TearDown() override {
        retval_zap();
        estval_clear();
        dmshutdown();
    }
};

TEST_F(Stores, TwentyFirstScalarGoesToTheDictionaryAndKeepsOrder) {
    for (int i = 1; i <= 21; ++i)
        ASSERT_EQ(retval_set_scalar(("s" + std::to_string(i)).c_str(), i), 0);
    EXPECT_EQ(local_retval_n, 20);
    EXPECT_EQ(retval_flag, 3);
    EXPECT_EQ(dmcount(RT_SCALAR), 1);
    ASSERT_EQ(retval_find("s21"), RF_SCALAR);
    EXPECT_EQ(retval_get_as_double(), 21);
    ASSERT_EQ(retval_find("s7"), RF_SCALAR);
    EXPECT_EQ(retval_get_as_double(), 7);
    std::string names;
    ASSERT_EQ(retvals_dir(RC_R, 1, names), 0);
    EXPECT_EQ(names.substr(0, 9), "s1 s2 s3 ");
    EXPECT_EQ(names.substr(names.size() - 7), "s20 s21");
    // reset changes a table entry in place, but not a scalar in the dictionary
    retval_reset_scalar("s3", 33);
    retval_reset_scalar("s21", 99);
    ASSERT_EQ(retval_find("s3"), RF_SCALAR);
    EXPECT_EQ(retval_get_as_double(), 33);
    ASSERT_EQ(retval_find("s21"), RF_SCALAR);
    EXPECT_EQ(retval_get_as_double(), 21);
    // erase closes the gap in the table
    retval_erase("s1");
    EXPECT_EQ(local_retval_n, 19);
    char name[33];
    double v;
    ASSERT_EQ(retval_get_internal_scalar(0, name, &v), 1);
    EXPECT_STREQ(name, "s2");
    retval_clear();
    EXPECT_EQ(retval_find("s2"), RF_ABSENT);
    EXPECT_EQ(dmcount(RT_SCALAR), 0);
}

TEST_F(Stores, MacrosScalarsAsTextAndAbsentNames) {
    ASSERT_EQ(retval_set_local("m", "some text"), 0);
    ASSERT_EQ(retval_set_local("empty", ""), 0);
    retval_set_scalar("third", 1.0 / 3);
    char buf[64];
    ASSERT_EQ(retval_find("m"), RF_MACRO);
    retval_get_as_string(buf, sizeof buf);
    EXPECT_STREQ(buf, "some text");
    retval_get_as_string(buf, 5); // cut to the size with the last byte NUL
    EXPECT_STREQ(buf, "some");
    EXPECT_EQ(retval_find("empty"), RF_ABSENT);
    ASSERT_EQ(retval_find("third"), RF_SCALAR);
    retval_get_as_string(buf, sizeof buf);
    EXPECT_STREQ(buf, ".3333333333333333");
    ASSERT_EQ(retval_find("m"), RF_MACRO);
    double d;
    EXPECT_NE(retval_get_as_double_any(&d), 0);
    retval_set_local("num", "2.5");
    ASSERT_EQ(retval_find("num"), RF_MACRO);
    ASSERT_EQ(retval_get_as_double_any(&d), 0);
    EXPECT_EQ(d, 2.5);
}

TEST_F(Stores, EstimationScalarsAndClear) {
    estval_set_scalar("N", 74);
    estval_set_local("cmd", "fit");
    macresave("S_E_vce", "robust");
    lastest = 18;
    EXPECT_EQ(estval_get_double("N"), 74);
    char buf[64];
    estval_use_vcetype(buf, sizeof buf); // falls back to the global
    EXPECT_STREQ(buf, "robust");
    estval_clear();
    EXPECT_EQ(lastest, 0);
    EXPECT_EQ(estval_find("N"), RF_ABSENT);
    EXPECT_EQ(estval_find("cmd"), RF_ABSENT);
    EXPECT_EQ(macptr("S_E_vce"), nullptr);
}

TEST(CfcnStr, LongTextIsCutWithTwoDots) {
    std::string text(30, 'a');
    for (int i = 0; i < 30; ++i) text[i] = static_cast<char>('a' + i % 26);
    snprintf(kset.lumolibs, sizeof kset.lumolibs, "%s", text.c_str());
    char buf[20];
    cfcnstr("lumolibs", buf, sizeof buf);
    EXPECT_EQ(std::string(buf), text.substr(0, 17) + "..");
    std::vector<char> big(static_cast<size_t>(macrolen));
    cfcnstr("lumolibs", big.data(), big.size());
    EXPECT_EQ(std::string(big.data()), text);
    kset.lumolibs[0] = 0;
    cfcnstr("nosuchkey", buf, sizeof buf);
    EXPECT_STREQ(buf, "");
}

// --- the variance matrix -------------------------------------------------------------

DenseMat mat2(double a, double b, double c, double d) {
    DenseMat m;
    m.rows = m.cols = 2;
    m.x = {a, b, c, d};
    return m;
}

TEST(Vcheck, CorrelationJustBeyondOneIsPulledBack) {
    // variances 4 and 9: the covariance 6 is a correlation of exactly one
    double c = 6 * (1 + 5e-11);
    DenseMat V = mat2(4, c, c, 9);
    ASSERT_EQ(vcheck(V, "t"), 0);
    EXPECT_EQ(V.at(0, 1), 6);
    EXPECT_EQ(V.at(1, 0), 6);
    c = 6 * (1 + 2e-10);
    V = mat2(4, c, c, 9);
    EXPECT_EQ(vcheck(V, "t"), 506);
    // negative side, equal variances: r = V[0,1] / V[0,0]
    V = mat2(2, -2 * (1 + 5e-11), -2 * (1 + 5e-11), 2);
    ASSERT_EQ(vcheck(V, "t"), 0);
    EXPECT_EQ(V.at(0, 1), -2);
    V = mat2(2, 1, 1, 2);
    ASSERT_EQ(vcheck(V, "t"), 0);
    EXPECT_EQ(V.at(0, 1), 1);
}

TEST(Vcheck, PairsMadeEqualAndAnAsymmetricMatrixZeroed) {
    // a pair differing in the 14th digit takes the mean of the two
    DenseMat V = mat2(4, 1.0, 1.0 + 1e-13, 9);
    ASSERT_EQ(vcheck(V, "t"), 0);
    EXPECT_EQ(V.at(0, 1), V.at(1, 0));
    EXPECT_EQ(V.at(0, 1), (1.0 + (1.0 + 1e-13)) / 2);
    CapturedOutput out;
    V = mat2(4, 1.0, 1.5, 9);
    ASSERT_EQ(vcheck(V, "t"), 0);
    for (double x : V.x) EXPECT_EQ(x, 0);
    EXPECT_NE(out.take().find("Warning:  variance matrix is nonsymmetric or highly singular"),
              std::string::npos);
}

// --- sums and percentiles ----------------------------------------------------------------

TEST(Accumerr, KeepsWhatPlainAdditionLoses) {
    // 1e16 + 1 + 1 - 1e16 is 2; plain double addition gives 0
    double s = 0, e = 0;
    for (double x : {1e16, 1.0, 1.0, -1e16}) accumerr(&s, &e, x);
    EXPECT_EQ(s + e, 2);
    // one million times 0.1: 100000.0000000000055511... by rational arithmetic
    // on the double nearest 0.1, whose nearest double is 100000; plain
    // addition drifts to 100000.00000133288 (the same loop in python3)
    s = e = 0;
    double plain = 0;
    for (int i = 0; i < 1000000; ++i) accumerr(&s, &e, 0.1), plain += 0.1;
    EXPECT_EQ(s + e, 100000.0);
    EXPECT_EQ(plain, 100000.00000133288);
}

TEST(Percentiles, UnweightedByHand) {
    // sorted: 1 1 2 2 3 3 3 3 4 5 5 5 6 7 8 9 9 9
    std::vector<double> base = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8, 9, 7, 9, 3, 2, 3};
    const double p[9] = {1, 5, 10, 25, 50, 75, 90, 95, 99};
    const double want[9] = {1, 1, 1, 3, 4.5, 7, 9, 9, 9};
    for (int k = 0; k < 9; ++k) {
        std::vector<double> v = base;
        EXPECT_EQ(pctile_unweighted(v.data(), v.size(), p[k]), want[k]) << p[k];
    }
    // all nine at once, asked for out of order
    const double shuffled[9] = {50, 1, 99, 25, 5, 95, 10, 90, 75};
    const double wantsh[9] = {4.5, 1, 9, 3, 1, 9, 1, 9, 7};
    std::vector<double> v = base;
    double got[9];
    pctiles_unweighted(v.data(), v.size(), shuffled, 9, got);
    for (int k = 0; k < 9; ++k) EXPECT_EQ(got[k], wantsh[k]) << shuffled[k];
    double one = 7;
    EXPECT_EQ(pctile_unweighted(&one, 1, 50), 7);
    std::vector<double> two = {4, 2};
    EXPECT_EQ(pctile_unweighted(two.data(), 2, 50), 3);
    EXPECT_EQ(pctile_unweighted(two.data(), 2, 10), 2);
    EXPECT_EQ(pctile_unweighted(two.data(), 2, 99), 4);
}

TEST(Percentiles, WeightedEqualsExpandedData) {
    std::vector<double> x = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5, 8, 9, 7, 9, 3, 2, 3};
    std::vector<double> w = {2, 1, 1, 3, 1, 1, 2, 1, 1, 1, 1, 2, 1, 1, 1, 2, 1, 1};
    std::vector<double> expanded;
    for (size_t i = 0; i < x.size(); ++i)
        for (int k = 0; k < w[i]; ++k) expanded.push_back(x[i]);
    // 24 values: 1 1 1 1 2 2 2 3 3 3 3 3 3 4 5 5 5 6 7 8 8 9 9 9
    const double want[9] = {1, 1, 1, 2, 3, 6.5, 9, 9, 9};
    const double p[9] = {1, 5, 10, 25, 50, 75, 90, 95, 99};
    for (int k = 0; k < 9; ++k) {
        EXPECT_EQ(pctile_weighted(x.data(), w.data(), x.size(), p[k]), want[k]) << p[k];
        std::vector<double> e = expanded;
        EXPECT_EQ(pctile_unweighted(e.data(), e.size(), p[k]), want[k]) << p[k];
    }
    // scaling the weights changes nothing
    for (double& v : w) v *= 0.37;
    EXPECT_EQ(pctile_weighted(x.data(), w.data(), x.size(), 50), 3);
}

} // namespace
