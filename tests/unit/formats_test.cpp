// Display formats. Every expected text here is worked out by hand from the
// rules written in data/formats.h, not taken from the code's output; the reasoning is in the
// comments where it is not obvious.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "data/area/hexfloat.h"
#include "data/area/missing.h"
#include "data/formats/dates.h"
#include "data/formats/formats.h"
#include "kernel/parse/options.h"
#include "output/spout.h"

using namespace korvu;

namespace {

std::string F(const char* fmt, double x) {
    char b[kFmtBufSize];
    int n = fmtnum(b, fmt, x);
    EXPECT_EQ(n, static_cast<int>(std::strlen(b))) << fmt;
    return b;
}

std::string S(const char* fmt, const char* s) {
    FmtDesc d;
    EXPECT_EQ(chkfmt(fmt, 12, &d), 0) << fmt;
    char b[kFmtBufSize];
    fmtrenderstr(b, d, s);
    return b;
}

bool ok(const char* fmt, int kind) {
    FmtDesc d;
    return chkfmt(fmt, kind, &d) == 0;
}

struct DpReset {
    ~DpReset() { dpcomma = 0; }
};

} // namespace

// ---- chkfmt -----------------------------------------------------------------

TEST(Chkfmt, AcceptsTheGrammar) {
    for (const char* f :
         {"%9.0g",  "%9.2f",     "%10.0e", "%10.3e",    "%9.0gc", "%9.2fc", "%9,2f", "%9,0gc",
          "%20s",   "%-20s",     "%~20s",  "%1s",       "%244s",  "%21x",   "%16H",  "%16L",
          "%8H",    "%8L",       "%d",     "%-d",       "%td",    "%-tm",   "%tmCY", "%tg",
          "%09.2f", "%244.243f", "%1.0g",  "%dM_d,_CY", "%d!t!D"})
        EXPECT_TRUE(ok(f, 0)) << f;
}

TEST(Chkfmt, RejectsMalformedText) {
    for (const char* f :
         {"",       "9.0g",    "%",       "%9",      "%9.",      "%9.0",         "%9.0h",
          "%9.0gx", "%9.0ec",  "%9.0gcc", "%0.0g",   "%245.0g",  "%245s",        "%0s",
          "%9.9g",  "%9.10f",  "%9.g",    "%.2f",    "%9.2f ",   " %9.2f",       "%20x",
          "%22x",   "%12H",    "%9L",     "%17H",    "%20sx",    "%~21x",        "%~16H",
          "%dZ",    "%dA",     "%d!",     "%tx",     "%t",       "%~d",          "%~td",
          "%09.2g", "%09.2fc", "%09s",    "%009.2f", "%1234.0g", "%12345678.0g", "%dDlCY_DlCYx"})
        EXPECT_FALSE(ok(f, 10)) << f;
}

TEST(Chkfmt, KindsAndMarks) {
    // kind 1: numeric only
    EXPECT_FALSE(ok("%12s", 1));
    EXPECT_TRUE(ok("%9.0g", 1));
    EXPECT_TRUE(ok("%td", 1));
    EXPECT_TRUE(ok("%-td", 1));
    // kind 2: string only; dates refused
    EXPECT_TRUE(ok("%20s", 2));
    EXPECT_TRUE(ok("%-20s", 2));
    EXPECT_TRUE(ok("%~20s", 2));
    EXPECT_FALSE(ok("%9.0g", 2));
    EXPECT_FALSE(ok("%td", 2));
    EXPECT_FALSE(ok("%d", 2));
    EXPECT_FALSE(ok("%21x", 2));
    // marks on numbers only with 10 added
    EXPECT_FALSE(ok("%-9.0g", 0));
    EXPECT_FALSE(ok("%~9.0g", 1));
    EXPECT_TRUE(ok("%-9.0g", 10));
    EXPECT_TRUE(ok("%~9.2f", 11));
    EXPECT_TRUE(ok("%-21x", 10));
    EXPECT_FALSE(ok("%-21x", 0));
    EXPECT_FALSE(ok("%~21x", 10));
    EXPECT_FALSE(ok("%-12s", 11));
    EXPECT_TRUE(ok("%~12s", 12));
    EXPECT_FALSE(ok("%-9.0g", 12));
}

