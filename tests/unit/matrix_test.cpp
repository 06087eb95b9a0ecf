// The matrix store and the inverter: Hilbert inverses against exact values,
// the sweep on singular and near-singular matrices, storage kinds, the
// symmetry test, and the uniform generators against an independent model.
//
// The exact inverses of the Hilbert matrices of order 4 to 8 below were
// computed with mpmath at 60 significant digits (H ** -1, rounded to the
// nearest integer; every entry lay within 1e-40 of an integer). The generator
// values come from tests/reference/urnmodel.py, a separate model of the
// recurrence in Python integers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "data/area/dataarea.h"
#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/parse/cmdparse.h"
#include "results/matrix/matrix.h"
#include "results/rng/rng.h"
#include "results/settings.h"

using namespace korvu;

namespace {

const std::vector<std::vector<double>> hilbert_inverse = {
    {16, -120, 240, -140, -120, 1200, -2700, 1680, 240, -2700, 6480, -4200, -140, 1680, -4200,
     2800},
    {25,     -300,   1050,   -1400,  630,     -300,   4800,  -18900, 26880,
     -12600, 1050,   -18900, 79380,  -117600, 56700,  -1400, 26880,  -117600,
     179200, -88200, 630,    -12600, 56700,   -88200, 44100},
    {36,       -630,    3360,     -7560,   7560,     -2772,   -630,     14700,    -88200,
     211680,   -220500, 83160,    3360,    -88200,   564480,  -1411200, 1512000,  -582120,
     -7560,    211680,  -1411200, 3628800, -3969000, 1552320, 7560,     -220500,  1512000,
     -3969000, 4410000, -1746360, -2772,   83160,    -582120, 1552320,  -1746360, 698544},
    {49,     -1176,    8820,      -29400,    48510,      -38808,     12012,
     -1176,  37632,    -317520,   1128960,   -1940400,   1596672,    -504504,
     8820,   -317520,  2857680,   -10584000, 18711000,   -15717240,  5045040,
     -29400, 1128960,  -10584000, 40320000,  -72765000,  62092800,   -20180160,
     48510,  -1940400, 18711000,  -72765000, 133402500,  -115259760, 37837800,
     -38808, 1596672,  -15717240, 62092800,  -115259760, 100590336,  -33297264,
     12012,  -504504,  5045040,   -20180160, 37837800,   -33297264,  11099088},
    {64,      -2016,     20160,      -92400,     221760,      -288288,     192192,      -51480,
     -2016,   84672,     -952560,    4656960,    -11642400,   15567552,    -10594584,   2882880,
     20160,   -952560,   11430720,   -58212000,  149688000,   -204324120,  141261120,   -38918880,
     -92400,  4656960,   -58212000,  304920000,  -800415000,  1109908800,  -776936160,  216216000,
     221760,  -11642400, 149688000,  -800415000, 2134440000,  -2996753760, 2118916800,  -594594000,
     -288288, 15567552,  -204324120, 1109908800, -2996753760, 4249941696,  -3030051024, 856215360,
     192192,  -10594584, 141261120,  -776936160, 2118916800,  -3030051024, 2175421248,  -618377760,
     -51480,  2882880,   -38918880,  216216000,  -594594000,  856215360,   -618377760,  176679360},
};

std::vector<double> hilbert(int n) {
    std::vector<double> h(static_cast<size_t>(n) * n);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) h[static_cast<size_t>(i) * n + j] = 1.0 / (i + j + 1);
    return h;
}

// Largest error relative to the largest exact entry.
double relerr(const std::vector<double>& got, const std::vector<double>& want) {
    double e = 0, m = 0;
    for (size_t k = 0; k < want.size(); k++) {
        e = std::max(e, std::fabs(got[k] - want[k]));
        m = std::max(m, std::fabs(want[k]));
    }
    return e / m;
}

struct Store : ::testing::Test {
    MatTolerances saved;
    void SetUp() override {
        dminit();
        matsize = 400;
        dynmattype = DM_MATRIX;
        saved = matrind;
    }
    void TearDown() override {
        matrind = saved;
        dmshutdown();
    }
};

} // namespace

