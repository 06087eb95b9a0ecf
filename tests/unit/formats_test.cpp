// Display formats of Part 2.10. Every expected text here is worked out by hand
// from the rules written in data/formats.h (and the design), not taken from the
// code's output; the reasoning is in the comments where it is not obvious.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "data/dates.h"
#include "data/formats.h"
#include "data/hexfloat.h"
#include "data/missing.h"
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

uint64_t bits_of_text(const char* s) {
    double x = 0;
    EXPECT_EQ(cnvstoz(s, &x), 0) << s;
    return dbits(x);
}

struct DpReset {
    ~DpReset() { dpcomma = 0; }
};

}  // namespace

// ---- chkfmt -----------------------------------------------------------------

TEST(Chkfmt, AcceptsTheGrammar) {
    for (const char* f : {"%9.0g", "%9.2f", "%10.0e", "%10.3e", "%9.0gc", "%9.2fc", "%9,2f",
                          "%9,0gc", "%20s", "%-20s", "%~20s", "%1s", "%244s", "%21x", "%16H",
                          "%16L", "%8H", "%8L", "%d", "%-d", "%td", "%-tm", "%tmCY", "%tg",
                          "%09.2f", "%244.243f", "%1.0g", "%dM_d,_CY", "%d!t!D"})
        EXPECT_TRUE(ok(f, 0)) << f;
}

TEST(Chkfmt, RejectsMalformedText) {
    for (const char* f :
         {"", "9.0g", "%", "%9", "%9.", "%9.0", "%9.0h", "%9.0gx", "%9.0ec", "%9.0gcc", "%0.0g",
          "%245.0g", "%245s", "%0s", "%9.9g", "%9.10f", "%9.g", "%.2f", "%9.2f ", " %9.2f", "%20x",
          "%22x", "%12H", "%9L", "%17H", "%20sx", "%~21x", "%~16H", "%dZ", "%dA", "%d!", "%tx",
          "%t", "%~d", "%~td", "%09.2g", "%09.2fc", "%09s", "%009.2f", "%1234.0g",
          "%12345678.0g", "%dDlCY_DlCYx"})
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
    ASSERT_EQ(chkfmt("%d", 0, &d), 0);  // no codes: the default pattern, width 9
    EXPECT_EQ(d.kind, 'd');
    EXPECT_EQ(d.width, 9);
    EXPECT_STREQ(d.pat, "DlCY");
    EXPECT_EQ(d.justify, 1);
    ASSERT_EQ(chkdfmt("%-d", &d), 0);
    EXPECT_EQ(d.justify, -1);
    EXPECT_STREQ(d.pat, "DlCY");
    ASSERT_EQ(chkdfmt("%dD", &d), 0);  // 2, raised to the minimum 8
    EXPECT_EQ(d.width, 8);
    ASSERT_EQ(chkdfmt("%dDlCY", &d), 0);  // 2+3+2+2
    EXPECT_EQ(d.width, 9);
    ASSERT_EQ(chkdfmt("%dM_d,_CY", &d), 0);  // 9+1+2+1+1+2+2
    EXPECT_EQ(d.width, 18);
    ASSERT_EQ(chkdfmt("%dJjhq", &d), 0);  // 3+3+1+1
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
    ASSERT_EQ(chktfmt("%tqCY_q", &d), 0);  // 2+2+1+1 -> 8
    EXPECT_EQ(d.width, 8);
    EXPECT_NE(chkdfmt("%td", &d), 0);
    EXPECT_NE(chktfmt("%d", &d), 0);
}

// ---- g ------------------------------------------------------------------------

TEST(FormatG, FloatPointOneShowsAsPointOne) {
    // float 0.1 is 0.100000001490116...: %9.0g allows 8 characters, so at most 8
    // significant digits; to 8 digits it is 0.10000000, trailing zeros cut: ".1"
    EXPECT_EQ(F("%9.0g", static_cast<double>(0.1f)), "       .1");
    // %12.0g allows 11: 11 digits ".10000000149" is 12 long, 10 digits fit
    EXPECT_EQ(F("%12.0g", static_cast<double>(0.1f)), " .1000000015");
    EXPECT_EQ(F("%9.0g", 0.1), "       .1");
}