TEST(Chkfmt, FillsTheDescriptor) {
    FmtDesc d;
    ASSERT_EQ(chkfmt("%-12.3fc", 10, &d), 0);
    EXPECT_EQ(d.justify, -1);
    EXPECT_EQ(d.width, 12);
    EXPECT_EQ(d.decimals, 3);
    EXPECT_EQ(d.cls, 'g');
    EXPECT_EQ(d.kind, 'f');
    EXPECT_EQ(d.mod, 'c');
    EXPECT_EQ(d.comma, 0);

    ASSERT_EQ(chkfmt("%~10,2g", 10, &d), 0);
    EXPECT_EQ(d.justify, 0);
    EXPECT_EQ(d.comma, 1);
    EXPECT_EQ(d.kind, 'g');
    EXPECT_EQ(d.mod, ' ');

    ASSERT_EQ(chkfmt("%20s", 0, &d), 0);
    EXPECT_EQ(d.cls, 's');
    EXPECT_EQ(d.kind, 's');
    EXPECT_EQ(d.width, 20);
    EXPECT_EQ(d.justify, 1);

    ASSERT_EQ(chkfmt("%8L", 0, &d), 0);
    EXPECT_EQ(d.kind, 'L');
    EXPECT_EQ(d.width, 8);

    ASSERT_EQ(chkfmt("%09.2f", 0, &d), 0);
    EXPECT_EQ(d.zero, 1);
    EXPECT_EQ(d.width, 9);
}

TEST(Chkfmt, DateWidths) {
    FmtDesc d;
    ASSERT_EQ(chkfmt("%d", 0, &d), 0); // no codes: the default pattern, width 9
    EXPECT_EQ(d.kind, 'd');
    EXPECT_EQ(d.width, 9);
    EXPECT_STREQ(d.pat, "DlCY");
    EXPECT_EQ(d.justify, 1);
    ASSERT_EQ(chkdfmt("%-d", &d), 0);
    EXPECT_EQ(d.justify, -1);
    EXPECT_STREQ(d.pat, "DlCY");
    ASSERT_EQ(chkdfmt("%dD", &d), 0); // 2, raised to the minimum 8
    EXPECT_EQ(d.width, 8);
    ASSERT_EQ(chkdfmt("%dDlCY", &d), 0); // 2+3+2+2
    EXPECT_EQ(d.width, 9);
    ASSERT_EQ(chkdfmt("%dM_d,_CY", &d), 0); // 9+1+2+1+1+2+2
    EXPECT_EQ(d.width, 18);
    ASSERT_EQ(chkdfmt("%dJjhq", &d), 0); // 3+3+1+1
    EXPECT_EQ(d.width, 8);
    ASSERT_EQ(chkdfmt("%dLM", &d), 0);
    EXPECT_EQ(d.width, 18);
    ASSERT_EQ(chktfmt("%td", &d), 0);
    EXPECT_EQ(d.width, 9);
    EXPECT_EQ(d.tsunit, 'd');
    ASSERT_EQ(chktfmt("%tm", &d), 0);
    EXPECT_EQ(d.width, 8);
    EXPECT_EQ(d.tsunit, 'm');
    ASSERT_EQ(chktfmt("%tg", &d), 0);
    EXPECT_EQ(d.width, 9);
    ASSERT_EQ(chktfmt("%tqCY_q", &d), 0); // 2+2+1+1 -> 8
    EXPECT_EQ(d.width, 8);
    EXPECT_NE(chkdfmt("%td", &d), 0);
    EXPECT_NE(chktfmt("%d", &d), 0);
}

// ---- numbers --------------------------------------------------------------------

namespace {
struct Case {
    const char* fmt;
    double x;
    const char* want;
};

void check(const Case* cases, size_t n) {
    for (size_t i = 0; i < n; ++i)
        EXPECT_EQ(F(cases[i].fmt, cases[i].x), cases[i].want)
            << cases[i].fmt << " of " << cases[i].x;
}
#define CHECK_ALL(cases) check(cases, sizeof cases / sizeof cases[0])
} // namespace

