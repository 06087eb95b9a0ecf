// Expressions over data: compile shapes, limits, subscripts and by-group
// ranges, running sums, strings, and the block evaluator against the
// observation-at-a-time one. Expected values are worked out by hand or with
// python3 (math, fractions, mpmath), never taken from the evaluator.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "capture.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/exp_ops.h"
#include "data/expr/expr.h"
#include "data/vars/vartab.h"
#include "dataarea_fixture.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"

using namespace korvu;

namespace {

const double dot = misval;
const double dota = 0x1.001p1023; // `.a`: code byte 1 in bits 40-47

char line[200000];
ExpObj obj;

// Compiles text from the token stream: the code, and the rest of the line
// left unread in *rest when asked.
int comp(const std::string& text, int wanted = 3, std::string* rest = nullptr, int end_flag = 0) {
    snprintf(line, sizeof line, "%s", text.c_str());
    settok(line);
    CapturedOutput quiet;
    int rc = compexp(&obj, wanted, end_flag, 0);
    if (rest) *rest = peektok_chr();
    return rc;
}
void ranges(int n1, int n2, int s1, int s2) {
    nobs1 = n1, nobs2 = n2, nobss1 = s1, nobss2 = s2;
}
double val(const std::string& text, int i = 1) {
    EXPECT_EQ(comp(text, 0), 0) << text;
    return xeq(&obj, i);
}
std::string sval(const std::string& text, int i = 1) {
    EXPECT_EQ(comp(text, 1), 0) << text;
    char buf[EXP_STRMAX + 1];
    return sxeq(&obj, i, buf);
}
bool same(double a, double b) {
    return dbits(a) == dbits(b);
}

class Expr : public ::testing::Test {
  protected:
    void SetUp() override {
        open_data_area(32u << 20);
        vernum = KORVU_VERSION;
        mvmodern = 1;
        exphooks = {};
        initialize_compexp_shared();
    }
    void TearDown() override {
        news_free();
        vernum = KORVU_VERSION;
        mvmodern = 1;
    }
    // n observations of x (double), f (float), l (long), b (byte), k (int)
    // and s (str8): x = i, s = "s<i>".
    void data(int n) {
        ASSERT_EQ(addvar("x", KV_DOUBLE), 0);
        ASSERT_EQ(addvar("f", KV_FLOAT), 0);
        ASSERT_EQ(addvar("l", KV_LONG), 0);
        ASSERT_EQ(addvar("b", KV_BYTE), 0);
        ASSERT_EQ(addvar("k", KV_INT), 0);
        ASSERT_EQ(addvar("s", 8), 0);
        while (maxobs < n) ASSERT_EQ(repartobs(n - maxobs), 0);
        nobs = n;
        for (int i = 1; i <= n; i++) {
            for (int v = 1; v <= 5; v++) store(v, i, i);
            sstorez(6, i, ("s" + std::to_string(i)).c_str());
        }
        ranges(1, n, 1, n);
    }
};

// ---- precedence, versions and missing rules ----------------------------------------

TEST_F(Expr, UnaryMinusAndPowerByVersion) {
    data(3);
    EXPECT_EQ(val("-2^2"), -4);
    EXPECT_EQ(val("-x^2", 3), -9);
    EXPECT_EQ(val("-x*2", 3), -6);
    vernum = 400;
    EXPECT_EQ(val("-2^2"), 4); // the square of -2
    EXPECT_EQ(val("-x^2", 3), 9);
    EXPECT_EQ(val("!0+1"), 2); // unary after the operators, same as later
}

TEST_F(Expr, MissingComparedByVersionRules) {
    EXPECT_EQ(val(".a == ."), 0);
    EXPECT_EQ(val(".a == .a"), 1);
    EXPECT_EQ(val(".a > ."), 1);
    mvmodern = 0;
    EXPECT_EQ(val(".a == ."), 1);
    EXPECT_EQ(val(".z > ."), 0);
    EXPECT_EQ(val(". > 1e300"), 1); // missing still above every number
}

TEST_F(Expr, RoundingOfSplitOrder) {
    // `*` is split before `/`: 49*1/49 is 49*(1/49) = 0.9999999999999999
    EXPECT_TRUE(same(val("49*1/49"), 0.9999999999999999));
    EXPECT_EQ(val("(49*1)/49"), 1);
    EXPECT_EQ(val("8/2*4"), 16);
    EXPECT_EQ(val("2!=0<1"), 0); // the `<` row splits before `!=`
    EXPECT_EQ(val("1|0&0"), 1);
}

// ---- compiled shapes and the isolation of text ---------------------------------------

TEST_F(Expr, SubscriptsReadOtherObservations) {
    data(3); // x = 1, 2, 3
    // a subscript outside 1.._N gives missing, inside the value there
    const double lag[] = {dot, 1, 2}, lead[] = {2, 3, dot};
    for (int i = 1; i <= 3; i++) {
        EXPECT_TRUE(same(val("x[_n-1]", i), lag[i - 1])) << i;
        EXPECT_TRUE(same(val("x[_n+1]", i), lead[i - 1])) << i;
        EXPECT_EQ(val("x[1] + x[_N]", i), 4);
        EXPECT_TRUE(same(val("x[0]", i), dot));
        EXPECT_TRUE(same(val("x[4]", i), dot));
        // the subscript is itself an expression over the observation
        EXPECT_EQ(val("x[_N - _n + 1]", i), 4 - i);
        EXPECT_EQ(sval("s[_N - _n + 1]", i), "s" + std::to_string(4 - i));
    }
}

TEST_F(Expr, TextEndsAtKeywordsCommasAndBrackets) {
    data(3);
    std::string rest;
    ASSERT_EQ(comp("x y", 0, &rest), 0);
    EXPECT_EQ(rest, "y");
    ASSERT_EQ(comp("x == 1 y", 0, &rest), 0);
    EXPECT_EQ(rest, "y");
    ASSERT_EQ(comp("x + 1 in 1/2", 0, &rest), 0);
    EXPECT_EQ(rest, "in 1/2");
    ASSERT_EQ(comp("x - (1 , 2) , opt", 0, &rest), 198); // a comma inside parentheses is no end
    ASSERT_EQ(comp("log(x) , opt", 0, &rest), 0);
    EXPECT_EQ(rest, ", opt");
    ASSERT_EQ(comp("x*2] rest", 0, &rest, 1), 0);
    EXPECT_EQ(rest, "] rest");
    EXPECT_EQ(comp("x)"), 198);
    EXPECT_EQ(comp("(x"), 198);
    EXPECT_EQ(comp("\"abc"), 198);
    ASSERT_EQ(comp("x = 2", 0, &rest), 0); // a single = ends the expression
    EXPECT_EQ(rest, "= 2");
}

TEST_F(Expr, TypesAndNames) {
    data(2);
    EXPECT_EQ(comp("\"a\" + 1"), 109);
    EXPECT_EQ(comp("s + 1"), 109);
    EXPECT_EQ(comp("-\"a\""), 109);
    EXPECT_EQ(comp("s", 0), 109);
    EXPECT_EQ(comp("x", 1), 109);
    EXPECT_EQ(comp("nosuch"), 111);
    EXPECT_EQ(comp("nosuch(1)"), 133);
    EXPECT_EQ(comp("abs(1,2)"), 198);
    EXPECT_EQ(comp("normal(1)"), 0);
    EXPECT_EQ(comp("nchi(1, 2, 3)"), 0);
    EXPECT_EQ(comp("binormal(.5, .5)"), 198);
    EXPECT_EQ(comp("normden(1, 2)"), 198);
    EXPECT_EQ(comp("E1overkBin(1, 2, 3)"), 199); // not yet available
    EXPECT_EQ(comp("uniform()"), 0);
    EXPECT_EQ(comp("L.x"), 101);
    EXPECT_EQ(comp("missing(missing(x))"), 198);
    EXPECT_EQ(val("1 + (x - 1)", 2), 2);
}

TEST_F(Expr, ExponentSignsAndSubtraction) {
    ASSERT_EQ(addvar("x1e", KV_DOUBLE), 0);
    ASSERT_EQ(repartobs(1), 0);
    nobs = 1;
    store(1, 1, 10);
    ranges(1, 1, 1, 1);
    EXPECT_EQ(val("x1e-5"), 5); // a name: the minus is an operator
    EXPECT_EQ(val("1e-5*1e5"), 1);
    EXPECT_EQ(val("2E+1-1"), 19);
    EXPECT_EQ(val("1.8x+1-1"), 2); // hexadecimal float 3, less 1
    EXPECT_TRUE(same(val("1.0x+3ff"), dot));
}

TEST_F(Expr, VariablesByAbbreviation) {
    ASSERT_EQ(addvar("income", KV_DOUBLE), 0);
    ASSERT_EQ(addvar("inc2", KV_DOUBLE), 0);
    ASSERT_EQ(repartobs(1), 0);
    nobs = 1;
    store(1, 1, 7);
    store(2, 1, 9);
    ranges(1, 1, 1, 1);
    EXPECT_EQ(val("inco"), 7);
    EXPECT_EQ(val("inc2"), 9);
    EXPECT_EQ(comp("inc"), 111); // ambiguous
    EXPECT_EQ(val("inco~"), 7);
}

// ---- limits ------------------------------------------------------------------------

std::string repeat(const std::string& s, int n) {
    std::string r;
    for (int k = 0; k < n; k++) r += s;
    return r;
}

TEST_F(Expr, CodeWordsLimit) {
    // constant (2 words) + 1199 times "+_n" (2 words each) = 2400 words
    std::string ok = "1" + repeat("+_n", 1199);
    ASSERT_EQ(comp(ok, 0), 0);
    EXPECT_EQ(obj.code_end, 2399);
    EXPECT_EQ(comp("-" + ok, 0), 130); // one more word: the negation
}

TEST_F(Expr, DeepTextIsTooLongNotACrash) {
    EXPECT_EQ(comp(repeat("1+", 5000) + "1", 0), 130);
    EXPECT_EQ(comp(repeat("-", 5000) + "1", 0), 130);
}

TEST_F(Expr, ConstantPoolLimit) {
    std::string e = "0";
    for (int k = 1; k < 300; k++) e += "+" + std::to_string(k);
    ASSERT_EQ(comp(e + "+7+7+299", 0), 0); // repeats share their slot
    EXPECT_EQ(nsystak, 300);
    initialize_compexp_shared();
    EXPECT_EQ(comp(e + "+300", 0), 130);
}

TEST_F(Expr, TypeStackStringAndMatrixLimits) {
    auto nest = [](const std::string& leaf, const std::string& op, int k) {
        std::string e = leaf;
        for (int j = 0; j < k; j++) e = leaf + op + "(" + e + ")";
        return e;
    };
    EXPECT_EQ(comp(nest("1", "+", 249), 0), 0); // 250 entries deep
    EXPECT_EQ(comp(nest("1", "+", 250), 0), 130);
    EXPECT_EQ(comp(nest("\"a\"", "+", 9), 1), 0); // 10 strings at once
    EXPECT_EQ(comp(nest("\"a\"", "+", 10), 1), 130);
    // matrices: each parenthesised row (1, ...) holds one more
    auto rows = [](int k) {
        std::string e = "1";
        for (int j = 0; j < k; j++) e = "(1," + e + ")";
        return e;
    };
    EXPECT_EQ(comp(rows(19), 4), 0);
    EXPECT_EQ(comp(rows(20), 4), 130);
    EXPECT_EQ(comp("(1,2)", 0), 198); // no row operators outside matrix mode
    EXPECT_EQ(comp("sum(1)+sum(1)+sum(1)+sum(1)+sum(1)", 0), 0);
    EXPECT_EQ(comp("sum(1)+sum(1)+sum(1)+sum(1)+sum(1)+sum(1)", 0), 130);
}

TEST_F(Expr, StringPoolLimit) {
    std::string s244 = "\"" + std::string(244, 'q') + "\"";
    std::string e = s244;
    for (int k = 1; k < 130; k++) e += "+" + s244; // 130 * 245 = 31850 bytes
    ASSERT_EQ(comp(e, 1), 0);
    initialize_compexp_shared();
    EXPECT_EQ(comp(e + "+" + s244, 1), 130); // 32095 bytes
}

// ---- data: subscripts, by-groups, sums, strings ------------------------------------------

TEST_F(Expr, SubscriptsSeeTheByGroup) {
    data(10);
    EXPECT_EQ(val("x[_n-1]", 3), 2);
    EXPECT_TRUE(same(val("x[_n-1]", 1), dot));
    EXPECT_TRUE(same(val("x[0]", 5), dot));
    EXPECT_TRUE(same(val("x[_N+1]", 5), dot));
    EXPECT_EQ(val("x[2.9]", 5), 2); // truncated
    EXPECT_TRUE(same(val("x[1e20]", 5), dot));
    ranges(4, 6, 4, 6); // a by-group of observations 4..6
    EXPECT_EQ(val("x[1]", 5), 4);
    EXPECT_EQ(val("_n", 5), 2);
    EXPECT_EQ(val("_N", 5), 3);
    EXPECT_TRUE(same(val("x[4]", 5), dot));
    EXPECT_EQ(sval("s[_n+1]", 5), "s6");
    EXPECT_EQ(sval("s[0]", 5), "");
}

TEST_F(Expr, RunningSums) {
    data(5);
    store(1, 2, dota);
    store(1, 4, dot);
    ASSERT_EQ(comp("sum(x)", 0), 0);
    const double want[5] = {1, 1, 4, 4, 9}; // missing counts as 0
    for (int i = 1; i <= 5; i++) EXPECT_EQ(xeq(&obj, i), want[i - 1]) << i;
    EXPECT_EQ(xeq(&obj, 1), 1); // back at the first: the sum starts again
    ASSERT_EQ(comp("sum(.)", 0), 0);
    for (int i = 1; i <= 5; i++) EXPECT_EQ(xeq(&obj, i), 0);
}

TEST_F(Expr, StringsAndTheirCut) {
    data(3);
    sstorez(6, 2, "abcdefgh");
    EXPECT_EQ(sval("s + \"-\" + s", 2), "abcdefgh-abcdefgh");
    EXPECT_EQ(val("length(s)", 2), 8);
    EXPECT_EQ(val("s == \"abcdefgh\"", 2), 1);
    EXPECT_EQ(val("s < \"abd\"", 2), 1);
    std::string a200 = "\"" + std::string(200, 'a') + "\"";
    std::string b100 = "\"" + std::string(100, 'b') + "\"";
    std::string r = sval(a200 + "+" + b100);
    EXPECT_EQ(r.size(), 244u);
    EXPECT_EQ(r, std::string(200, 'a') + std::string(44, 'b'));
    EXPECT_EQ(sval("cond(x>1, \"big\", \"small\")", 2), "big");
    EXPECT_EQ(sval("cond(x>1, \"big\", \"small\")", 1), "small");
    EXPECT_EQ(sval("cond(., \"t\", \"f\", \"m\")"), "m");
    EXPECT_EQ(val("missing(s, x)", 1), 0);
}

TEST_F(Expr, GroupAndAutocode) {
    data(10);
    ranges(1, 10, 1, 10);
    // group(3) over 10 observations: trunc((3 - 1e-6)/9 * (i - 1) + 1)
    const double want[10] = {1, 1, 1, 1, 2, 2, 2, 3, 3, 3};
    ASSERT_EQ(comp("group(3)", 0), 0);
    for (int i = 1; i <= 10; i++) EXPECT_EQ(xeq(&obj, i), want[i - 1]) << i;
    // breaks of autocode(x, 4, 0, 8) are 2, 4, 6, then 8
    EXPECT_EQ(val("autocode(3, 4, 0, 8)"), 4);
    EXPECT_EQ(val("autocode(4, 4, 0, 8)"), 4);
    EXPECT_EQ(val("autocode(100, 4, 0, 8)"), 8);
    EXPECT_TRUE(same(val("autocode(1, 0, 0, 8)"), dot));
}

TEST_F(Expr, SpecialFunctionsAgainstHighPrecision) {
    // references from mpmath
    EXPECT_NEAR(val("digamma(1)"), -0.577215664901533, 1e-14);
    EXPECT_NEAR(val("digamma(-0.5)"), 0.0364899739785765, 1e-13);
    EXPECT_NEAR(val("digamma(7.25)"), 1.91045352688374, 1e-13);
    EXPECT_NEAR(val("trigamma(0.3)"), 12.2453645461077, 1e-12);
    EXPECT_NEAR(val("trigamma(1)"), 1.6449340668482264, 1e-14);
    EXPECT_NEAR(val("lngamma(10)"), 12.801827480081469, 1e-13);
    EXPECT_EQ(val("comb(50,25)"), 126410606437752.0);
    EXPECT_TRUE(same(val("float(0.1)"), 0.10000000149011612));
}

// ---- block evaluation against one observation at a time ----------------------------------

// Random expressions over the numeric variables.
std::string randexp(std::mt19937& g, int depth) {
    static const char* leaves[] = {"x",     "f", "l",   "b",       "k",       "_n",
                                   "_N",    "1", "0",   "-3.5",    ".",       ".a",
                                   "1e300", "2", "0.1", "x[_n-1]", "f[_n+2]", "k[1]"};
    static const char* ops[] = {"+", "-", "*", "/", "^", "==", "!=", "<", ">=", "&", "|"};
    static const char* fn1[] = {"abs",  "log",   "exp", "sqrt",    "int",   "floor",    "ceil",
                                "sign", "float", "sin", "lngamma", "round", "invlogit", "missing"};
    std::uniform_int_distribution<int> pick(0, 9);
    if (depth <= 0 || pick(g) < 2) return leaves[g() % (sizeof leaves / sizeof *leaves)];
    int kind = pick(g);
    std::string a = randexp(g, depth - 1), b = randexp(g, depth - 1);
    switch (kind) {
    case 0: return "-(" + a + ")";
    case 1: return "!(" + a + ")";
    case 2: return std::string(fn1[g() % (sizeof fn1 / sizeof *fn1)]) + "(" + a + ")";
    case 3: return "mod(" + a + "," + b + ")";
    case 4: return "min(" + a + "," + b + ",2)";
    case 5: return "cond(" + a + "," + b + ",7)";
    case 6: return "sum(" + a + ")";
    default: return "(" + a + ")" + ops[g() % (sizeof ops / sizeof *ops)] + "(" + b + ")";
    }
}

TEST_F(Expr, BlocksGiveTheSameBitsAsSingleObservations) {
    const int n = 1000;
    data(n);
    std::mt19937 g(20261121);
    std::uniform_real_distribution<double> u(-50, 50);
    for (int i = 1; i <= n; i++) {
        double x = u(g);
        int r = static_cast<int>(g() % 20);
        if (r == 0) x = dot;
        if (r == 1) x = mkmissing(1 + g() % 26);
        if (r == 2) x = 0;
        store(1, i, x);
        store(2, i, r == 3 ? 1e30 : x); // floats round, and overflow to missing
        store(3, i, r == 4 ? mkmissing(3) : std::trunc(x * 1000));
        store(4, i, std::trunc(x));
        store(5, i, r == 5 ? dot : std::trunc(x * 100));
    }
    std::vector<double> one(n), blk(n);
    int checked = 0;
    for (int t = 0; t < 400; t++) {
        std::string e = randexp(g, 4);
        if (comp(e, 0)) continue; // a random text may exceed a limit
        int from = 1 + static_cast<int>(g() % 50), to = n - static_cast<int>(g() % 50);
        ranges(from, to, 1, n);
        for (int i = from; i <= to; i++) one[i - from] = xeq(&obj, i);
        xeqblock(&obj, from, to, blk.data());
        for (int i = from; i <= to; i++)
            ASSERT_TRUE(same(one[i - from], blk[i - from]))
                << e << " at " << i << ": " << one[i - from] << " vs " << blk[i - from];
        checked++;
    }
    EXPECT_GT(checked, 300);
    // and both against values worked out here from the stored cells: a sum is
    // missing when a term is, a comparison of a missing value counts it as
    // larger than any number, abs keeps missing
    struct Ref {
        const char* text;
        double (*f)(double x, double f, double l, double b);
    };
    static const Ref refs[] = {
        {"x + l",
         [](double x, double, double l, double) { return x >= dot || l >= dot ? dot : x + l; }},
        {"b * 2 - x",
         [](double x, double, double, double b) { return x >= dot ? dot : b * 2 - x; }},
        {"x > 10", [](double x, double, double, double) { return x > 10 ? 1.0 : 0.0; }},
        {"abs(b) + (f < .)",
         [](double, double f, double, double b) {
             return b >= dot ? dot : std::fabs(b) + (f < dot ? 1 : 0);
         }},
    };
    ranges(1, n, 1, n);
    for (const Ref& r : refs) {
        ASSERT_EQ(comp(r.text, 0), 0) << r.text;
        xeqblock(&obj, 1, n, blk.data());
        for (int i = 1; i <= n; i++) {
            double want =
                r.f(korvu_data(1, i), korvu_data(2, i), korvu_data(3, i), korvu_data(4, i));
            ASSERT_TRUE(same(xeq(&obj, i), want)) << r.text << " at " << i;
            ASSERT_TRUE(same(blk[i - 1], want)) << r.text << " at " << i;
        }
    }
    // string programs go one observation at a time in xeqblock: s is "s<i>",
    // so its length is 1 plus the digits of i
    ASSERT_EQ(comp("length(s) + x", 0), 0);
    xeqblock(&obj, 1, n, blk.data());
    for (int i = 1; i <= n; i++) {
        const double x = korvu_data(1, i);
        const double want = x >= dot ? dot : 1.0 + std::to_string(i).size() + x;
        ASSERT_TRUE(same(blk[i - 1], want)) << i << ": " << blk[i - 1];
    }
}

TEST_F(Expr, ReadsOtherObservations) {
    data(3);
    ASSERT_EQ(comp("x[_n-1] + f", 0), 0);
    EXPECT_TRUE(exp_reads_other_obs(&obj, 1));
    EXPECT_FALSE(exp_reads_other_obs(&obj, 2));
    ASSERT_EQ(comp("sum(x) + f", 0), 0);
    EXPECT_FALSE(exp_reads_other_obs(&obj, 0));
}

} // namespace

