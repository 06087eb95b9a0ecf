// The sandwich engine shared by the command _robust and the Lumo _robust()
// and _svy(): the middle matrix by strata and V M V on small cases worked
// by hand.
#include <gtest/gtest.h>

#include <vector>

#include "results/regress/sandwich.h"

using namespace korvu;

namespace {
SandPsu unit(std::vector<double> u, const char* stratum, double fpc = misval, double m = 1) {
    SandPsu g;
    g.u = std::move(u);
    g.m = m;
    g.fpc = fpc;
    g.stratum = stratum;
    return g;
}
} // namespace

TEST(Sandwich, MiddleMatrixByStrata) {
    // stratum a: 1 and 3, mean 2, squares 1 + 1, times 2/1: 4
    // stratum b: 2, 2, 5, mean 3, squares 1 + 1 + 4, times 3/2: 9
    std::vector<SandPsu> g = {unit({1}, "a"), unit({3}, "a"), unit({2}, "b"), unit({2}, "b"),
                              unit({5}, "b")};
    std::vector<double> M;
    int ns = 0;
    double nu = 0;
    const char* msg = "";
    ASSERT_EQ(sandwich_meat(g, 1, true, false, &M, &ns, &nu, &msg), 0);
    EXPECT_DOUBLE_EQ(M[0], 13);
    EXPECT_EQ(ns, 2);
    EXPECT_DOUBLE_EQ(nu, 5);
    // not centred: the plain sum of squares 1 + 9 + 4 + 4 + 25
    ASSERT_EQ(sandwich_meat(g, 1, false, false, &M, &ns, &nu, &msg), 0);
    EXPECT_DOUBLE_EQ(M[0], 43);
    // sampling rates: a at 1/2 (given as a rate), b at 3 of 6 (a size): 4/2 + 9/2
    for (auto& u : g) u.fpc = u.stratum == "a" ? 0.5 : 6;
    ASSERT_EQ(sandwich_meat(g, 1, true, true, &M, &ns, &nu, &msg), 0);
    EXPECT_DOUBLE_EQ(M[0], 6.5);
    // a unit counted twice is two units of the same row
    std::vector<SandPsu> w = {unit({1}, "", misval, 2), unit({4}, "")};
    ASSERT_EQ(sandwich_meat(w, 1, true, false, &M, &ns, &nu, &msg), 0);
    // values 1, 1, 4: mean 2, squares 1 + 1 + 4, times 3/2
    EXPECT_DOUBLE_EQ(M[0], 9);
    EXPECT_DOUBLE_EQ(nu, 3);
}

TEST(Sandwich, CrossTermsAndProduct) {
    // units (1, 2) and (3, -1) not centred: M = [1 2; 2 4] + [9 -3; -3 1]
    std::vector<SandPsu> g = {unit({1, 2}, ""), unit({3, -1}, "")};
    std::vector<double> M;
    int ns;
    double nu;
    const char* msg;
    ASSERT_EQ(sandwich_meat(g, 2, false, false, &M, &ns, &nu, &msg), 0);
    EXPECT_EQ(M, (std::vector<double>{10, -1, -1, 5}));
    // V = [2 1; 1 3], M = diag(1, 2): V M V = [6 8; 8 19], times 0.5
    const double V[4] = {2, 1, 1, 3};
    double R[4];
    sandwich_vmv(V, {1, 0, 0, 2}, 2, 0.5, R);
    EXPECT_DOUBLE_EQ(R[0], 3);
    EXPECT_DOUBLE_EQ(R[1], 4);
    EXPECT_DOUBLE_EQ(R[2], 4);
    EXPECT_DOUBLE_EQ(R[3], 9.5);
    // a missing multiplier gives zeros, not missing values
    sandwich_vmv(V, {1, 0, 0, 2}, 2, misval, R);
    EXPECT_EQ(R[0], 0);
}

TEST(Sandwich, Refusals) {
    std::vector<double> M;
    int ns;
    double nu;
    const char* msg = "";
    // a stratum of one unit cannot be centred
    std::vector<SandPsu> one = {unit({1}, "a"), unit({2}, "b"), unit({3}, "b")};
    EXPECT_EQ(sandwich_meat(one, 1, true, false, &M, &ns, &nu, &msg), 460);
    EXPECT_STREQ(msg, "stratum with only one PSU detected");
    // but is fine uncentred
    EXPECT_EQ(sandwich_meat(one, 1, false, false, &M, &ns, &nu, &msg), 0);
    // a stratum size below the units drawn, and a negative fpc
    std::vector<SandPsu> g = {unit({1}, "a", 1.5), unit({2}, "a", 1.5)};
    EXPECT_EQ(sandwich_meat(g, 1, true, true, &M, &ns, &nu, &msg), 198);
    for (auto& u : g) u.fpc = -1;
    EXPECT_EQ(sandwich_meat(g, 1, true, true, &M, &ns, &nu, &msg), 198);
    EXPECT_STREQ(msg, "fpc must be >= 0");
}