TEST(FormatG, DigitSearch) {
    EXPECT_EQ(F("%9.0g", 1.0 / 3), " .3333333");   // 8 digits need 9 characters
    EXPECT_EQ(F("%9.0g", -1.0 / 3), "-.3333333");  // the sign takes the spare column
    EXPECT_EQ(F("%9.0g", 12345678), " 12345678");
    EXPECT_EQ(F("%9.0g", 123456789), " 1.23e+08");  // 9 digits do not fit in 8
    EXPECT_EQ(F("%9.0g", 21.297297), "  21.2973");  // 7 digits, trailing 0 cut
    EXPECT_EQ(F("%9.0g", 1), "        1");
    EXPECT_EQ(F("%9.0g", 100000), "   100000");
    EXPECT_EQ(F("%9.0g", 0.0001), "    .0001");
    EXPECT_EQ(F("%9.0g", 1e-5), "    1e-05");
    EXPECT_EQ(F("%9.0g", 1e300), "   1e+300");
    EXPECT_EQ(F("%9.0g", 0), "        0");
    EXPECT_EQ(F("%9.0g", -2.5), "     -2.5");
    EXPECT_EQ(F("%10.0g", 1.0 / 3), " .33333333");
    EXPECT_EQ(F("%9.2g", 3.14159), "      3.1");  // at most 2 digits
    EXPECT_EQ(F("%9.4g", 1234567), " 1.23e+06");   // "1.235e+06" is 9: too wide
    EXPECT_EQ(F("%10.4g", 1234567), " 1.235e+06");
}

TEST(FormatG, Commas) {
    // %10.0gc, room 9: 9 digits "1234567.89" is 10 long; 8 digits "1234567.9"
    // with commas is 11; 7 digits "1234568" with commas "1,234,568" fits
    EXPECT_EQ(F("%10.0gc", 1234567.891), " 1,234,568");
    // %9.0gc, room 8: no comma form fits; plain 7 digits "1234567" does
    EXPECT_EQ(F("%9.0gc", 1234567.4), "  1234567");
    EXPECT_EQ(F("%9.0gc", 1234.5), "  1,234.5");
    EXPECT_EQ(F("%9.0gc", 123), "      123");
    EXPECT_EQ(F("%12.0gc", -1234567), "  -1,234,567");
}

// ---- f and e ------------------------------------------------------------------

TEST(FormatF, FixedAndCommas) {
    EXPECT_EQ(F("%9.2f", 3.14159), "     3.14");
    EXPECT_EQ(F("%9.2f", 0.5), "     0.50");  // f keeps the leading zero
    EXPECT_EQ(F("%9.0f", 2.75), "        3");
    EXPECT_EQ(F("%10.0fc", 1234567), " 1,234,567");
    EXPECT_EQ(F("%10.0fc", 1234567.4), " 1,234,567");
    EXPECT_EQ(F("%10.0fc", 123), "       123");
    EXPECT_EQ(F("%10.0fc", -1234567), "-1,234,567");
    // "123,456,789" is 11 wide: without commas it fits
    EXPECT_EQ(F("%10.0fc", 123456789), " 123456789");
    EXPECT_EQ(F("%12.2fc", 1234.5), "    1,234.50");
    EXPECT_EQ(F("%09.2f", -3.14159), "-00003.14");
    EXPECT_EQ(F("%09.2f", 3.14159), "000003.14");
}

TEST(FormatF, EuropeanDecimalMark) {
    EXPECT_EQ(F("%9,2f", 1234.5), "  1234,50");
    EXPECT_EQ(F("%9,2fc", 1234.5), " 1.234,50");
    EXPECT_EQ(F("%9,0g", 0.5), "       ,5");
    EXPECT_EQ(F("%9,0gc", 1234.5), "  1.234,5");
    EXPECT_EQ(F("%10,3e", 1536), " 1,536e+03");
}

TEST(FormatF, SetDpComma) {
    DpReset reset;
    EXPECT_STREQ(dpname(), "period");
    EXPECT_EQ(setdp("comma"), 0);
    EXPECT_STREQ(dpname(), "comma");
    EXPECT_EQ(F("%9.2f", 1234.5), "  1234,50");
    EXPECT_EQ(F("%10.2fc", 1234.5), "  1.234,50");
    EXPECT_EQ(F("%9.0g", 0.25), "      ,25");
    EXPECT_EQ(F("%9,2f", 1234.5), "  1234,50");  // already European
    EXPECT_EQ(F("%9.0g", mkmissing(1)), "       .a");  // missing values keep their dot
    EXPECT_EQ(F("%td", 0), "01jan1960");
    EXPECT_EQ(setdp("Comma"), 198);
    EXPECT_EQ(setdp(""), 198);
    EXPECT_EQ(setdp("period"), 0);
    EXPECT_EQ(F("%9.2f", 1234.5), "  1234.50");
}