// The bounds grow with the condition number (about 1.5e4 at order 4 to
// 1.5e10 at order 8), so each order gets the error that precision allows.
TEST(Inverse, HilbertBySweepAndByLuMatchExactValues) {
    const double bound[] = {1e-11, 1e-10, 1e-8, 1e-7, 1e-5};
    for (int n = 4; n <= 8; n++) {
        const auto& exact = hilbert_inverse[n - 4];
        auto a = hilbert(n);
        ASSERT_EQ(matrinfs(a.data(), n, 0, n - 1, nullptr, -1), 0);
        EXPECT_EQ(diag0cnt, 0) << "order " << n;
        EXPECT_LT(relerr(a, exact), bound[n - 4]) << "sweep, order " << n;
        for (int i = 0; i < n; i++)
            for (int j = 0; j < n; j++)
                EXPECT_EQ(a[static_cast<size_t>(i) * n + j], a[static_cast<size_t>(j) * n + i]);
        auto b = hilbert(n);
        ASSERT_EQ(mfnsinv2(b.data(), n), 0);
        EXPECT_LT(relerr(b, exact), bound[n - 4]) << "LU, order " << n;
    }
}

TEST(Inverse, DeterminantAndSingularLu) {
    // det of Hilbert 4 is 1/6048000 exactly
    auto h = hilbert(4);
    EXPECT_NEAR(matdet(h.data(), 4) * 6048000.0, 1.0, 1e-9);
    std::vector<double> s = {1, 2, 2, 4};
    EXPECT_EQ(mfnsinv2(s.data(), 2), 1);
}

// Column 3 is column 1 plus column 2; worked by hand:
//   largest diagonal first: sweep 3 (5), then 1 (2 - 9/5 = 0.2, tied with 2
//   and taken first), then 2 has 0 left and is dropped: the inverse of the
//   {1,3} block, [[2,3],[3,5]]^-1 = [[5,-3],[-3,2]];
//   natural order: 1, 2, then 3 dropped: [[2,1],[1,1]]^-1 = [[1,-1],[-1,2]].
TEST(Inverse, SweepDropsTheDependentColumnByTheOrderRule) {
    const std::vector<double> x = {2, 1, 3, 1, 1, 2, 3, 2, 5};
    auto a = x;
    ASSERT_EQ(matrinfs(a.data(), 3, 0, 2, nullptr, -1), 0);
    EXPECT_EQ(diag0cnt, 1);
    const double big[] = {5, 0, -3, 0, 0, 0, -3, 0, 2};
    for (int k = 0; k < 9; k++) EXPECT_NEAR(a[k], big[k], 1e-12) << k;

    int32_t saved = matrind.tol_r;
    matrind.tol_r = 0;
    a = x;
    ASSERT_EQ(matrinfs(a.data(), 3, 0, 2, nullptr, -1), 0);
    matrind.tol_r = saved;
    EXPECT_EQ(diag0cnt, 1);
    const double natural[] = {1, -1, 0, -1, 2, 0, 0, 0, 0};
    for (int k = 0; k < 9; k++) EXPECT_NEAR(a[k], natural[k], 1e-12) << k;

    // forced first pivot 2 (0-based 1): then 1 and 3 tie at 1, 1 first
    int order[] = {1, -1};
    a = x;
    ASSERT_EQ(matrinfs(a.data(), 3, 0, 2, order, -1), 0);
    EXPECT_EQ(diag0cnt, 1);
    for (int k = 0; k < 9; k++) EXPECT_NEAR(a[k], natural[k], 1e-12) << k;

    // position 3 held to the last pass: 1 (2), then 2 (0.5), then 3 dropped
    a = x;
    ASSERT_EQ(matrinfs(a.data(), 3, 0, 2, nullptr, 2), 0);
    EXPECT_EQ(diag0cnt, 1);
    for (int k = 0; k < 9; k++) EXPECT_NEAR(a[k], natural[k], 1e-12) << k;
}

TEST(Inverse, NegativeDiagonalCountsAsZeroAndIsDropped) {
    std::vector<double> a = {-1, 0, 0, 4};
    ASSERT_EQ(matrinfs(a.data(), 2, 0, 1, nullptr, -1), 0);
    EXPECT_EQ(diag0cnt, 1);
    EXPECT_EQ(a[0], 0);
    EXPECT_EQ(a[1], 0);
    EXPECT_EQ(a[2], 0);
    EXPECT_DOUBLE_EQ(a[3], 0.25);
}

TEST(Inverse, NearSingularPivotAgainstTheRelativeTolerance) {
    // [[1, 1], [1, 1 + d]]: after the first sweep d is left against a
    // tolerance of tol_1 * (1 + d). Kept when d = 1e-6, dropped when d = 1e-12.
    std::vector<double> a = {1, 1, 1, 1 + 1e-6};
    ASSERT_EQ(matrinfs(a.data(), 2, 0, 1, nullptr, -1), 0);
    EXPECT_EQ(diag0cnt, 0);
    // exact inverse: 1/d * [[1 + d, -1], [-1, 1]]
    EXPECT_NEAR(a[3], 1e6, 1e-3);
    EXPECT_NEAR(a[1], -1e6, 1e-3);
    a = {1, 1, 1, 1 + 1e-12};
    ASSERT_EQ(matrinfs(a.data(), 2, 0, 1, nullptr, -1), 0);
    EXPECT_EQ(diag0cnt, 1);
}