TEST(FormatG, DigitSearch) {
    // %w.0g keeps one column for the sign: at most w-1 characters, so %9.0g
    // tries 8 significant digits first, then 7, ...
    const Case cases[] = {
        // float 0.1 is 0.100000001490116...: to 8 digits 0.10000000, zeros cut
        {"%9.0g", static_cast<double>(0.1f), "       .1"},
        // %12.0g: 11 digits ".10000000149" are 12 long, 10 digits fit
        {"%12.0g", static_cast<double>(0.1f), " .1000000015"},
        {"%9.0g", 0.1, "       .1"},
        {"%9.0g", 1.0 / 3, " .3333333"},  // 8 digits would need 9 characters
        {"%9.0g", -1.0 / 3, "-.3333333"}, // the sign takes the spare column
        {"%10.0g", 1.0 / 3, " .33333333"},
        {"%9.0g", 12345678, " 12345678"},
        {"%9.0g", 123456789, " 1.23e+08"}, // 8 digits and fewer: e-forms, 3 fit
        {"%9.0g", 21.297297, "  21.2973"}, // 21.29730 to 7 digits, zero cut
        {"%9.0g", 1, "        1"},
        {"%9.0g", 100000, "   100000"},
        {"%9.0g", 0.0001, "    .0001"},
        {"%9.0g", 1e-5, "    1e-05"},
        {"%9.0g", 1e300, "   1e+300"},
        {"%9.0g", 0, "        0"},
        {"%9.0g", -2.5, "     -2.5"},
        {"%9.2g", 3.14159, "      3.1"}, // at most 2 digits
        {"%9.4g", 1234567, " 1.23e+06"}, // "1.235e+06" is 9: too wide
        {"%10.4g", 1234567, " 1.235e+06"},
        // commas: %10.0gc, room 9: "1234567.89" is 10; "1,234,567.9" is 11;
        // 7 digits "1,234,568" fit
        {"%10.0gc", 1234567.891, " 1,234,568"},
        // %9.0gc, room 8: no comma form fits; plain 7 digits do
        {"%9.0gc", 1234567.4, "  1234567"},
        {"%9.0gc", 1234.5, "  1,234.5"},
        {"%9.0gc", 123, "      123"},
        {"%12.0gc", -1234567, "  -1,234,567"},
    };
    CHECK_ALL(cases);
}

TEST(FormatF, FixedExponentialAndCommas) {
    const Case cases[] = {
        {"%9.2f", 3.14159, "     3.14"},
        {"%9.2f", 0.5, "     0.50"}, // f keeps the leading zero
        {"%9.0f", 2.75, "        3"},
        {"%10.0fc", 1234567, " 1,234,567"},
        {"%10.0fc", 1234567.4, " 1,234,567"},
        {"%10.0fc", 123, "       123"},
        {"%10.0fc", -1234567, "-1,234,567"},
        {"%10.0fc", 123456789, " 123456789"}, // "123,456,789" is 11: no commas
        {"%12.2fc", 1234.5, "    1,234.50"},
        {"%09.2f", -3.14159, "-00003.14"},
        {"%09.2f", 3.14159, "000003.14"},
        {"%10.0e", 12345, "     1e+04"},
        {"%9.2e", 12345, " 1.23e+04"},
        {"%10.3e", -1536, "-1.536e+03"},
        {"%10.2e", 1e300, " 1.00e+300"},
        {"%9.2e", 0, " 0.00e+00"},
        // European decimal mark
        {"%9,2f", 1234.5, "  1234,50"},
        {"%9,2fc", 1234.5, " 1.234,50"},
        {"%9,0g", 0.5, "       ,5"},
        {"%9,0gc", 1234.5, "  1.234,5"},
        {"%10,3e", 1536, " 1,536e+03"},
    };
    CHECK_ALL(cases);
}

TEST(FormatF, SetDpComma) {
    DpReset reset;
    EXPECT_STREQ(dpname(), "period");
    EXPECT_EQ(setdp("comma"), 0);
    EXPECT_STREQ(dpname(), "comma");
    const Case cases[] = {
        {"%9.2f", 1234.5, "  1234,50"},
        {"%10.2fc", 1234.5, "  1.234,50"},
        {"%9.0g", 0.25, "      ,25"},
        {"%9,2f", 1234.5, "  1234,50"},       // already European
        {"%9.0g", mkmissing(1), "       .a"}, // missing values keep their dot
        {"%td", 0, "01jan1960"},
    };
    CHECK_ALL(cases);
    EXPECT_EQ(setdp("Comma"), 198);
    EXPECT_EQ(setdp(""), 198);
    EXPECT_EQ(setdp("period"), 0);
    EXPECT_EQ(F("%9.2f", 1234.5), "  1234.50");
}