TEST(FormatE, Exponential) {
    EXPECT_EQ(F("%10.0e", 12345), "     1e+04");
    EXPECT_EQ(F("%9.2e", 12345), " 1.23e+04");
    EXPECT_EQ(F("%10.3e", -1536), "-1.536e+03");
    EXPECT_EQ(F("%10.2e", 1e300), " 1.00e+300");
    EXPECT_EQ(F("%9.2e", 0), " 0.00e+00");
}

TEST(FormatNumbers, MinusZeroIsZero) {
    EXPECT_EQ(F("%9.0g", -0.0), "        0");
    EXPECT_EQ(F("%9.2f", -0.0), "     0.00");
    EXPECT_EQ(F("%9.2e", -0.0), " 0.00e+00");
    EXPECT_EQ(F("%21x", -0.0), "            +0.0X+000");
    EXPECT_EQ(F("%16H", -0.0), "0000000000000000");
    // a negative value that rounds to zero loses its sign
    EXPECT_EQ(F("%9.2f", -0.001), "     0.00");
    EXPECT_EQ(F("%9.0f", -0.4), "        0");
}

TEST(FormatNumbers, WidthsTooSmall) {
    // f too wide falls back to g in the same width (room w-1), then to the
    // shortest %.<p>g text, wider than the field
    EXPECT_EQ(F("%6.2f", 1234.56), "  1235");  // "1234.56" is 7; g: "1235"
    EXPECT_EQ(F("%5.2f", 123456), "1e+05");    // g room 4 fails; shortest text
    EXPECT_EQ(F("%3.0g", 12345), "12345");     // "12345" and "1e+04" tie: more digits
    EXPECT_EQ(F("%3.0g", 123456789), "1e+08");
    EXPECT_EQ(F("%7.2e", 123456), " 123456");  // "1.23e+05" is 8 wide
    EXPECT_EQ(F("%1.0g", 5), "5");
    EXPECT_EQ(F("%1.0g", -5), "-5");
    EXPECT_EQ(F("%2.0g", 0.5), ".5");        // room 1 fails; ".5" is shortest
    EXPECT_EQ(F("%3.1f", -12.25), "-12");      // "-12.2" is 5; g room 2 gives "12"
}

TEST(FormatNumbers, Justification) {
    EXPECT_EQ(F("%-9.0g", 5), "5        ");
    EXPECT_EQ(F("%~9.0g", 5), "    5    ");
    EXPECT_EQ(F("%~8.0g", 5), "   5    ");  // 7 spare: 3 before, 4 after
    EXPECT_EQ(F("%-9.2f", -1.5), "-1.50    ");
    EXPECT_EQ(F("%-21x", 1), "+1.0X+000            ");
}

// ---- hexadecimal float and bytes ------------------------------------------------

TEST(FormatX, Text) {
    EXPECT_EQ(F("%21x", 1), "            +1.0X+000");
    EXPECT_EQ(F("%21x", 0.1), "+1.999999999999aX-004");  // 0x3FB999999999999A
    EXPECT_EQ(F("%21x", -2), "            -1.0X+001");
    EXPECT_EQ(F("%21x", 0x1p-1074), "+0.0000000000001X-3fe");
    EXPECT_EQ(F("%21x", 1.5), "            +1.8X+000");
    EXPECT_EQ(F("%21x", 0x1.fffffffffffffp1022), "+1.fffffffffffffX+3fe");
}

TEST(FormatX, WrittenAndReadBackExactly) {
    std::mt19937_64 rng(12345);
    char b[kFmtBufSize];
    FmtDesc d;
    ASSERT_EQ(chkfmt("%21x", 0, &d), 0);
    int done = 0;
    for (int i = 0; i < 200000; ++i) {
        uint64_t u = rng();
        if (i % 4 == 1) u &= 0x800fffffffffffffULL;  // subnormals
        if (i % 4 == 2) u &= ~(uint64_t{0x7ff} << 52) | (uint64_t{rng() % 3 + 1} << 52);
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
                     0x1.fffffffffffffp1022, 123456789.125}) {
        fmtrender(b, d, x);
        double y = 0;
        ASSERT_EQ(cnvstoz(b, &y), 0) << b;
        EXPECT_EQ(dbits(y), dbits(x)) << b;
    }
}

