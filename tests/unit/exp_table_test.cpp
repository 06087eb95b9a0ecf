// The opcode table against compiled programs, and block evaluation of values
// shared by a block (constants, _N) against worked values. Every expected
// value below is worked out by hand from the definitions of the functions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "capture.h"
#include "data/area/dataarea.h"
#include "data/area/storage.h"
#include "data/expr/exp_ops.h"
#include "data/expr/expr.h"
#include "data/select/generate.h"
#include "data/vars/varcmds.h"
#include "data/vars/vartab.h"
#include "dataarea_fixture.h"
#include "kernel/loop/limits.h"
#include "kernel/parse/cmdparse.h"
#include "kernel/parse/gettok.h"

using namespace korvu;

namespace {

const double dot = misval;

char line[4096];
ExpObj obj;

int comp(const std::string& text, int wanted = 3) {
    snprintf(line, sizeof line, "%s", text.c_str());
    settok(line);
    CapturedOutput quiet;
    return compexp(&obj, wanted, 0, 0);
}
bool same(double a, double b) {
    return dbits(a) == dbits(b);
}

// Walks a compiled program by the table: the lowest depths reached and the
// depths at the end, for numbers and strings.
struct Walk {
    int np = 0, sp = 0, minn = 0, mins = 0, words = 0;
    bool known = true;
};
Walk walk(const ExpObj& o) {
    Walk r;
    for (int w = 0; w <= o.code_end; w++) {
        int op = o.code[w];
        const OpInfo& d = opinfo(op);
        if (!d.name) r.known = false;
        int dn, ds, arg = d.operands ? o.code[w + 1] : 0;
        // what is taken first, then what is left
        int takes_n = d.npop + (d.vary == VNUMS ? arg : d.vary == VDATE ? (arg & 1) : 0);
        int takes_s = d.spop + (d.vary == VSTRS ? arg : 0);
        r.minn = std::min(r.minn, r.np - takes_n);
        r.mins = std::min(r.mins, r.sp - takes_s);
        op_effect(op, arg, &dn, &ds);
        r.np += dn;
        r.sp += ds;
        w += d.operands;
        r.words++;
    }
    return r;
}

class ExpTable : public ::testing::Test {
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
    // x double = i, g float = i / 4, s str8 "s<i>"
    void data(int n) {
        ASSERT_EQ(addvar("x", KV_DOUBLE), 0);
        ASSERT_EQ(addvar("g", KV_FLOAT), 0);
        ASSERT_EQ(addvar("s", 8), 0);
        while (maxobs < n) ASSERT_EQ(repartobs(n - maxobs), 0);
        nobs = n;
        for (int i = 1; i <= n; i++) {
            store(1, i, i);
            store(2, i, i / 4.0);
            sstorez(3, i, ("s" + std::to_string(i)).c_str());
        }
        nobs1 = 1, nobs2 = n, nobss1 = 1, nobss2 = n;
    }
};

// Each program leaves exactly its one result (a number in slot 1, or a
// string in the first frame), never takes from an empty stack, and has the
// value worked out by hand: a wrong stack effect or operand count in any row
// the program uses would show as a wrong end depth or a misread word.
TEST_F(ExpTable, StackEffectsLeaveOneResult) {
    data(3);
    struct Num {
        const char* text;
        double want;
    };
    static const Num nums[] = {
        {"1 + 2 * 3", 7},
        {"min(3, ., 1, 2)", 1},
        {"max(., 4, 2)", 4},
        {"round(2.5)", 3},
        {"round(7, 5)", 5},
        {"inlist(2, 1, 2, 3)", 1},
        {"inlist(5, 1, 2)", 0},
        {"inlist(\"b\", \"a\", \"b\")", 1},
        {"cond(1, 2, 3)", 2},
        {"cond(., 2, 3, 4)", 4},
        {"mod(-1, 3)", 2},
        {"clip(5, 1, 3)", 3},
        {"inrange(2, 1, 3) + twithin(1, 1, 3)", 1},
        {"mdy(1, 2, 1960)", 1},
        {"length(\"abc\") + strpos(\"abcd\", \"c\")", 6},
        {"real(\"2.5\") * 2", 5},
        {"\"a\" < \"b\"", 1},
        {"missing(., \"\", 1)", 1},
        {"wordcount(\"a bb c\")", 3},
        {"x[2] + _N + _n", 2 + 3 + 1},
        {"sum(x)", 1},
        {"length(s) + x", 3},
        {"length(s[3])", 2},
        {"regexm(\"abc\", \"b\")", 1},
        {"ttail(1e6, 0) * 2", 1},
    };
    for (const Num& c : nums) {
        ASSERT_EQ(comp(c.text, 0), 0) << c.text;
        Walk r = walk(obj);
        EXPECT_TRUE(r.known) << c.text;
        EXPECT_EQ(r.np, 1) << c.text;
        EXPECT_EQ(r.sp, 0) << c.text;
        EXPECT_GE(r.minn, 0) << c.text;
        EXPECT_GE(r.mins, 0) << c.text;
        EXPECT_TRUE(same(xeq(&obj, 1), c.want)) << c.text << " gives " << xeq(&obj, 1);
    }
    struct Str {
        const char* text;
        const char* want;
    };
    static const Str strs[] = {
        {"upper(\"a\") + \"b\"", "Ab"},
        {"lower(\"AbC\")", "abc"},
        {"trim(\"  a  \")", "a"},
        {"string(12)", "12"},
        {"substr(\"abcdef\", 2, 3)", "bcd"},
        {"word(\"a b c\", 2)", "b"},
        {"char(65) + char(66)", "AB"},
        {"cond(0, \"y\", \"n\")", "n"},
        {"subinstr(\"aaa\", \"a\", \"b\", 2)", "bba"},
        {"s + s[2]", "s1s2"},
        {"reverse(\"abc\")", "cba"},
    };
    for (const Str& c : strs) {
        ASSERT_EQ(comp(c.text, 1), 0) << c.text;
        Walk r = walk(obj);
        EXPECT_TRUE(r.known) << c.text;
        EXPECT_EQ(r.np, 0) << c.text;
        EXPECT_EQ(r.sp, 1) << c.text;
        EXPECT_GE(r.minn, 0) << c.text;
        EXPECT_GE(r.mins, 0) << c.text;
        char buf[EXP_STRMAX + 1];
        EXPECT_STREQ(sxeq(&obj, 1, buf), c.want) << c.text;
    }
}

// The table's rows: each word once, helpers shaped as their kind says, and
// the operand counts the compiler relies on.
TEST_F(ExpTable, RowsAgreeWithTheirKinds) {
    int rows = 0;
    for (int op = 0; op < OP_WORDS; op++) {
        const OpInfo& d = optab[op];
        if (!d.name) continue;
        rows++;
        EXPECT_TRUE(d.what && d.what[0]) << d.name;
        if (d.kind != HAND) {
            EXPECT_EQ(d.npop, op_arity(d.kind)) << d.name;
            EXPECT_TRUE(d.block) << d.name; // a pure helper always runs by blocks
        }
        // nothing that touches strings runs by blocks
        if (d.spop || d.spush) {
            EXPECT_FALSE(d.block) << d.name;
        }
    }
    EXPECT_GT(rows, 150);
    EXPECT_EQ(exp_operands(OP_CONST), 1);
    EXPECT_EQ(exp_operands(OP_ADD), 0);
    EXPECT_EQ(exp_operands(OP_SDATE), 1);
    EXPECT_EQ(exp_operands(0), 0);   // no opcode: nothing follows
    EXPECT_EQ(exp_operands(300), 0); // nor above the last
    EXPECT_EQ(exp_operands(-5), 0);
    int dn, ds;
    op_effect(OP_MIN, 4, &dn, &ds); // four numbers in, one out
    EXPECT_EQ(dn, -3);
    EXPECT_EQ(ds, 0);
    op_effect(OP_SDATE, 5, &dn, &ds); // two strings and a top year in, a number out
    EXPECT_EQ(dn, 0);
    EXPECT_EQ(ds, -2);
    op_effect(OP_PLURAL, 1, &dn, &ds); // a number and two strings in, a string out
    EXPECT_EQ(dn, -1);
    EXPECT_EQ(ds, -1);
}

// Blocks with a constant on either side of an operator, both sides constant,
// _N and _rc: each observation's value worked out from x = i, g = i / 4.
TEST_F(ExpTable, BlockValuesSharedByTheBlock) {
    const int n = 700; // more than two blocks, the last one short
    data(n);
    store(1, 5, dot);
    store(1, 6, mkmissing(1)); // .a
    struct Ref {
        const char* text;
        double (*f)(double x, double g, int i);
    };
    static const Ref refs[] = {
        {"x * 2", [](double x, double, int) { return x >= dot ? dot : x * 2; }},
        {"2 * x", [](double x, double, int) { return x >= dot ? dot : 2 * x; }},
        {"3 - x", [](double x, double, int) { return x >= dot ? dot : 3 - x; }},
        {"x / 0", [](double, double, int) { return dot; }},
        {"6 / 2 + g", [](double, double g, int) { return 3 + g; }},
        {"1 / 0 + g", [](double, double, int) { return dot; }},
        {"2 ^ 10", [](double, double, int) { return 1024.0; }},
        {"x > 350", [](double x, double, int) { return x > 350 ? 1.0 : 0.0; }},
        {"350 < x", [](double x, double, int) { return x > 350 ? 1.0 : 0.0; }},
        {"x == . | 4 == x", [](double x, double, int i) { return i == 5 || i == 4 ? 1.0 : 0.0; }},
        {"_N - g * 4", [](double, double g, int) { return 700 - g * 4; }},
        {"-x + _n", [](double x, double, int i) { return x >= dot ? dot : -x + i; }},
        {"log(8) + x", [](double x, double, int) { return x >= dot ? dot : std::log(8.0) + x; }},
        {"exp(1000) + x", [](double, double, int) { return dot; }},
        {"min(x, 3, g)",
         [](double x, double g, int) { return std::min(x < dot ? x : 1e300, std::min(3.0, g)); }},
        {"round(g, 2)", [](double, double g, int) { return std::round(g / 2) * 2; }},
        {"cond(x > 10, 1, 2)", [](double x, double, int) { return x > 10 ? 1.0 : 2.0; }},
    };
    std::vector<double> blk(n);
    for (const Ref& r : refs) {
        ASSERT_EQ(comp(r.text, 0), 0) << r.text;
        xeqblock(&obj, 1, n, blk.data());
        for (int i = 1; i <= n; i++) {
            double x = korvu_data(1, i), g = korvu_data(2, i);
            double want = r.f(x, g, i);
            ASSERT_TRUE(same(blk[i - 1], want)) << r.text << " at " << i << ": " << blk[i - 1];
            ASSERT_TRUE(same(xeq(&obj, i), want)) << r.text << " at " << i;
        }
    }
    // old missing-value rules in a block: every missing value equals `.`
    mvmodern = 0;
    ASSERT_EQ(comp("x == .", 0), 0);
    xeqblock(&obj, 1, n, blk.data());
    for (int i = 1; i <= n; i++) ASSERT_EQ(blk[i - 1], i == 5 || i == 6 ? 1 : 0) << i;
    mvmodern = 1;
    xeqblock(&obj, 1, n, blk.data());
    for (int i = 1; i <= n; i++) ASSERT_EQ(blk[i - 1], i == 5 ? 1 : 0) << i;
}

int run_cmd(int (*handler)(int), const std::string& rest, std::string* out) {
    snprintf(line, sizeof line, "%s", rest.c_str());
    settok(line);
    cmdinit();
    CapturedOutput cap;
    int rc = handler(0);
    *out = cap.take();
    return rc;
}

// generate into each numeric type over part of the data: the cells outside
// the range and those not selected are missing, the others hold the value
// in the type's encoding, and the count says how many are missing.
TEST_F(ExpTable, GenerateFillsOutsideTheRange) {
    data(600);
    std::string out;
    struct Case {
        const char* cmd;
        int type;
        const char* msg;
    };
    static const Case cases[] = {
        {"double y = x / 3 in 11/590", KV_DOUBLE, "(20 missing values generated)\n"},
        {"float y = x / 3 in 11/590", KV_FLOAT, "(20 missing values generated)\n"},
        {"long y = x * 1000 in 11/590", KV_LONG, "(20 missing values generated)\n"},
        {"int y = x in 11/590", KV_INT, "(20 missing values generated)\n"},
        {"byte y = x - 500 in 11/590", KV_BYTE, "(20 missing values generated)\n"},
        {"double y = x / 3 if x > 100 in 11/590", KV_DOUBLE, "(110 missing values generated)\n"},
    };
    for (const Case& c : cases) {
        ASSERT_EQ(run_cmd(gen, c.cmd, &out), 0) << c.cmd;
        EXPECT_EQ(out, c.msg) << c.cmd;
        int v = sysfindvar("y");
        ASSERT_GT(v, 0);
        EXPECT_EQ(typlist[v - 1], c.type);
        bool ifx = std::strstr(c.cmd, "if") != nullptr;
        for (int i = 1; i <= 600; i++) {
            double got = korvu_data(v, i);
            bool in = i >= 11 && i <= 590 && (!ifx || i > 100);
            double want;
            if (!in) {
                want = dot;
            } else if (c.type == KV_FLOAT) {
                want = static_cast<double>(static_cast<float>(i / 3.0));
            } else if (c.type == KV_DOUBLE) {
                want = i / 3.0;
            } else if (c.type == KV_LONG) {
                want = i * 1000.0;
            } else if (c.type == KV_INT) {
                want = i;
            } else {
                // a byte holds -127..100: below that the cell is missing,
                // though the result itself was not
                want = i - 500 >= -127 ? i - 500.0 : dot;
            }
            ASSERT_TRUE(same(got, want)) << c.cmd << " at " << i << ": " << got;
        }
        ASSERT_EQ(run_cmd(drop, "y", &out), 0);
    }
}

} // namespace
