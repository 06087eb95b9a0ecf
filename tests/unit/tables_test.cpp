// The statistics of two-way tables against R: chisq.test (correct = FALSE)
// for Pearson's chi-squared and its p-value, fisher.test for the exact
// probabilities, cor(method = "kendall") for tau-b on the expanded data.
// The R session that made the numbers:
//   T1 <- matrix(c(3,1,0, 2,5,1, 0,2,6), 3, byrow=TRUE)
//   fisher.test(T1)$p.value; chisq.test(T1, correct=FALSE)
//   cor(rep(row(T1), T1), rep(col(T1), T1), method = "kendall")
//   T2 <- matrix(c(1,9,11,3), 2, byrow=TRUE); fisher.test(T2, alternative = "less")
//   T3 <- matrix(c(5,3,8,2,6, 1,7,2,9,4), 2, byrow=TRUE)
//   T4 <- matrix(c(4,0,2, 0,3,1, 1,1,5, 2,0,0), 4, byrow=TRUE)
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "data/area/missing.h"
#include "results/tables/tables.h"

namespace {

using namespace korvu;

double rel(double a, double b) {
    return std::fabs(a - b) / std::fabs(b);
}

TEST(Tables, ChiSquaredAndExactAgainstR) {
    struct Case {
        std::vector<double> n;
        int r, c;
        double fisher, chi2, p;
    } cases[] = {
        {{3, 1, 0, 2, 5, 1, 0, 2, 6},
         3,
         3,
         0.009393771003678008,
         13.901785714285715,
         0.0076152030713550331},
        {{1, 9, 11, 3}, 2, 2, 0.0027594561852200836, 10.971428571428572, 0.00092527403711976084},
        {{5, 3, 8, 2, 6, 1, 7, 2, 9, 4},
         2,
         5,
         0.012244193187195745,
         12.705687307861222,
         0.012807087839675775},
        {{4, 0, 2, 0, 3, 1, 1, 1, 5, 2, 0, 0},
         4,
         3,
         0.018649622364792569,
         16.079719387755102,
         0.013332417709715366},
    };
    for (const Case& k : cases) {
        TwoWay st;
        twoway_stats(k.n, k.r, k.c, &st);
        EXPECT_EQ(st.df, (k.r - 1) * (k.c - 1));
        EXPECT_LT(rel(st.chi2, k.chi2), 1e-13) << k.r << "x" << k.c;
        EXPECT_LT(rel(st.p, k.p), 1e-12) << k.r << "x" << k.c;
        double p, p1;
        ASSERT_EQ(fisher_exact(k.n, k.r, k.c, &p, &p1), 0);
        EXPECT_LT(rel(p, k.fisher), 1e-10) << k.r << "x" << k.c;
        if (k.r == 2 && k.c == 2) {
            // n11 = 1 lies below its expectation: the one-sided test is "less"
            EXPECT_LT(rel(p1, 0.0013797280926100422), 1e-10);
        } else {
            EXPECT_EQ(p1, misval);
        }
    }
}

TEST(Tables, TauBAndDegenerateTables) {
    TwoWay st;
    twoway_stats({3, 1, 0, 2, 5, 1, 0, 2, 6}, 3, 3, &st);
    EXPECT_LT(rel(st.taub, 0.70274984690730757), 1e-13);
    // gamma by hand: concordant pairs 3*(5+1+2+6) + 1*(1+6) + 2*(2+6) + 5*6 = 95,
    // discordant 1*(2+0) + 0 + 5*0 + 1*(0+2) + 2*0 = 4 (cells below and left)
    EXPECT_LT(rel(st.gamma, (95.0 - 4) / (95 + 4)), 1e-14);
    // one row: no test can be formed
    twoway_stats({2, 3, 4}, 1, 3, &st);
    EXPECT_EQ(st.chi2, misval);
    EXPECT_EQ(st.p, misval);
    EXPECT_EQ(st.gamma, misval);
    // a perfectly ordered table: gamma and tau-b are 1
    twoway_stats({4, 0, 0, 5}, 2, 2, &st);
    EXPECT_DOUBLE_EQ(st.gamma, 1);
    EXPECT_DOUBLE_EQ(st.taub, 1);
    EXPECT_DOUBLE_EQ(st.cramersv, 1);
}

} // namespace