TEST(FormatX, BytesHighAndLowFirst) {
    EXPECT_EQ(F("%16H", 1), "3ff0000000000000");
    EXPECT_EQ(F("%16L", 1), "000000000000f03f");
    EXPECT_EQ(F("%16H", -2), "c000000000000000");
    EXPECT_EQ(F("%16H", 0.1), "3fb999999999999a");
    EXPECT_EQ(F("%16L", 0.1), "9a9999999999b93f");
    // %8H and %8L show the float: 1.0f is 0x3F800000, 0.1f is 0x3DCCCCCD
    EXPECT_EQ(F("%8H", 1), "3f800000");
    EXPECT_EQ(F("%8L", 1), "0000803f");
    EXPECT_EQ(F("%8H", 0.1), "3dcccccd");
    EXPECT_EQ(F("%8L", 0.1), "cdcccc3d");
    EXPECT_EQ(F("%8H", 1e300), "7f800000");   // no float that large
    EXPECT_EQ(F("%8H", -1e300), "ff800000");
}

// ---- cnvstoz --------------------------------------------------------------------

TEST(Cnvstoz, StartUpConstants) {
    EXPECT_EQ(bits_of_text("1.0x+3ff"), 0x7FE0000000000000ULL);    // misval
    EXPECT_EQ(bits_of_text("1.01ax+3ff"), 0x7FE01A0000000000ULL);  // .z
    EXPECT_EQ(bits_of_text("1.0x+7f"), 0x47E0000000000000ULL);     // 2^127
    EXPECT_EQ(bits_of_text("1.0x+14d"), 0x54C0000000000000ULL);    // 2^333
    EXPECT_EQ(bits_of_text("1.fffffffffffffX+3fe"), 0x7FDFFFFFFFFFFFFFULL);
    EXPECT_EQ(bits_of_text("-1.fffffffffffffX+3fe"), 0xFFDFFFFFFFFFFFFFULL);
    EXPECT_EQ(bits_of_text("-1.fffffffffffffX+3ff"), 0xFFEFFFFFFFFFFFFFULL);
    EXPECT_EQ(bits_of_text("1.fffffffffffffX-3fe"), 0x001FFFFFFFFFFFFFULL);
    EXPECT_EQ(bits_of_text("1.0X-34"), 0x3CB0000000000000ULL);     // 2^-52
    EXPECT_EQ(bits_of_text("1.fffffeX+7e"), 0x47DFFFFFE0000000ULL);  // largest non-missing float
    EXPECT_EQ(bits_of_text("-1.fffffeX+7e"), 0xC7DFFFFFE0000000ULL);
    EXPECT_EQ(bits_of_text("1.0X-17"), 0x3E80000000000000ULL);     // 2^-23
    EXPECT_EQ(bitsd(bits_of_text("1.0x+3ff")), misval);
    EXPECT_EQ(bits_of_text("0.8x+1"), dbits(1.0));
}

TEST(Cnvstoz, DecimalsAndMissing) {
    double x = 0;
    ASSERT_EQ(cnvstoz("1.5e3", &x), 0);
    EXPECT_EQ(x, 1500);
    ASSERT_EQ(cnvstoz("1.5d3", &x), 0);
    EXPECT_EQ(x, 1500);
    ASSERT_EQ(cnvstoz("-.5", &x), 0);
    EXPECT_EQ(x, -0.5);
    ASSERT_EQ(cnvstoz("+2", &x), 0);
    EXPECT_EQ(x, 2);
    ASSERT_EQ(cnvstoz("  7  ", &x), 0);
    EXPECT_EQ(x, 7);
    ASSERT_EQ(cnvstoz("5.", &x), 0);
    EXPECT_EQ(x, 5);
    ASSERT_EQ(cnvstoz("0.1", &x), 0);
    EXPECT_EQ(x, 0.1);
    ASSERT_EQ(cnvstoz("1E-2", &x), 0);
    EXPECT_EQ(x, 0.01);
    ASSERT_EQ(cnvstoz("1e-400", &x), 0);
    EXPECT_EQ(x, 0);
    ASSERT_EQ(cnvstoz(".", &x), 0);
    EXPECT_EQ(dbits(x), dbits(misval));
    ASSERT_EQ(cnvstoz(".a", &x), 0);
    EXPECT_EQ(dbits(x), 0x7FE0010000000000ULL);
    ASSERT_EQ(cnvstoz(" .z ", &x), 0);
    EXPECT_EQ(dbits(x), 0x7FE01A0000000000ULL);
    x = 42;
    for (const char* s : {"", "  ", "abc", "1.2.3", "1e", "1e+", "inf", "nan", "0x10", "1e999",
                          ".A", "..", ".ab", "1.0x", "1.0x+", "1.0x+3fg", "2.0x+1",
                          "1.00000000000001x+0", "1 2", "--1", "e5", "1.0x+1000", "1x+1",
                          "0x.8"}) {
        EXPECT_EQ(cnvstoz(s, &x), 1) << s;
    }
    EXPECT_EQ(x, 42);  // untouched on failure
}

