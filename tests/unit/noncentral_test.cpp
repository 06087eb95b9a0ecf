// The non-central chi-squared, beta and F distributions and the bivariate
// normal against values integrated from their densities with mpmath
// (tests/reference/noncentral_ref.py writes the table), with their edges.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "data/area/missing.h"
#include "results/distrib/distrib.h"

namespace {

using namespace korvu;

struct RefRow {
    const char* name;
    double a[4];
    double want;
    double tol;
};

const RefRow kRef[] = {
#include "../reference/noncentral_ref.inc"
};

double call(const RefRow& r) {
    const double* a = r.a;
    std::string n = r.name;
    if (n == "nchi2") return nchi2(a[0], a[1], a[2]);
    if (n == "invnchi2") return invnchi2(a[0], a[1], a[2]);
    if (n == "npnchi2") return npnchi2(a[0], a[1], a[2]);
    if (n == "nibeta") return nibeta(a[0], a[1], a[2], a[3]);
    if (n == "invnibeta") return invnibeta(a[0], a[1], a[2], a[3]);
    if (n == "nbetaden") return nbetaden(a[0], a[1], a[2], a[3]);
    if (n == "nFden") return nFden(a[0], a[1], a[2], a[3]);
    if (n == "nFtail") return nFtail(a[0], a[1], a[2], a[3]);
    if (n == "invnFtail") return invnFtail(a[0], a[1], a[2], a[3]);
    if (n == "binormal") return binormal(a[0], a[1], a[2]);
    ADD_FAILURE() << "no function " << n;
    return misval;
}

TEST(Noncentral, AgainstIntegratedDensities) {
    int n = 0;
    for (const RefRow& r : kRef) {
        double got = call(r);
        double e = r.want == 0 ? std::fabs(got) : std::fabs(got - r.want) / std::fabs(r.want);
        EXPECT_LE(e, r.tol) << r.name << "(" << r.a[0] << ", " << r.a[1] << ", " << r.a[2] << ", "
                            << r.a[3] << ") = " << got << ", want " << r.want;
        n++;
    }
    EXPECT_GT(n, 250);
}

// With no non-centrality each is its central distribution.
TEST(Noncentral, ZeroNoncentralityIsCentral) {
    for (double x : {0.3, 2.0, 9.0}) {
        EXPECT_DOUBLE_EQ(nchi2(4, 0, x), chi2cumm(4, x));
        EXPECT_DOUBLE_EQ(nibeta(2, 3, 0, x / 10), ibeta(2, 3, x / 10));
        EXPECT_DOUBLE_EQ(nFtail(3, 8, 0, x), ftail(3, 8, x));
        EXPECT_NEAR(nFden(3, 8, 0, x), fden(3, 8, x), 1e-16);
    }
    // the bivariate normal with no correlation is a product
    EXPECT_NEAR(binormal(0.4, -1.1, 0), stnormal(0.4) * stnormal(-1.1), 1e-16);
    EXPECT_EQ(binormal(0, 0, 1), 0.5);
}

TEST(Noncentral, EdgesAndMissing) {
    EXPECT_EQ(nchi2(3, 2, -1), 0);
    EXPECT_EQ(nchi2(0, 2, 1), misval);
    EXPECT_EQ(nchi2(3, -1, 1), misval);
    EXPECT_EQ(nchi2(misval, 2, 1), misval);
    EXPECT_EQ(nibeta(2, 3, 1, 0), 0);
    EXPECT_EQ(nibeta(2, 3, 1, 1), 1);
    EXPECT_EQ(nibeta(2, 3, 1, 1.5), misval);
    EXPECT_EQ(nFtail(2, 3, 1, 0), 1);
    EXPECT_EQ(invnFtail(2, 3, 1, 1), 0);
    EXPECT_EQ(invnchi2(2, 3, 1), misval);
    // no non-centrality reaches a probability above the central one
    EXPECT_EQ(npnchi2(3, 2, chi2cumm(3, 2) + 0.01), misval);
    EXPECT_EQ(binormal(1, 1, 1.5), misval);
    EXPECT_EQ(binormal(misval, 1, 0.5), misval);
    EXPECT_EQ(binormal(-40, 2, 0.5), 0);
}

} // namespace
