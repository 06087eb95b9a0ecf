// Distribution functions against values worked out at 50 digits with mpmath
// (tests/reference/distrib_ref.py writes the table), their edges and the
// round trips of the inverses.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
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
#include "../reference/distrib_ref.inc"
// the non-central family and the bivariate normal, integrated from their
// densities (tests/reference/noncentral_ref.py)
#include "../reference/noncentral_ref.inc"
};

double call(const RefRow& r) {
    const double* a = r.a;
    std::string n = r.name;
    if (n == "stlgma") return stlgma(a[0]);
    if (n == "digamma") return digamma(a[0]);
    if (n == "trigamma") return trigamma(a[0]);
    if (n == "gammap") return gammap(a[0], a[1]);
    if (n == "gammap_dx") return gammap_dx(a[0], a[1]);
    if (n == "gammap_dxdx") return gammap_dxdx(a[0], a[1]);
    if (n == "gammap_da") return gammap_da(a[0], a[1]);
    if (n == "gammap_dada") return gammap_dada(a[0], a[1]);
    if (n == "gammap_dadx") return gammap_dadx(a[0], a[1]);
    if (n == "chi2tail") return chi2tail(a[0], a[1]);
    if (n == "chi2cumm") return chi2cumm(a[0], a[1]);
    if (n == "ibeta") return ibeta(a[0], a[1], a[2]);
    if (n == "ttail") return ttail(a[0], a[1]);
    if (n == "tden") return tden(a[0], a[1]);
    if (n == "ftail") return ftail(a[0], a[1], a[2]);
    if (n == "fcumm") return fcumm(a[0], a[1], a[2]);
    if (n == "fden") return fden(a[0], a[1], a[2]);
    if (n == "biprob") return biprob(a[0], a[1], a[2]);
    if (n == "stnormal") return stnormal(a[0]);
    if (n == "normalden") return normalden(a[0]);
    if (n == "lnnormalden") return lnnormalden(a[0]);
    if (n == "stlnnormal") return stlnnormal(a[0]);
    if (n == "betaden") return betaden(a[0], a[1], a[2]);
    if (n == "gammaden") return gammaden(a[0], a[1], a[2], a[3]);
    if (n == "inormal") return inormal(a[0]);
    if (n == "invgammap") return invgammap(a[0], a[1]);
    if (n == "invchi2cumm") return invchi2cumm(a[0], a[1]);
    if (n == "invchi2tail") return invchi2tail(a[0], a[1]);
    if (n == "invttail") return invttail(a[0], a[1]);
    if (n == "invftail") return invftail(a[0], a[1], a[2]);
    if (n == "invfcumm") return invfcumm(a[0], a[1], a[2]);
    if (n == "invibeta") return invibeta(a[0], a[1], a[2]);
    if (n == "invbiprob") return invbiprob(a[0], a[1], a[2]);
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

double relerr(double got, double want) {
    if (want == 0) return std::fabs(got);
    return std::fabs(got - want) / std::fabs(want);
}

// Every row of the table, grouped by function in the failure report.
TEST(Distrib, AgainstHighPrecision) {
    int n = 0;
    for (const RefRow& r : kRef) {
        double got = call(r);
        double e = relerr(got, r.want);
        EXPECT_LE(e, r.tol) << r.name << "(" << r.a[0] << ", " << r.a[1] << ", " << r.a[2]
                            << ") = " << got << ", want " << r.want;
        n++;
    }
    EXPECT_GT(n, 1000);
}

// The inverses give back their argument through the forward function.
TEST(Distrib, InversesRoundTrip) {
    for (double p : {1e-12, 1e-6, 0.01, 0.2, 0.5, 0.8, 0.99, 1 - 1e-9}) {
        EXPECT_NEAR(stnormal(inormal(p)) / p, 1, 1e-13) << p;
        for (double df : {1.0, 4.0, 17.5, 300.0}) {
            EXPECT_NEAR(chi2cumm(df, invchi2cumm(df, p)) / p, 1, 1e-11) << df << " " << p;
            EXPECT_NEAR(chi2tail(df, invchi2tail(df, p)) / p, 1, 1e-11) << df << " " << p;
            EXPECT_NEAR(ttail(df, invttail(df, p)) / p, 1, 1e-11) << df << " " << p;
            EXPECT_NEAR(ftail(3, df, invftail(3, df, p)) / p, 1, 1e-11) << df << " " << p;
            EXPECT_NEAR(fcumm(df, 6, invfcumm(df, 6, p)) / p, 1, 1e-11) << df << " " << p;
            EXPECT_NEAR(ibeta(df, 2.5, invibeta(df, 2.5, p)) / p, 1, 1e-11) << df << " " << p;
        }
    }
    for (double x : {1e-5, 0.3, 1.0, 7.0, 60.0})
        for (double a : {0.5, 2.0, 40.0}) {
            double p = gammap(a, x);
            if (p > 1e-250 && p < 1 - 1e-9) {
                EXPECT_NEAR(invgammap(a, p) / x, 1, 1e-12) << a << " " << x;
            }
        }
    for (double p : {0.05, 0.5, 0.93})
        EXPECT_NEAR(biprob(12, 5, invbiprob(12, 5, p)) / p, 1, 1e-11) << p;
}

// The edges named for these functions.
TEST(Distrib, Edges) {
    EXPECT_EQ(chi2tail(2, -1), 1);
    EXPECT_EQ(chi2cumm(2, -1), 0);
    EXPECT_EQ(chi2cumm(0, 1), misval);
    EXPECT_EQ(ttail(5, 0), 0.5);
    EXPECT_NEAR(ttail(5, -1), 1 - ttail(5, 1), 1e-16);
    EXPECT_EQ(ftail(2, 3, 0), 1);
    EXPECT_EQ(fcumm(2, 3, 0), 0);
    // the cores at 2000 and the normal approximation at 1e14: P(a, a) near 1/2
    // from below (mpmath: 0.502973548444202534...)
    EXPECT_NEAR(gammap(2000, 2000), 0.50297354844420253, 1e-13);
    // P(a, a) = 1/2 + 1/(3 sqrt(2 pi a)) + O(a^-2), the expansion checked at
    // a = 1e6 against mpmath to 7e-13: 0.50000001329807601338 at 1e14. The
    // Wilson-Hilferty form, with 1 - 1/(9a) rounded to a double, is within
    // 1.1e-11 of it
    EXPECT_NEAR(gammap(1e14, 1e14), 0.50000001329807601, 2e-11);
    EXPECT_EQ(invgammap(3, 0), 0);
    EXPECT_EQ(invgammap(3, 1), misval);
    EXPECT_EQ(invttail(10, 0.5), 0);
    EXPECT_EQ(stlgma(1), 0);
    EXPECT_EQ(stlgma(2), 0);
    EXPECT_EQ(stnormal(0), 0.5);
}

// Missing and out-of-domain arguments give the missing value, never a number.
TEST(Distrib, MissingAndDomain) {
    const double m = misval, ma = misval * 1.0000001; // `.` and an extended missing
    EXPECT_EQ(stnormal(m), misval);
    EXPECT_EQ(stnormal(ma), misval);
    EXPECT_EQ(inormal(0), misval);
    EXPECT_EQ(inormal(1), misval);
    EXPECT_EQ(inormal(m), misval);
    EXPECT_EQ(ibeta(0, 1, 0.5), misval);
    EXPECT_EQ(ibeta(1, 1, 1.5), misval);
    EXPECT_EQ(ibeta(1, 1, INFINITY), misval);
    EXPECT_EQ(ibeta(2, 3, 0), 0);
    EXPECT_EQ(ibeta(2, 3, 1), 1);
    EXPECT_EQ(gammap(-1, 2), misval);
    EXPECT_EQ(gammap(1, -2), misval);
    EXPECT_EQ(gammap(1, 0), 0);
    EXPECT_EQ(ttail(0, 1), misval);
    EXPECT_EQ(ttail(3, m), misval);
    EXPECT_EQ(ftail(-1, 3, 2), misval);
    EXPECT_EQ(invftail(2, 3, 1.5), misval);
    EXPECT_EQ(invttail(4, -0.1), misval);
    EXPECT_EQ(invibeta(2, 3, 1.1), misval);
    EXPECT_EQ(stlgma(0), misval);
    EXPECT_EQ(stlgma(-3), misval);
    EXPECT_EQ(stlgma(-3e9), misval);
    EXPECT_EQ(stlgma(3e305), misval);
    EXPECT_EQ(digamma(-2), misval);
    EXPECT_EQ(trigamma(0), misval);
    EXPECT_EQ(biprob(10, 2.5, 0.3), misval);
    EXPECT_EQ(biprob(10, 0, 0.3), 1);
    EXPECT_EQ(biprob(10, 11, 0.3), 0);
    EXPECT_EQ(stlnnormal(m), misval);
    // the sign of gamma left by the log
    stlgma(-0.5);
    EXPECT_EQ(sgngam, -1);
    stlgma(-1.5);
    EXPECT_EQ(sgngam, 1);
    stlgma(-40.5);
    EXPECT_EQ(sgngam, -1);
    stlgma(-41.5);
    EXPECT_EQ(sgngam, 1);
    stlgma(3.5);
    EXPECT_EQ(sgngam, 1);
}

// With no non-centrality each is its central distribution.
TEST(Distrib, NoncentralZeroIsCentral) {
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

TEST(Distrib, NoncentralEdgesAndMissing) {
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