// ---- strings ---------------------------------------------------------------------

TEST(FormatS, Strings) {
    EXPECT_EQ(S("%10s", "abc"), "       abc");
    EXPECT_EQ(S("%-10s", "abc"), "abc       ");
    EXPECT_EQ(S("%~10s", "abc"), "   abc    ");  // 7 spare: 3 before
    EXPECT_EQ(S("%2s", "abcdef"), "abcdef");     // never cut
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
    const double dot = misval, a = mkmissing(1), z = mkmissing(26);
    EXPECT_EQ(F("%9.0g", dot), "        .");
    EXPECT_EQ(F("%9.0g", a), "       .a");
    EXPECT_EQ(F("%9.0g", z), "       .z");
    EXPECT_EQ(F("%9.2f", mkmissing(2)), "       .b");
    EXPECT_EQ(F("%10.0fc", dot), "         .");
    EXPECT_EQ(F("%9.0gc", a), "       .a");
    EXPECT_EQ(F("%10.3e", z), "        .z");
    EXPECT_EQ(F("%9,2f", a), "       .a");
    EXPECT_EQ(F("%21x", dot), "                    .");
    EXPECT_EQ(F("%21x", z), "                   .z");
    EXPECT_EQ(F("%16H", a), "              .a");
    EXPECT_EQ(F("%16L", dot), "               .");
    EXPECT_EQ(F("%8H", z), "      .z");
    EXPECT_EQ(F("%8L", a), "      .a");
    EXPECT_EQ(F("%d", dot), "        .");
    EXPECT_EQ(F("%td", a), "       .a");
    EXPECT_EQ(F("%tm", mkmissing(2)), "      .b");
    EXPECT_EQ(F("%tq", z), "      .z");
    EXPECT_EQ(F("%tw", dot), "       .");
    EXPECT_EQ(F("%th", dot), "       .");
    EXPECT_EQ(F("%ty", a), "      .a");
    EXPECT_EQ(F("%tg", dot), "        .");
    EXPECT_EQ(F("%dM_d,_CY", a), std::string(16, ' ') + ".a");
    EXPECT_EQ(F("%09.2f", dot), "        .");  // no zeros before a missing value
    // left and centre formats move the result like any other
    EXPECT_EQ(F("%-9.0g", a), ".a       ");
    EXPECT_EQ(F("%~9.0g", dot), "    .    ");
    EXPECT_EQ(F("%-td", dot), ".        ");
    // values beyond .z and infinities are the system missing value
    EXPECT_EQ(F("%9.0g", bitsd(0x7FE01B0000000000ULL)), "        .");
    EXPECT_EQ(F("%9.0g", HUGE_VAL), "        .");
    EXPECT_EQ(F("%9.0g", -HUGE_VAL), "        .");
    EXPECT_EQ(F("%9.0g", std::nan("")), "        .");
    EXPECT_EQ(F("%td", -HUGE_VAL), "        .");
    EXPECT_EQ(F("%16H", -HUGE_VAL), "fff0000000000000");
}

// ---- dates -------------------------------------------------------------------------

TEST(FormatDate, DefaultPattern) {
    EXPECT_EQ(F("%td", 0), "01jan1960");
    EXPECT_EQ(F("%td", -1), "31dec1959");
    EXPECT_EQ(F("%td", 17000), "18jul2006");  // 1960-01-01 + 17000 days (python3)
    EXPECT_EQ(F("%d", 0), "01jan1960");
    EXPECT_EQ(F("%d", 17000), "18jul2006");
    EXPECT_EQ(F("%td", 0.75), "01jan1960");   // floored
    EXPECT_EQ(F("%td", -0.25), "31dec1959");
    EXPECT_EQ(F("%td", kDateMax), "31dec9999");
    EXPECT_EQ(F("%td", kDateMin), "01jan0100");
    EXPECT_EQ(F("%-td", 0), "01jan1960");
    EXPECT_EQ(F("%tdDlCY", 14669), "29feb2000");
}