namespace {

// ---- the commands ---------------------------------------------------------------------

int run_cmd(int (*handler)(int), const std::string& rest, std::string* out) {
    snprintf(line, sizeof line, "%s", rest.c_str());
    settok(line);
    cmdinit();
    CapturedOutput cap;
    int rc = handler(0);
    *out = cap.take();
    return rc;
}

TEST_F(Expr, CountAndAssertOverData) {
    data(10);
    std::string out;
    ASSERT_EQ(run_cmd(countcmd, "if x > 7", &out), 0);
    EXPECT_EQ(out, "  3\n");
    ASSERT_EQ(run_cmd(countcmd, "if x > 2 in 1/5", &out), 0);
    EXPECT_EQ(out, "  3\n");
    store(1, 4, dota);
    ASSERT_EQ(run_cmd(countcmd, "if x > 7", &out), 0); // missing is above every number
    EXPECT_EQ(out, "  4\n");
    ASSERT_EQ(run_cmd(countcmd, "if .", &out), 0); // a missing condition is true
    EXPECT_EQ(out, "  10\n");
    ASSERT_EQ(run_cmd(countcmd, "if x y", &out), 198);

    ASSERT_EQ(run_cmd(assertcmd, "f < 100", &out), 0);
    EXPECT_EQ(out, "");
    ASSERT_EQ(run_cmd(assertcmd, "k != 3 & k != 5", &out), 9);
    EXPECT_EQ(out, "2 contradictions in 10 observations\nassertion is false\n");
    ASSERT_EQ(run_cmd(assertcmd, "k != 3 in 3/3", &out), 9);
    EXPECT_EQ(out, "1 contradiction in 1 observation\nassertion is false\n");
    ASSERT_EQ(run_cmd(assertcmd, "k != 3, rc0", &out), 0);
    ASSERT_EQ(run_cmd(assertcmd, "0 if k > 100", &out), 0);
    EXPECT_EQ(out, "(null assertion)\n");
    ASSERT_EQ(run_cmd(assertcmd, "0 if k > 100, null", &out), 8);
    // running sums see only the observations tested: 2, 2+4, 2+4+6 ...
    ASSERT_EQ(run_cmd(assertcmd, "sum(b) == b*(b+2)/4 if mod(b,2) == 0", &out), 0);
}

} // namespace