TEST(FormatNumbers, MinusZeroWidthsAndJustification) {
    const Case cases[] = {
        // minus zero is zero; a negative value that rounds to zero loses its sign
        {"%9.0g", -0.0, "        0"},
        {"%9.2f", -0.0, "     0.00"},
        {"%9.2e", -0.0, " 0.00e+00"},
        {"%21x", -0.0, "            +0.0X+000"},
        {"%16H", -0.0, "0000000000000000"},
        {"%9.2f", -0.001, "     0.00"},
        {"%9.0f", -0.4, "        0"},
        // too wide: f and e fall back to g in the same width (room w-1), then to
        // the shortest %.<p>g text, wider than the field
        {"%6.2f", 1234.56, "  1235"}, // "1234.56" is 7; g, 4 digits
        {"%5.2f", 123456, "1e+05"},   // g room 4 fails; shortest text
        {"%3.0g", 12345, "12345"},    // "12345" and "1e+04" tie: more digits
        {"%3.0g", 123456789, "1e+08"},
        {"%7.2e", 123456, " 123456"}, // "1.23e+05" is 8
        {"%1.0g", 5, "5"},
        {"%1.0g", -5, "-5"},
        {"%2.0g", 0.5, ".5"},     // room 1 fails; ".5" is shortest
        {"%3.1f", -12.25, "-12"}, // "-12.2" is 5; g room 2: "12"
        // justification
        {"%-9.0g", 5, "5        "},
        {"%~9.0g", 5, "    5    "},
        {"%~8.0g", 5, "   5    "}, // 7 spare: 3 before, 4 after
        {"%-9.2f", -1.5, "-1.50    "},
        {"%-21x", 1, "+1.0X+000            "},
    };
    CHECK_ALL(cases);
}

// Rounding that carries into a new digit, and ties. Decimal text is rounded
// from the exact binary value, as C's printf does: 0.995 is
// 0.99499999999999999555..., 2.675 is 2.67499999999999982236..., and an exact
// half goes to the even neighbour. Each step worked with python3's % operator,
// which rounds the same way.
TEST(FormatNumbers, RoundingCarriesAndTies) {
    const Case cases[] = {
        // %.8g of 99999999.6 is "1e+08": the carry makes the exponent reach p
        {"%9.0g", 99999999.6, "    1e+08"},
        {"%9.0g", -99999999.6, "   -1e+08"},
        {"%9.0g", 0.99999999999, "        1"},
        // %.8g gives "9.9999999e-05" (13 long); %.7g gives "0.0001"
        {"%9.0g", 0.000099999999, "    .0001"},
        {"%9.2g", 9.96, "       10"},
        {"%9.2f", 0.995, "     0.99"},
        {"%9.2f", 2.675, "     2.67"},
        {"%9.0f", 2.5, "        2"},
        {"%9.0f", 3.5, "        4"},
        {"%9.0f", -0.5, "        0"}, // "-0" shows no digit but 0: no sign
        // %.0f of 999999.5 is "1000000", with commas 9 long
        {"%10.0fc", 999999.5, " 1,000,000"},
        // comma forms: "999,999.99" and "1,000,000" exceed room 8 and the rest
        // have exponents; the plain search then takes %.7g, "1000000"
        {"%9.0gc", 999999.99, "  1000000"},
        // %.3e gives "1.000e+01", 9 long: written as %8.0g, room 7
        {"%8.3e", 9.9996, "  9.9996"},
    };
    CHECK_ALL(cases);
}

// ---- hexadecimal float and bytes ------------------------------------------------