TEST(Inverse, SubBlockOfASharedBuffer) {
    // a 2x2 block at rows and columns 1..2 of a stride-4 buffer; the rest untouched
    std::vector<double> buf(16, 7.0);
    buf[5] = 4, buf[6] = 2, buf[9] = 2, buf[10] = 2;
    ASSERT_EQ(matrinfs(buf.data(), 4, 1, 2, nullptr, -1), 0);
    // [[4,2],[2,2]]^-1 = [[0.5,-0.5],[-0.5,1]]
    EXPECT_DOUBLE_EQ(buf[5], 0.5);
    EXPECT_DOUBLE_EQ(buf[6], -0.5);
    EXPECT_DOUBLE_EQ(buf[9], -0.5);
    EXPECT_DOUBLE_EQ(buf[10], 1.0);
    EXPECT_EQ(buf[0], 7.0);
    EXPECT_EQ(buf[15], 7.0);
}

TEST(Decompose, CholeskyAndSymmetricEigen) {
    // [[4,2],[2,3]] = L L' with L = [[2,0],[1,sqrt(2)]]
    std::vector<double> a = {4, 2, 2, 3};
    ASSERT_EQ(stsqrt(a.data(), 2), 0);
    EXPECT_DOUBLE_EQ(a[0], 2);
    EXPECT_DOUBLE_EQ(a[1], 0);
    EXPECT_DOUBLE_EQ(a[2], 1);
    EXPECT_NEAR(a[3], std::sqrt(2.0), 1e-15);
    std::vector<double> b = {1, 2, 2, 1};
    EXPECT_EQ(stsqrt(b.data(), 2), 506);
    // eigenvalues of [[2,1],[1,2]] are 3 and 1, vectors (1,1)/sqrt2 and (1,-1)/sqrt2
    std::vector<double> s = {2, 1, 1, 2}, val(2), vec(4);
    ASSERT_EQ(symeigen(s.data(), 2, val.data(), vec.data()), 0);
    EXPECT_NEAR(val[0], 3, 1e-14);
    EXPECT_NEAR(val[1], 1, 1e-14);
    EXPECT_NEAR(std::fabs(vec[0]), std::sqrt(0.5), 1e-14);
    EXPECT_NEAR(vec[0] * vec[2], 0.5, 1e-14); // same sign in the first vector
}

TEST_F(Store, SymmetricKindRoundTrip) {
    double buf[400 * 3];
    const double full[3][3] = {{1, 2, 4}, {2, 3, 5}, {4, 5, 6}};
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) buf[i * 400 + j] = full[i][j];
    ASSERT_NE(symatstor("S", buf, 0, 2), nullptr);
    MatDesc d;
    matset("S", &d);
    ASSERT_NE(d.item, nullptr);
    EXPECT_EQ(d.kind, 2);
    EXPECT_EQ(dmsize(d.item), 8u + 6 * 8);
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++) EXPECT_EQ(matel(&d, i, j), full[i][j]);
    matstel(&d, 0, 2, 9);
    EXPECT_EQ(matel(&d, 2, 0), 9);
    std::vector<double> back(400 * 3);
    ASSERT_EQ(matload("S", back.data()), 0);
    EXPECT_EQ(back[2 * 400 + 1], 5);
    EXPECT_EQ(issymmatrix("S", DM_MATRIX), 1);
}

TEST_F(Store, SparseKindOnlyWhileItSavesSpace) {
    std::vector<double> buf(400 * 4, 0.0);
    buf[0 * 400 + 1] = 3;
    buf[2 * 400 + 3] = -1;
    ASSERT_NE(matstor("P", 3, buf.data(), 0, 3, 0, 3), nullptr);
    MatDesc d;
    matset("P", &d);
    EXPECT_EQ(d.kind, 3);
    EXPECT_EQ(d.nnz, 2u);
    EXPECT_EQ(dmsize(d.item), 8u + 2 * 12);
    EXPECT_EQ(matel(&d, 0, 1), 3);
    EXPECT_EQ(matel(&d, 2, 3), -1);
    EXPECT_EQ(matel(&d, 1, 1), 0);
    EXPECT_EQ(matel(&d, 3, 3), 0);
    matstel(&d, 1, 1, 5); // read-only: nothing happens
    EXPECT_EQ(matel(&d, 1, 1), 0);
    // 3x3 with 7 of 9 non-zero: 84 bytes sparse against 72 full
    std::vector<double> dense(400 * 3, 1.0);
    dense[1] = 0, dense[400 + 2] = 0;
    ASSERT_NE(matstor("Q", 3, dense.data(), 0, 2, 0, 2), nullptr);
    matset("Q", &d);
    EXPECT_EQ(d.kind, 1);
    EXPECT_EQ(matel(&d, 0, 1), 0);
    EXPECT_EQ(matel(&d, 2, 2), 1);
}