TEST(FormatDate, OutOfRangeGoesThroughTheNumericPath) {
    EXPECT_EQ(F("%td", kDateMax + 1), "  2936550");
    EXPECT_EQ(F("%td", kDateMin - 1), "  -679351");
    EXPECT_EQ(F("%-td", kDateMax + 1), "2936550  ");
    EXPECT_EQ(F("%ty", 99), "      99");
    EXPECT_EQ(F("%ty", 10000), "   10000");
    EXPECT_EQ(F("%tm", 1e10), "   1e+10");
    EXPECT_EQ(F("%dM_d,_CY", 1e7), std::string(10, ' ') + "10000000");
}

TEST(FormatDate, EveryCode) {
    // 17000 is Tuesday 18 July 2006; 16990 is 8 July 2006, day 189 of the year,
    // week (189-1)/7+1 = 27; 4 is 5 January 1960; -350997 is 1 January 999.
    EXPECT_EQ(F("%dC", 17000), "      20");
    EXPECT_EQ(F("%dc", 17000), "      20");
    EXPECT_EQ(F("%dC", -350997), "      09");
    EXPECT_EQ(F("%dc", -350997), "       9");
    EXPECT_EQ(F("%dY", 16990), "      06");
    EXPECT_EQ(F("%dy", 16990), "       6");
    EXPECT_EQ(F("%dY", -350997), "      99");
    EXPECT_EQ(F("%dCY", -350997), "    0999");
    EXPECT_EQ(F("%dcy", -350997), "     999");
    EXPECT_EQ(F("%dM", 16990), "     July");
    EXPECT_EQ(F("%dL", 16990), "     july");
    EXPECT_EQ(F("%dm", 16990), "     Jul");
    EXPECT_EQ(F("%dl", 16990), "     jul");
    EXPECT_EQ(F("%dN", 16990), "      07");
    EXPECT_EQ(F("%dn", 16990), "       7");
    EXPECT_EQ(F("%dD", 16990), "      08");
    EXPECT_EQ(F("%dd", 16990), "       8");
    EXPECT_EQ(F("%dJ", 4), "     005");
    EXPECT_EQ(F("%dj", 4), "       5");
    EXPECT_EQ(F("%dJ", 16990), "     189");
    EXPECT_EQ(F("%dW", 4), "      01");
    EXPECT_EQ(F("%dw", 4), "       1");
    EXPECT_EQ(F("%dW", 16990), "      27");
    EXPECT_EQ(F("%dh", 16990), "       2");
    EXPECT_EQ(F("%dh", 181), "       1");  // 30jun1960
    EXPECT_EQ(F("%dq", 16990), "       3");
    EXPECT_EQ(F("%dq", 91), "       2");   // 01apr1960
    EXPECT_EQ(F("%dD_m", 16990), "  08 Jul");
    EXPECT_EQ(F("%d.,:-/'", 0), "  .,:-/'");
    EXPECT_EQ(F("%d!t!D!!", 0), "     tD!");
    EXPECT_EQ(F("%dM_d,_CY", 17000), "     July 18, 2006");
    EXPECT_EQ(F("%-dM_d,_CY", 17000), "July 18, 2006     ");
    EXPECT_EQ(F("%dN/D/CY", 17000), "07/18/2006");
    EXPECT_EQ(F("%dCY-N-D", 16990), "2006-07-08");
    const char* months[12] = {"  January", " February", "    March", "    April",
                              "      May", "     June", "     July", "   August",
                              "September", "  October", " November", " December"};
    for (int m = 1; m <= 12; ++m) EXPECT_EQ(F("%dM", stedate(m, 1, 1999)), months[m - 1]);
    EXPECT_EQ(F("%dW", 365), "      52");  // 31dec1960 lies in week 52
    EXPECT_EQ(F("%dJ", 365), "     366");
}