TEST(FormatX, TextAndBytes) {
    const Case cases[] = {
        {"%21x", 1, "            +1.0X+000"},
        {"%21x", 0.1, "+1.999999999999aX-004"}, // bits 0x3FB999999999999A
        {"%21x", -2, "            -1.0X+001"},
        {"%21x", 1.5, "            +1.8X+000"},
        {"%21x", 0x1p-1074, "+0.0000000000001X-3fe"},
        {"%21x", 0x1p1022, "            +1.0X+3fe"},
        {"%21x", 0x1.fffffffffffffp1022, "+1.fffffffffffffX+3fe"},
        {"%21x", 0x1p-52, "            +1.0X-034"},
        {"%21x", 0x1.fffffep126, "       +1.fffffeX+07e"},
        {"%16H", 1, "3ff0000000000000"},
        {"%16L", 1, "000000000000f03f"},
        {"%16H", -2, "c000000000000000"},
        {"%16H", 0.1, "3fb999999999999a"},
        {"%16L", 0.1, "9a9999999999b93f"},
        // %8H and %8L show the float: 1.0f is 0x3F800000, 0.1f is 0x3DCCCCCD
        {"%8H", 1, "3f800000"},
        {"%8L", 1, "0000803f"},
        {"%8H", 0.1, "3dcccccd"},
        {"%8L", 0.1, "cdcccc3d"},
        {"%8H", 1e300, "7f800000"}, // no float that large
        {"%8H", -1e300, "ff800000"},
    };
    CHECK_ALL(cases);
}

TEST(FormatX, WrittenAndReadBackExactly) {
    std::mt19937_64 rng(12345);
    char b[kFmtBufSize];
    FmtDesc d;
    ASSERT_EQ(chkfmt("%21x", 0, &d), 0);
    int done = 0;
    for (int i = 0; i < 200000; ++i) {
        uint64_t u = rng();
        if (i % 4 == 1) u &= 0x800fffffffffffffULL;    // subnormals
        if (i % 4 == 2) u &= ~(uint64_t{0x7fe} << 52); // small exponents
        double x = bitsd(u);
        if (((u >> 52) & 0x7ff) == 0x7ff || ismissing(x) || x == 0) continue;
        ASSERT_EQ(fmtrender(b, d, x), 21);
        const char* t = b;
        while (*t == ' ') ++t;
        double y = 0;
        ASSERT_EQ(cnvstoz(t, &y), 0) << t;
        ASSERT_EQ(dbits(y), u) << t;
        ++done;
    }
    EXPECT_GT(done, 100000);
    for (double x : {1.0, -1.0, 0.1, 0x1p-1022, 0x1p-1074, -0x1.fffffffffffffp1023, 0x1.fffffp127,
                     0x1.fffffffffffffp1022, 123456789.125, 0.0}) {
        fmtrender(b, d, x);
        const char* t = b;
        while (*t == ' ') ++t;
        double y = 1;
        ASSERT_EQ(cnvstoz(t, &y), 0) << t;
        EXPECT_EQ(dbits(y), dbits(x)) << t;
    }
}

// ---- strings ---------------------------------------------------------------------

TEST(FormatS, Strings) {
    EXPECT_EQ(S("%10s", "abc"), "       abc");
    EXPECT_EQ(S("%-10s", "abc"), "abc       ");
    EXPECT_EQ(S("%~10s", "abc"), "   abc    "); // 7 spare: 3 before
    EXPECT_EQ(S("%2s", "abcdef"), "abcdef");    // never cut
    EXPECT_EQ(S("%3s", ""), "   ");
    EXPECT_STREQ(sreformstr("%-5s", "ab"), "ab   ");
    char b[kFmtBufSize];
    EXPECT_EQ(strfmt(b, "x", 4, 0), 4);
    EXPECT_STREQ(b, " x  ");
    // a string format given a number renders as %9.0g
    EXPECT_EQ(F("%20s", 1.5), "      1.5");
}

// ---- missing values in every format ---------------------------------------------