TEST_F(Store, DeclareReusesOnlyTheSameShape) {
    MatDesc d;
    ASSERT_EQ(matdcl(&d, "A", 1, 2, 3), 0);
    matstel(&d, 1, 2, 42);
    void* first = d.item;
    ASSERT_EQ(matdcl(&d, "A", 1, 2, 3), 0);
    EXPECT_EQ(d.item, first);
    EXPECT_EQ(matel(&d, 1, 2), 42); // contents not cleared
    ASSERT_EQ(matdcl(&d, "A", 3, 3, 2), 0);
    EXPECT_EQ(d.kind, 1); // kind 3 is declared as kind 1
    EXPECT_EQ(d.rows, 3);
    matset("none", &d);
    EXPECT_EQ(d.item, nullptr);
    EXPECT_EQ(d.rows, 0);
}

TEST_F(Store, UserMatrixStripesAndNameSharing) {
    MatDesc d;
    ASSERT_EQ(scalarset("x", 1.5), 0);
    ASSERT_EQ(makeusermat(&d, "x", 1, 2, 3), 0);
    double v;
    EXPECT_EQ(scalarfind("x", &v), 0); // a name is one thing at a time
    const char* rs = static_cast<const char*>(dmfind0("x", DM_MATROW));
    const char* cs = static_cast<const char*>(dmfind0("x", DM_MATCOL));
    ASSERT_NE(rs, nullptr);
    ASSERT_NE(cs, nullptr);
    EXPECT_EQ(dmsize(cs), 3u * 83);
    EXPECT_EQ(matgetfullname(rs, 1, 1), "r2");
    EXPECT_EQ(matgetfullname(cs, 2, 1), "c3");
    char buf[83 * 2];
    matputfullname(buf, 0, "_", "price", "L");
    matputfullname(buf, 1, "eq1", "_cons", "");
    EXPECT_EQ(matgetfullname(buf, 0, 1), "L.price");
    EXPECT_EQ(matgetfullname(buf, 1, 1), "eq1:_cons");
    char eq[40], nm[40], op[40];
    EXPECT_EQ(matfullnameparse("eq2:L2.x", eq, nm, op), 0);
    EXPECT_STREQ(eq, "eq2");
    EXPECT_STREQ(op, "L2");
    EXPECT_STREQ(nm, "x");
    EXPECT_EQ(matfullnameparse("eq3:", eq, nm, op), 1);
    EXPECT_EQ(matfullnameparse("abcdefghijklmnopqrstuvwxyzabcdefg", eq, nm, op), 198);
    ASSERT_EQ(scalarset("x", 2.5), 0);
    EXPECT_EQ(dmfind0("x", DM_MATRIX), nullptr);
}

TEST_F(Store, SymmetryTestRules) {
    MatDesc d;
    auto make = [&](double a01, double a10, double d0, double d1) {
        ASSERT_EQ(makeusermat(&d, "T", 1, 2, 2), 0);
        matstel(&d, 0, 0, d0);
        matstel(&d, 1, 1, d1);
        matstel(&d, 0, 1, a01);
        matstel(&d, 1, 0, a10);
    };
    make(1, 1, 1, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 1);
    // (a - b)^2 = 1e-18 <= 1e-16 * 1 * 1
    make(1, 1 + 1e-9, 1, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 1);
    make(1, 1 + 1e-7, 1, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 0);
    // a zero diagonal: |a - b| <= 1e-8 |a| + 1e-8
    make(1, 1 + 1.5e-8, 0, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 1);
    make(1, 1 + 3e-8, 0, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 0);
    // a missing element is never symmetric to a number
    make(1, misval, 1, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 0);
    make(misval, misval, 1, 1);
    EXPECT_EQ(issymmatrix("T", DM_MATRIX), 1);
    // a 1x1 full matrix becomes symmetric
    ASSERT_EQ(makeusermat(&d, "O", 1, 1, 1), 0);
    fix1x1sym("O", DM_MATRIX);
    matset("O", &d);
    EXPECT_EQ(d.kind, 2);
}

