#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "capture.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"
#include "kernel/parse/options.h"

using namespace korvu;

static char line[4096];

// Gathers the options of a line as parse would behind the comma.
static int gather(const char* text) {
    snprintf(line, sizeof line, "%s", text);
    settok(line);
    noptn = 0;
    opable = 0;
    return proption();
}

TEST(Options, OnOffAndNoForms) {
    ASSERT_EQ(gather("nolog"), 0);
    EXPECT_EQ(findopt("log", 1, 1), 0);
    ASSERT_EQ(gather("log"), 0);
    EXPECT_EQ(findopt("log", 1, 0), 1);
    // "nolo": with the least length raised by 2, "no" alone is not enough
    ASSERT_EQ(gather("nolo"), 0);
    EXPECT_EQ(findopt("log", 1, 7), 0);
    ASSERT_EQ(gather("no"), 0);
    EXPECT_EQ(findopt("log", 1, 7), 7);
    ASSERT_EQ(gather("detail"), 0);
    EXPECT_EQ(findopt("log", 1, 7), 7);
    EXPECT_EQ(findopt("detail", 3, 0), 1);
}

TEST(Options, FormMismatchIsIncorrectlySpecified) {
    CapturedOutput out;
    ASSERT_EQ(gather("replace(x) other"), 0);
    EXPECT_EQ(findopt("replace", 7, 0), 0);
    EXPECT_EQ(optavbl[0], 2);
    EXPECT_EQ(chkopt(), 198);
    EXPECT_EQ(out.take(), "option replace() incorrectly specified\n");
    ASSERT_EQ(gather("other"), 0);
    EXPECT_EQ(chkopt(), 198);
    EXPECT_EQ(out.take(), "option other not allowed\n");
    ASSERT_EQ(gather("a b"), 0);
    findopt("a", 1, 0);
    findopt("b", 1, 0);
    EXPECT_EQ(chkopt(), 0);
}

TEST(Options, SeventyOptionLimit) {
    CapturedOutput out;
    std::string seventy, seventyone;
    for (int i = 0; i < 70; i++) seventy += "o" + std::to_string(i) + " ";
    seventyone = seventy + "last";
    EXPECT_EQ(gather(seventy.c_str()), 0);
    EXPECT_EQ(noptn, 70);
    EXPECT_EQ(gather(seventyone.c_str()), 1003);
    EXPECT_EQ(out.take(), "too many options\n");
}

TEST(Options, ArgumentsMarkedTwoUntilAccepted) {
    CapturedOutput out;
    ASSERT_EQ(gather("level(abc) count(12) gen(a b  c) raw( x , y )"), 0);
    EXPECT_EQ(findopta("level", 3, 95), 95);
    EXPECT_EQ(optavbl[0], 2);
    EXPECT_EQ(findopta("count", 1, 0), 12);
    EXPECT_EQ(optavbl[1], 3);
    char buf[100];
    EXPECT_STREQ(findargn("gen", 3, buf, sizeof buf, 5), "a b c");
    EXPECT_EQ(optavbl[2], 3);
    EXPECT_STREQ(findargasis("raw", 3, buf, sizeof buf), " x , y ");
    EXPECT_EQ(chkopt(), 198);
    EXPECT_EQ(out.take(), "option level() incorrectly specified\n");
    // too many words leaves the entry in doubt
    ASSERT_EQ(gather("gen(a b c)"), 0);
    EXPECT_STREQ(findargn("gen", 3, buf, sizeof buf, 2), "");
    EXPECT_EQ(optavbl[0], 2);
    // a non-integer argument to an integer option
    ASSERT_EQ(gather("count(1.5)"), 0);
    EXPECT_EQ(findopta("count", 1, -1), -1);
    EXPECT_EQ(optavbl[0], 2);
}

TEST(Options, NumbersAndLevels) {
    double v[4];
    ASSERT_EQ(gather("at(-2.5) list(1 2,3)"), 0);
    EXPECT_EQ(findoptv("at", 2, v, 1, 0), 1);
    EXPECT_EQ(v[0], -2.5);
    EXPECT_EQ(findoptv("list", 4, v, 4, 0), 3);
    EXPECT_EQ(v[2], 3);
    CapturedOutput out;
    ASSERT_EQ(gather("level(99.5)"), 0);
    EXPECT_EQ(findlevel(1), 0);
    EXPECT_EQ(cilevel, 99.5);
    ASSERT_EQ(gather("level(5)"), 0);
    EXPECT_EQ(findlevel(1), 198);
    EXPECT_EQ(chkrange("linesize", 20, 40, 255), 198);
    EXPECT_EQ(
        out.take(),
        "level() must be between 10 and 99.99 inclusive\nlinesize must be between 40 and 255\n");
}