TEST(FormatMissing, EveryFormat) {
    const double dot = misval, a = mkmissing(1), b = mkmissing(2), z = mkmissing(26);
    const Case cases[] = {
        {"%9.0g", dot, "        ."},
        {"%9.0g", a, "       .a"},
        {"%9.0g", z, "       .z"},
        {"%9.2f", b, "       .b"},
        {"%10.0fc", dot, "         ."},
        {"%9.0gc", a, "       .a"},
        {"%10.3e", z, "        .z"},
        {"%9,2f", a, "       .a"},
        {"%09.2f", dot, "        ."}, // no zeros before a missing value
        {"%21x", dot, "                    ."},
        {"%21x", z, "                   .z"},
        {"%16H", a, "              .a"},
        {"%16L", dot, "               ."},
        {"%8H", z, "      .z"},
        {"%8L", a, "      .a"},
        {"%d", dot, "        ."},
        {"%td", a, "       .a"},
        {"%tm", b, "      .b"},
        {"%tq", z, "      .z"},
        {"%tw", dot, "       ."},
        {"%th", dot, "       ."},
        {"%ty", a, "      .a"},
        {"%tg", dot, "        ."},
        {"%dM_d,_CY", a, "                .a"},
        // left and centre formats move the result like any other
        {"%-9.0g", a, ".a       "},
        {"%~9.0g", dot, "    .    "},
        {"%-td", dot, ".        "},
        // codes beyond .z, infinities and not-a-number show as `.`
        {"%9.0g", bitsd(0x7FE01B0000000000ULL), "        ."},
        {"%9.0g", HUGE_VAL, "        ."},
        {"%9.0g", -HUGE_VAL, "        ."},
        {"%9.0g", std::nan(""), "        ."},
        {"%td", -HUGE_VAL, "        ."},
        {"%16H", -HUGE_VAL, "fff0000000000000"},
    };
    CHECK_ALL(cases);
}

// ---- dates -------------------------------------------------------------------------

TEST(FormatDate, DefaultPatternAndRange) {
    const Case cases[] = {
        {"%td", 0, "01jan1960"},
        {"%td", -1, "31dec1959"},
        {"%td", 17000, "18jul2006"}, // 1960-01-01 + 17000 days, by python3
        {"%d", 0, "01jan1960"},
        {"%d", 17000, "18jul2006"},
        {"%td", 0.75, "01jan1960"}, // floored
        {"%td", -0.25, "31dec1959"},
        {"%td", kDateMax, "31dec9999"},
        {"%td", kDateMin, "01jan0100"},
        {"%-td", 0, "01jan1960"},
        {"%tdDlCY", 14669, "29feb2000"},
        // out of range: the numeric path in the computed width
        {"%td", kDateMax + 1, "  2936550"},
        {"%td", kDateMin - 1, "  -679351"},
        {"%-td", kDateMax + 1, "2936550  "},
        {"%ty", 99, "      99"},
        {"%ty", 10000, "   10000"},
        {"%tm", 1e10, "   1e+10"},
        {"%dM_d,_CY", 1e7, "          10000000"},
    };
    CHECK_ALL(cases);
}

TEST(FormatDate, EveryCode) {
    // 17000 is Tuesday 18 July 2006; 16990 is 8 July 2006, day 189 of the year,
    // week (189-1)/7+1 = 27; 4 is 5 January 1960; -350997 is 1 January 999;
    // 365 is 31 December 1960, day 366, in week 52.
    const Case cases[] = {
        {"%dC", 17000, "      20"},
        {"%dc", 17000, "      20"},
        {"%dC", -350997, "      09"},
        {"%dc", -350997, "       9"},
        {"%dY", 16990, "      06"},
        {"%dy", 16990, "       6"},
        {"%dY", -350997, "      99"},
        {"%dCY", -350997, "    0999"},
        {"%dcy", -350997, "     999"},
        {"%dM", 16990, "     July"},
        {"%dL", 16990, "     july"},
        {"%dm", 16990, "     Jul"},
        {"%dl", 16990, "     jul"},
        {"%dN", 16990, "      07"},
        {"%dn", 16990, "       7"},
        {"%dD", 16990, "      08"},
        {"%dd", 16990, "       8"},
        {"%dJ", 4, "     005"},
        {"%dj", 4, "       5"},
        {"%dJ", 16990, "     189"},
        {"%dJ", 365, "     366"},
        {"%dW", 4, "      01"},
        {"%dw", 4, "       1"},
        {"%dW", 16990, "      27"},
        {"%dW", 365, "      52"},
        {"%dh", 16990, "       2"},
        {"%dh", 181, "       1"},
        {"%dq", 16990, "       3"},
        {"%dq", 91, "       2"},
        {"%dD_m", 16990, "  08 Jul"},
        {"%d.,:-/'", 0, "  .,:-/'"},
        {"%d!t!D!!", 0, "     tD!"},
        {"%dM_d,_CY", 17000, "     July 18, 2006"},
        {"%-dM_d,_CY", 17000, "July 18, 2006     "},
        {"%dN/D/CY", 17000, "07/18/2006"},
        {"%dCY-N-D", 16990, "2006-07-08"},
    };
    CHECK_ALL(cases);
    const char* months[12] = {"  January", " February", "    March", "    April",
                              "      May", "     June", "     July", "   August",
                              "September", "  October", " November", " December"};
    for (int m = 1; m <= 12; ++m) EXPECT_EQ(F("%dM", stedate(m, 1, 1999)), months[m - 1]);
}