TEST_F(Store, NotMissingScansTheLowerTriangleOfSymmetricMatrices) {
    MatDesc d;
    ASSERT_EQ(makeusermat(&d, "M", 1, 2, 2), 0);
    for (int i = 0; i < 2; i++)
        for (int j = 0; j < 2; j++) matstel(&d, i, j, 1);
    matstel(&d, 0, 1, misval); // above the diagonal
    EXPECT_EQ(umatnotmiss(&d, 1, "test"), 0);
    EXPECT_EQ(umatnotmiss(&d, 0, "test"), 504);
}

// ---- the generators -----------------------------------------------------------------

namespace {
struct Rng : ::testing::Test {
    UrnState saved;
    void SetUp() override { saved = urnstate; }
    void TearDown() override { urnstate = saved; }
};
} // namespace

TEST_F(Rng, FreshStreamAndSeededStreamsMatchTheModel) {
    urnstate = {URN_X0, URN_Y0, URN_Z0, URN_W0};
    char text[40];
    geturnseed(text, sizeof text);
    EXPECT_STREQ(text, "X075bcd151f123bb5159a55e50022865746ad");
    EXPECT_EQ(urnuni(), 0x1.188b1bc8p-3);
    EXPECT_EQ(urnuni(), 0x1.4954382ap-1);
    EXPECT_EQ(urnuni(), 0x1.1d982f0cp-1);
    geturnseed(text, sizeof text);
    EXPECT_STREQ(text, "X449562ba07988aab94e12a21e0d7adbd421b");
    // the default seed gives the start-up stream; any other drops 100 draws
    seturnseed_i4(123456789);
    EXPECT_EQ(urnuni(), 0x1.188b1bc8p-3);
    seturnseed_i4(1);
    geturnseed(text, sizeof text);
    EXPECT_STREQ(text, "Xc136bd85c43f462544a474abacbdd93d391e");
    EXPECT_EQ(urnuni(), 0x1.561c5fc8p-1);
    EXPECT_EQ(urnuni(), 0x1.db1db69p-1);
    EXPECT_EQ(urnuni(), 0x1.f01be4f8p-2);
    geturnseed(text, sizeof text);
    EXPECT_STREQ(text, "X1d6dbfeaff345ebb5e08da99c4ce015c0ea7");
    seturnseed_i4(42);
    EXPECT_EQ(urnuni(), 0x1.260d7848p-3);
    seturnseed_i4(-42);
    EXPECT_EQ(urnuni(), 0x1.260d7848p-3);
}

TEST_F(Rng, StateTextRoundTripsAndBadTextsLeaveTheState) {
    seturnseed_i4(1);
    (void)urnuni();
    char text[40];
    geturnseed(text, sizeof text);
    double next[5];
    urnfill(next, 5);
    ASSERT_EQ(seturnseed(text), 0);
    for (double x : next) EXPECT_EQ(urnuni(), x);
    seturnseed_i4(1);
    UrnState before = urnstate;
    const char* bad[] = {
        "X449562ba07988aab94e12a21e0d7adbd421c", // wrong check
        "X449562BA07988aab94e12a21e0d7adbd421b", // upper case
        "X449562ba07988aab94e12a21e0d7adbd421",  // short
        "Y449562ba07988aab94e12a21e0d7adbd421b", // no X
        "X449562ba07988aab94e12a21e0d7adbd421bb",
    };
    for (const char* t : bad) {
        EXPECT_EQ(seturnseed(t), 1) << t;
        EXPECT_EQ(std::memcmp(&urnstate, &before, sizeof before), 0);
    }
    EXPECT_EQ(urnseedcheck("X449562ba07988aab94e12a21e0d7adbd"), 0x421bu);
}

TEST_F(Rng, OldGeneratorAndItsSeed) {
    int32_t saved0 = rndseed;
    setrndseed0(0);
    EXPECT_EQ(rndseed, 1001);
    // worked from the recurrence: 1001 -> 69138069 -> 1441138257 -> 2111187933
    EXPECT_EQ(strandom(), 69138069 / 2147483648.0);
    EXPECT_EQ(strandom(), 1441138257 / 2147483648.0);
    EXPECT_EQ(strandom(), 2111187933 / 2147483648.0);
    setrndseed0(-10);
    EXPECT_EQ(rndseed, 11);
    setrndseed0(7);
    EXPECT_EQ(rndseed, 7);
    rndseed = saved0;
}