TEST(Options, Usingsaving) {
    char f[500];
    ASSERT_EQ(gather("saving(\"my file.gph\", replace)"), 0);
    EXPECT_EQ(findusg(3, f, 1), 2);
    EXPECT_STREQ(f, "my file.gph");
    ASSERT_EQ(gather("using(data/x.dta)"), 0);
    EXPECT_EQ(findusg(5, f, 0), 1);
    EXPECT_STREQ(f, "data/x.dta");
}

TEST(Options, UnbalancedArgument) {
    CapturedOutput out;
    EXPECT_EQ(gather("gen(a b"), 100);
    EXPECT_EQ(out.take(), ") required\n");
    opable = 3;
    snprintf(line, sizeof line, "x");
    settok(line);
    EXPECT_EQ(proption(), 101);
    EXPECT_EQ(out.take(), "options not allowed\n");
}

TEST(Numbers, Cnvstoz) {
    double v;
    ASSERT_EQ(cnvstoz("1.0x+3ff", &v), 0);
    EXPECT_EQ(v, 0x1p1023);
    ASSERT_EQ(cnvstoz("1.01ax+3ff", &v), 0);
    EXPECT_EQ(v, 0x1.01ap1023);
    ASSERT_EQ(cnvstoz("-1.fffffffffffffX+3fe", &v), 0);
    EXPECT_EQ(v, -0x1.fffffffffffffp1022);
    ASSERT_EQ(cnvstoz("1.0X-34", &v), 0);
    EXPECT_EQ(v, 0x1p-52);
    ASSERT_EQ(cnvstoz("1.fffffeX+7e", &v), 0);
    EXPECT_EQ(v, 0x1.fffffep126);
    ASSERT_EQ(cnvstoz("-12.5e2", &v), 0);
    EXPECT_EQ(v, -1250);
    ASSERT_EQ(cnvstoz(".b", &v), 0);
    EXPECT_EQ(v, 0x1.002p1023);
    // decimal text goes to the nearest double (python3's float() and hex()):
    // 1e23 is 0x1.52d02c7e14af6p+76, which a digit-by-digit product misses;
    // 2^53 + 1 ties to the even 2^53; a long integer and the smallest normal
    const struct {
        const char* text;
        double want;
    } dec[] = {
        {"1e23", 0x1.52d02c7e14af6p+76},
        {"9007199254740993", 0x1p53},
        {"0.1", 0x1.999999999999ap-4},
        {"0.30000000000000004", 0x1.3333333333334p-2},
        {"123456789012345678901234567890", 0x1.8ee90ff6c373ep+96},
        {"2.2250738585072014e-308", 0x1p-1022},
        {"5.", 5},
        {".5", 0.5},
        {"-.5e+1", -5},
        {"1E5", 100000},
    };
    for (const auto& d : dec) {
        v = 0;
        ASSERT_EQ(cnvstoz(d.text, &v), 0) << d.text;
        EXPECT_EQ(v, d.want) << d.text;
    }
    EXPECT_NE(cnvstoz("abc", &v), 0);
    EXPECT_NE(cnvstoz("1e400", &v), 0);
    EXPECT_NE(cnvstoz("inf", &v), 0);
    EXPECT_NE(cnvstoz("1.0x", &v), 0);
    EXPECT_NE(cnvstoz("2.0x+1", &v), 0);
    EXPECT_NE(cnvstoz("", &v), 0);
}

// parse leaves the handler's output level as it found it, whether it fails or
// not, and its messages still come out at the error level.
static int parsed(const char* text) {
    snprintf(line, sizeof line, "%s", text);
    settok(line);
    cmdinit();
    vable = 3, ifable = 3, oable = 0, opable = 0;
    c_outlev = 1;
    return parse1();
}

TEST(Parse, OutputLevelKeptOnEveryPath) {
    CapturedOutput out;
    EXPECT_EQ(parsed(", detail"), 0);
    EXPECT_EQ(c_outlev, 1);
    EXPECT_EQ(parsed("in 5/2"), 198);
    EXPECT_EQ(c_outlev, 1);
    EXPECT_EQ(out.take(), "Obs. nos. out of range\n");
    EXPECT_EQ(parsed("if x > 1"), 101);
    EXPECT_EQ(c_outlev, 1);
    EXPECT_EQ(out.take(), "if not allowed\n");
    EXPECT_EQ(parsed("leftover"), 198);
    EXPECT_EQ(c_outlev, 1);
    EXPECT_EQ(out.take(), "'leftover' invalid\n");
    c_outlev = 0;
}