TEST(FormatDate, TimeSeriesUnitBoundaries) {
    const Case cases[] = {
        {"%tm", 0, "  1960m1"},
        {"%tm", 11, " 1960m12"},
        {"%tm", 12, "  1961m1"},
        {"%tm", -1, " 1959m12"},
        {"%tm", 558, "  2006m7"},
        {"%tq", 0, "  1960q1"},
        {"%tq", 3, "  1960q4"},
        {"%tq", 4, "  1961q1"},
        {"%tq", -1, "  1959q4"},
        {"%tw", 0, "  1960w1"},
        {"%tw", 51, " 1960w52"},
        {"%tw", 52, "  1961w1"},
        {"%tw", -1, " 1959w52"},
        {"%th", 0, "  1960h1"},
        {"%th", 1, "  1960h2"},
        {"%th", 2, "  1961h1"},
        {"%th", -1, "  1959h2"},
        {"%ty", 1960, "    1960"},
        {"%ty", 1959, "    1959"},
        {"%ty", 100, "    0100"},
        {"%td", 0, "01jan1960"},
        {"%-tm", 0, "1960m1  "},
        // with codes, the unit is turned into its first day
        {"%tmlCY", 1, " feb1960"},
        {"%tqDlCY", 1, "01apr1960"},
        {"%twDlCY", 51, "23dec1960"},
        {"%thN/CY", 1, " 07/1960"},
        {"%tyDlCY", 1961, "01jan1961"},
        // %tg is a plain number
        {"%tg", 1.5, "      1.5"},
        {"%tg", 17000, "    17000"},
        {"%-tg", 2, "2        "},
    };
    CHECK_ALL(cases);
}

// ---- the outbuf entry points and helpers ---------------------------------------------

TEST(Reforms, OutbufEntryPoints) {
    EXPECT_STREQ(sreforms("%9.2f", 3.14159), "     3.14");
    EXPECT_EQ(sreforms("%9.2f", 1), outbuf);
    EXPECT_STREQ(sreforms("%9.0q", 3.14159), "  3.14159"); // invalid: %9.0g
    EXPECT_STREQ(srefdate("%d", 0), "01jan1960");
    EXPECT_STREQ(srefdate("%dD/N", 0), "   01/01");
    EXPECT_STREQ(sreftfmt("%tq", 1), "  1960q2");
    std::strcpy(outbuf, "kept");
    EXPECT_STREQ(safereforms("%9.0g", 2), "        2");
    EXPECT_STREQ(outbuf, "kept");
    EXPECT_STREQ(sreformint(-42), "-42");
    EXPECT_STREQ(sreformptr(reinterpret_cast<const void*>(0xbeef)), "beef");
}

namespace {
const char* lookup(const char* label, double x) {
    if (std::strcmp(label, "yn") != 0) return nullptr;
    if (x == 1) return "yes";
    if (x == 2) return "abcdefghijkl";
    return nullptr;
}
} // namespace

TEST(Reforms, ValueLabels) {
    VlLookupFn saved = reforml_lookup;
    reforml_lookup = lookup;
    EXPECT_STREQ(sreforml("%9.0g", "yn", 1), "      yes");
    EXPECT_STREQ(sreforml("%-9.0g", "yn", 1), "yes      ");
    EXPECT_STREQ(sreforml("%9.0g", "yn", 2), "abcdefghi"); // cut to the width
    EXPECT_STREQ(sreforml("%9.0g", "yn", 3), "        3"); // no text: the number
    EXPECT_STREQ(sreforml("%9.0g", "", 1), "        1");
    EXPECT_STREQ(sreforml("%9.0g", "other", 1), "        1");
    std::strcpy(outbuf, "kept");
    EXPECT_STREQ(safereforml("%5.0g", "yn", 1), "  yes");
    EXPECT_STREQ(outbuf, "kept");
    reforml_lookup = saved;
}