TEST(FormatDate, TimeSeriesUnitBoundaries) {
    EXPECT_EQ(F("%tm", 0), "  1960m1");
    EXPECT_EQ(F("%tm", 11), " 1960m12");
    EXPECT_EQ(F("%tm", 12), "  1961m1");
    EXPECT_EQ(F("%tm", -1), " 1959m12");
    EXPECT_EQ(F("%tm", 558), "  2006m7");
    EXPECT_EQ(F("%tq", 0), "  1960q1");
    EXPECT_EQ(F("%tq", 3), "  1960q4");
    EXPECT_EQ(F("%tq", 4), "  1961q1");
    EXPECT_EQ(F("%tq", -1), "  1959q4");
    EXPECT_EQ(F("%tw", 0), "  1960w1");
    EXPECT_EQ(F("%tw", 51), " 1960w52");
    EXPECT_EQ(F("%tw", 52), "  1961w1");
    EXPECT_EQ(F("%tw", -1), " 1959w52");
    EXPECT_EQ(F("%th", 0), "  1960h1");
    EXPECT_EQ(F("%th", 1), "  1960h2");
    EXPECT_EQ(F("%th", 2), "  1961h1");
    EXPECT_EQ(F("%th", -1), "  1959h2");
    EXPECT_EQ(F("%ty", 1960), "    1960");
    EXPECT_EQ(F("%ty", 1959), "    1959");
    EXPECT_EQ(F("%ty", 100), "    0100");
    EXPECT_EQ(F("%td", 0), "01jan1960");
    EXPECT_EQ(F("%-tm", 0), "1960m1  ");
    // with codes, the unit is turned into its first day
    EXPECT_EQ(F("%tmlCY", 1), " feb1960");
    EXPECT_EQ(F("%tqDlCY", 1), "01apr1960");
    EXPECT_EQ(F("%twDlCY", 51), "23dec1960");
    EXPECT_EQ(F("%thN/CY", 1), " 07/1960");
    EXPECT_EQ(F("%tyDlCY", 1961), "01jan1961");
    // %tg is a plain number
    EXPECT_EQ(F("%tg", 1.5), "      1.5");
    EXPECT_EQ(F("%tg", 17000), "    17000");
    EXPECT_EQ(F("%-tg", 2), "2        ");
}

// ---- the outbuf entry points and helpers ---------------------------------------------

TEST(Reforms, OutbufEntryPoints) {
    EXPECT_STREQ(sreforms("%9.2f", 3.14159), "     3.14");
    EXPECT_EQ(sreforms("%9.2f", 1), outbuf);
    EXPECT_STREQ(sreforms("%9.0q", 3.14159), "  3.14159");  // invalid: %9.0g
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
}  // namespace

TEST(Reforms, ValueLabels) {
    VlLookupFn saved = reforml_lookup;
    reforml_lookup = lookup;
    EXPECT_STREQ(sreforml("%9.0g", "yn", 1), "      yes");
    EXPECT_STREQ(sreforml("%-9.0g", "yn", 1), "yes      ");
    EXPECT_STREQ(sreforml("%9.0g", "yn", 2), "abcdefghi");  // cut to the width
    EXPECT_STREQ(sreforml("%9.0g", "yn", 3), "        3");  // no text: the number
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
    EXPECT_EQ(fixfmt(f, 12), 1);  // 9 + 0 below 12
    EXPECT_STREQ(f, "%12.0g");
    std::strcpy(f, "%9.2f");
    EXPECT_EQ(fixfmt(f, 11), 0);  // 9 + 2 is not below 11
    EXPECT_STREQ(f, "%9.2f");
    EXPECT_EQ(fixfmt(f, 12), 1);
    EXPECT_STREQ(f, "%12.2f");
    std::strcpy(f, "%-9.0gc");
    EXPECT_EQ(fixfmt(f, 20), 1);
    EXPECT_STREQ(f, "%-20.0gc");
    std::strcpy(f, "%9,2f");
    EXPECT_EQ(fixfmt(f, 300), 1);  // cut to 244
    EXPECT_STREQ(f, "%244,2f");
    for (const char* g : {"%20s", "%td", "%21x", "%8H"}) {
        std::strcpy(f, g);
        EXPECT_EQ(fixfmt(f, 40), 0) << g;
        EXPECT_STREQ(f, g);
    }
}

namespace {
char slots[4][12] = {"%9.0g", "%8.0g", "%9s", "%td"};
char* slot_of(int v) { return slots[v - 1]; }
int lablen_of(int v) { return v == 1 ? 15 : v == 2 ? 5 : v == 4 ? 30 : -1; }
}  // namespace

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