TEST(Reforms, CompactHelpers) {
    char b[kFmtBufSize];
    EXPECT_EQ(suform(b, 1.0 / 3, 9), 8);
    EXPECT_STREQ(b, ".3333333");
    suformd(b, 3.14159, 9, 2);
    EXPECT_STREQ(b, "3.14");
    EXPECT_STREQ(reformld(1234567, 12), "   1,234,567");
    EXPECT_STREQ(reformld(-1234, 8), "  -1,234");
    EXPECT_STREQ(reformld(999, 3), "999");
    fmt_memval(b, 10485760);
    EXPECT_STREQ(b, "10M");
    fmt_memval(b, 102400);
    EXPECT_STREQ(b, "100k");
    EXPECT_STREQ(sreforms_memval(0xa00000), "10M");
    EXPECT_STREQ(sreforms_memval(1536), "1k");
}

// ---- formats of variables ------------------------------------------------------------

TEST(VarFormats, Fixfmt) {
    char f[12];
    std::strcpy(f, "%9.0g");
    EXPECT_EQ(fixfmt(f, 12), 1); // 9 + 0 below 12
    EXPECT_STREQ(f, "%12.0g");
    std::strcpy(f, "%9.2f");
    EXPECT_EQ(fixfmt(f, 11), 0); // 9 + 2 is not below 11
    EXPECT_STREQ(f, "%9.2f");
    EXPECT_EQ(fixfmt(f, 12), 1);
    EXPECT_STREQ(f, "%12.2f");
    std::strcpy(f, "%-9.0gc");
    EXPECT_EQ(fixfmt(f, 20), 1);
    EXPECT_STREQ(f, "%-20.0gc");
    std::strcpy(f, "%9,2f");
    EXPECT_EQ(fixfmt(f, 300), 1); // cut to 244
    EXPECT_STREQ(f, "%244,2f");
    for (const char* g : {"%20s", "%td", "%21x", "%8H"}) {
        std::strcpy(f, g);
        EXPECT_EQ(fixfmt(f, 40), 0) << g;
        EXPECT_STREQ(f, g);
    }
}

namespace {
char slots[4][12] = {"%9.0g", "%8.0g", "%9s", "%td"};
char* slot_of(int v) {
    return slots[v - 1];
}
int lablen_of(int v) {
    return v == 1 ? 15 : v == 2 ? 5 : v == 4 ? 30 : -1;
}
} // namespace

TEST(VarFormats, Fixfmts) {
    fixfmts(1, 4, slot_of, lablen_of);
    EXPECT_STREQ(slots[0], "%15.0g");
    EXPECT_STREQ(slots[1], "%8.0g");
    EXPECT_STREQ(slots[2], "%9s");
    EXPECT_STREQ(slots[3], "%td");
}

TEST(VarFormats, SetVarFmt) {
    char slot[12] = "%9.0g";
    EXPECT_EQ(setvarfmt(slot, "%10.2fc", 255), 0);
    EXPECT_STREQ(slot, "%10.2fc");
    EXPECT_EQ(setvarfmt(slot, "%-9.0g", 254), 0);
    EXPECT_STREQ(slot, "%-9.0g");
    EXPECT_EQ(setvarfmt(slot, "%tdDlCY", 253), 0);
    EXPECT_STREQ(slot, "%tdDlCY");
    EXPECT_EQ(setvarfmt(slot, "%20s", 255), 120);
    EXPECT_EQ(setvarfmt(slot, "%9.0q", 255), 120);
    EXPECT_EQ(setvarfmt(slot, "%123456789.0g", 255), 120);
    EXPECT_STREQ(slot, "%tdDlCY");
    EXPECT_EQ(setvarfmt(slot, "%~20s", 10), 0);
    EXPECT_STREQ(slot, "%~20s");
    EXPECT_EQ(setvarfmt(slot, "%9.0g", 10), 120);
    EXPECT_EQ(setvarfmt(slot, "%td", 244), 120);
}
