// The compiler of the matrix language against code words worked out by hand
// from the emitters' rules (operands first, then the operator; the layout of
// a function; the literal blocks) and against its messages.
#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "capture.h"
#include "kernel/dict/dict.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/lumo.h"

using namespace korvu;

namespace {

std::deque<std::string> more_lines;
int test_lines(std::string& out) {
    if (more_lines.empty()) return 1;
    out = more_lines.front();
    more_lines.pop_front();
    return 0;
}

struct LumoCC : ::testing::Test {
    CapturedOutput out;
    void SetUp() override {
        dminit();
        m_strict = 0;
        m_optimize = 0;
        m_lnum = 0;
        m_dbugflg = 0;
        m_linesource = test_lines;
        m_mayreadcons = 1;
        m_abort_on_end = 0;
        lumo_cmdtype = 1;
        more_lines.clear();
        m_dropallfcns();
    }
    void TearDown() override {
        m_linesource = nullptr;
        m_optimize = 1;
        m_dropallfcns();
    }
    // Compiles and returns the words, or an empty vector on failure.
    std::vector<uint32_t> cc(const char* text, std::vector<std::string> lines = {}) {
        more_lines.assign(lines.begin(), lines.end());
        std::string rest;
        int rc = cc_compile(text, &rest);
        if (rc) return {};
        const LumoFcn* f = cc_lastfcn();
        if (!f) return {};
        return std::vector<uint32_t>(f->code, f->code + f->nwords);
    }
    // Compiles what must fail; returns the messages.
    std::string fails(const char* text, std::vector<std::string> lines = {}) {
        more_lines.assign(lines.begin(), lines.end());
        out.take();
        std::string rest;
        int rc = cc_compile(text, &rest);
        EXPECT_EQ(rc, 3000) << text;
        return out.take();
    }
};

uint32_t w4(const char* s) {
    uint32_t w = 0;
    memcpy(&w, s, strlen(s) < 4 ? strlen(s) + 1 : 4);
    return w;
}
void pushd(std::vector<uint32_t>& v, double x) {
    uint32_t w[2];
    memcpy(w, &x, 8);
    v.push_back(w[0]);
    v.push_back(w[1]);
}

// A small function with a declared local and a return, before and after
// optimizing.
TEST_F(LumoCC, WorkedFunctionLaysOutAsTheEmittersSay) {
    const char* src = "real scalar f(real scalar x) { real scalar y; y = x + 1; return(y) }";
    std::vector<uint32_t> want = {920, 920, 1,  24, 1,  8, 1,   20, 7,       0,  80, 32, 5,
                                  1,   2,   7,  1,  1,  6, 42,  12, 75,      3,  30, 4,  1,
                                  7,   0,   11, 12, 75, 2, 105, 1,  w4("y"), 12, 75, 1,  4};
    EXPECT_EQ(cc(src), want);
    m_dropallfcns();
    // sweep 1 joins store, pop, load; the return threads to B; the jumps to
    // the next word and the code behind unconditional jumps go
    m_optimize = 1;
    std::vector<uint32_t> opt = {920, 920, 1, 13, 7,  0,  80, 32,  5, 1,       12, 75, 3, 4,
                                 1,   7,   0, 11, 12, 75, 2,  105, 1, w4("y"), 12, 75, 1, 4};
    EXPECT_EQ(cc(src), opt);
}

TEST_F(LumoCC, PrecedenceAndGroupingOfExpressions) {
    // -2^2: the power splits first, the minus folds into the literal
    std::vector<uint32_t> v = {920, 920, 1, 12, 31, 16, 31, 18, 23, 41, 2, 30, 1, 4, 38, 2};
    pushd(v, -2.0);
    pushd(v, 2.0);
    EXPECT_EQ(cc("-2^2"), v);
    // a*b/c: "*" is searched before "/", so the division is the right operand
    EXPECT_EQ(cc("a*b/c"),
              (std::vector<uint32_t>{920, 920, 1,       15, 7,  0,  7,       1, 7,       2,
                                     73,  21,  41,      2,  30, 34, 1,       1, w4("a"), 34,
                                     1,   1,   w4("b"), 34, 1,  1,  w4("c"), 1, 4}));
    // a = b = 1: inner store, outer store, one pop, no listing
    EXPECT_EQ(cc("a = b = 1"),
              (std::vector<uint32_t>{920, 920, 1, 11,      80, 5, 0, 5,       1, 2, 30,
                                     34,  1,   1, w4("b"), 34, 1, 1, w4("a"), 1, 4}));
    // x++ + x++: old values, the increments after the whole expression
    EXPECT_EQ(cc("x++ + x++"),
              (std::vector<uint32_t>{920, 920, 1,  16, 7,  0,  7, 0, 32,      8, 0,
                                     8,   0,   41, 2,  30, 34, 1, 1, w4("x"), 1, 4}));
    // a :+ b': the transpose binds to b
    EXPECT_EQ(cc("a :+ b'"),
              (std::vector<uint32_t>{920, 920, 1, 13, 7,       0,  7, 1, 72,      70, 41, 2,
                                     30,  34,  1, 1,  w4("a"), 34, 1, 1, w4("b"), 1,  4}));
    // p->x[1]: dereference, member, then the subscript
    ASSERT_EQ(cc("struct S {", {"real vector x", "}"}).size(), 0u);
    EXPECT_EQ(cc("function g(pointer(struct S scalar) scalar p) { return(p->x[1]) }"),
              (std::vector<uint32_t>{920, 920, 1,  20, 1,  8, 1, 18, 7, 0,  112, 140, 1, 80, 93,
                                     1,   6,   42, 3,  30, 4, 1, 7,  0, 11, 12,  2,   1, 4}));
}

TEST_F(LumoCC, StatementsJumpWhereTheirLayoutsSay) {
    // while: Ltest: cond; 28 Lend; stmt; 1 Ltest; Lend
    EXPECT_EQ(cc("while (k) k = 0"),
              (std::vector<uint32_t>{920, 920, 1, 15, 7,  0, 28, 14,      79, 5, 0,
                                     2,   1,   4, 30, 34, 1, 1,  w4("k"), 1,  4}));
    // if/else: cond; 28 Lelse; stmt; 1 Lend; Lelse: stmt; Lend
    EXPECT_EQ(cc("if (k) k = 0; else k = 1"),
              (std::vector<uint32_t>{920, 920, 1, 19, 7, 0,  28, 14, 79, 5,       0, 2, 1,
                                     18,  80,  5, 0,  2, 30, 34, 1,  1,  w4("k"), 1, 4}));
    // do: Ltop: stmt; Lcont: cond; 28 Lend; 1 Ltop; Lend
    EXPECT_EQ(cc("do k = 0 while (k)"),
              (std::vector<uint32_t>{920, 920, 1, 15, 79, 5, 0, 2,       7, 0, 28,
                                     14,  1,   4, 30, 34, 1, 1, w4("k"), 1, 4}));
    // for with empty first and third parts: Ltest: e2; 28 Lend; 1 Lbody;
    // Lcont: 1 Ltest; Lbody: the break, 1 Lend; 1 Lcont; Lend
    EXPECT_EQ(cc("for (; k; ) break"),
              (std::vector<uint32_t>{920, 920, 1, 17, 7,  0,  28, 16, 1,       12, 1, 4,
                                     1,   16,  1, 10, 30, 34, 1,  1,  w4("k"), 1,  4}));
}

TEST_F(LumoCC, LiteralsShareTheirPoolSlots) {
    // 0, 1 and missing have their own instructions; 2.5 is pooled once; the
    // joins associate to the left; the block header stands at an even word
    std::vector<uint32_t> v = {920, 920, 1,  18, 79, 80, 58, 81, 58, 31, 22,
                               58,  31,  22, 58, 41, 2,  30, 1,  4,  38, 1};
    pushd(v, 2.5);
    EXPECT_EQ(cc("0, 1, ., 2.5, 2.5"), v);
    // an odd word before the block gets one filler
    std::vector<uint32_t> o = {920, 920, 1, 9, 31, 14, 41, 2, 30, 1, 4, 82, 38, 1};
    pushd(o, -7.0);
    EXPECT_EQ(cc("-7"), o);
    // strings: word count, byte count, the bytes
    EXPECT_EQ(cc("\"ab\" + \"ab\""), (std::vector<uint32_t>{920, 920, 1, 12, 40, 16, 40, 16, 32, 41,
                                                            2, 30, 1, 4, 39, 1, 2, 2, w4("ab")}));
}

} // namespace

namespace {

struct WrongProgram {
    const char* src;
    std::vector<std::string> lines;
    const char* message;
};

TEST_F(LumoCC, WrongProgramsGetTheirMessages) {
    const WrongProgram cases[] = {
        {"real scalar f() { string scalar s; s = 1 }",
         {},
         "type mismatch:  = (assignment):  string scalar vs. real scalar\n"},
        {"rows(1, 2)", {}, "wrong number of arguments for rows()\n"},
        {"x = minindex(1)", {}, "wrong number of arguments for minindex()\n"},
        {"break", {}, "misplaced break or continue\n"},
        {"function f() { continue }", {}, "misplaced break or continue\n"},
        {"x = \"abc", {}, "unbalanced quotes\n"},
        {"real scalar f(x) { real scalar x }", {}, "symbol x multiply defined\n"},
        {"x = 1 +", {}, "nothing found where subexp expected\n"},
        {"for (;;) x", {}, "nothing found where subexp expected\n"},
        {"x = f(1,,2)", {}, "nothing found where subexp expected\n"},
        {"pragma foo x", {}, "invalid pragma\n"},
        {"version 99", {}, "version number invalid\n"},
        {"version 0.5", {}, "version number invalid\n"},
        {"function f(x | y()) {}", {}, "function arguments cannot be optional\n"},
        {"function f(x | y | z) {}", {}, "illegal arglist\n"},
        {"real scalar f( {", {}, "illegal arglist\n"},
        {"function rows() {}", {}, "rows() is built-in\n"},
        {"x = &rows()", {}, "rows() built-in, may not evaluate address\n"},
        {"x = &f(1)", {}, "invalid &fcn()\n"},
        {"1 = x", {}, "invalid lval\n"},
        {"(1)[2] = x", {}, "invalid subscripted lval\n"},
        {"1++", {}, "invalid use of ++ or --\n"},
        {"x++ + x++ + x++ + x++ + x++ + x++ + x++ + x++ + x++",
         {},
         "too many postponed ++ or --\n"},
        {"x = y[]", {}, "invalid []\n"},
        {"x = y[1,2,3]", {}, "invalid [ ] list subscript\n"},
        {"x = y[||]", {}, "invalid [||]\n"},
        {"x = 1)", {}, "too many ')'\n"},
        {"x = (1]", {}, "']' found where ')' expected\n"},
        {"goto nowhere", {}, "nowhere undefined tag\n"},
        {"goto longtagname", {}, "longtagname:  tag name too long\n"},
        {"x = -\"a\"", {}, "type mismatch:  - (negation):  string scalar\n"},
        {"function f() { string scalar s; s = !s }",
         {},
         "type mismatch:  ! (not):  string scalar\n"},
        {"function f() { real scalar r; r = *r }",
         {},
         "type mismatch:  * (deref.):  real scalar\n"},
        {"function f() { string scalar s; s++ }",
         {},
         "type mismatch:  ++ (increment):  string scalar\n"},
        {"function f() { string scalar s; --s }",
         {},
         "type mismatch:  -- (decrement):  string scalar\n"},
        {"\"a\" + 1", {}, "type mismatch:  + (addition):  string scalar vs. real scalar\n"},
        {"\"a\" - \"b\"",
         {},
         "type mismatch:  - (subtraction):  string scalar vs. string scalar\n"},
        {"x = \"a\" < 1", {}, "type mismatch:  < (less than):  string scalar vs. real scalar\n"},
        {"x = 1, \"a\"", {}, "type mismatch:  , (column join):  real scalar vs. string scalar\n"},
        {"x = \"a\"[\"b\"]", {}, "type mismatch:  [] (subscripts):  string scalar\n"},
        {"function f(real scalar r) { return(r->a) }",
         {},
         "type mismatch:  -> (pointing to):  real scalar\n"},
        {"x = y.z", {}, "invalid structure reference\n"},
        {"x = 1 ? 2", {}, "nothing found where ':' expected\n"},
        {"real scalar f() { real scalar }", {}, "name(s) required\n"},
        {"x = if", {}, "'if' found where subexp expected\n"},
        {"x = 1 }", {}, "'}' found where ';' expected\n"},
        {"function f() {", {"x = 1", "end"}, "unexpected end of line\n"},
        {"function 3() {}", {}, "number found where name expected\n"},
        {"function f() { lbl: x = 1; lbl: x = 2 }", {}, "symbol lbl multiply defined\n"},
        {"function f() { g(); x = g }", {}, "object not function or matrix\n"},
        {"function f() { x = 1; x() }", {}, "symbol x multiply defined\n"},
    };
    for (const WrongProgram& c : cases) {
        m_abort_on_end = 1;
        EXPECT_EQ(fails(c.src, c.lines), c.message) << c.src;
        EXPECT_EQ(dmcount(DM_LUMOWORK), 0) << c.src;
        EXPECT_EQ(m_findfcn("f"), nullptr) << c.src;
    }
}

TEST_F(LumoCC, LimitsOfTheTables) {
    // 100 distinct doubles fit; the 101st is refused (0 and 1 are not pooled)
    std::string s = "x = 2";
    for (int i = 3; i <= 101; i++) s += "," + std::to_string(i);
    EXPECT_FALSE(cc(s.c_str()).empty());
    s += ",102";
    EXPECT_EQ(fails(s.c_str()), "no room to add more double literals\n");
    // repeats do not count
    std::string r = "x = 2";
    for (int i = 0; i < 300; i++) r += ",2";
    EXPECT_FALSE(cc(r.c_str()).empty());
    // 200 symbols fit, the 201st does not
    std::string v = "x1";
    for (int i = 2; i <= 200; i++) v += ",x" + std::to_string(i);
    EXPECT_FALSE(cc(v.c_str()).empty());
    v += ",x201";
    EXPECT_EQ(fails(v.c_str()), "no room to add more symbols\n");
    // 500 strings fit, the 501st does not
    std::string t = "x = \"s1\"";
    for (int i = 2; i <= 500; i++) t += ",\"s" + std::to_string(i) + "\"";
    EXPECT_FALSE(cc(t.c_str()).empty());
    t += ",\"s501\"";
    EXPECT_EQ(fails(t.c_str()), "too many string literals\n");
}

TEST_F(LumoCC, StrictWantsEveryVariableDeclared) {
    m_strict = 1;
    EXPECT_EQ(fails("function f() { x = 1; return(y) }"),
              "variable x undeclared\nvariable y undeclared\n");
    m_strict = 0;
    out.take();
    EXPECT_FALSE(cc("function f() { x = 1; return(x) }").empty());
}

TEST_F(LumoCC, StatementOfTheColonFormMayNotReadOn) {
    lumo_cmdtype = 3;
    m_mayreadcons = 0;
    EXPECT_EQ(fails("if (x)"), "<istmt> incomplete\n");
    EXPECT_EQ(fails("x = (1"), "<istmt> incomplete\n");
    EXPECT_EQ(fails("/* open"), "<istmt> incomplete\n");
    // the first form reads the lines it needs, comments across lines too
    lumo_cmdtype = 1;
    m_mayreadcons = 1;
    EXPECT_EQ(cc("if (x) /* a comment", {"over lines */ x = 1"}),
              (std::vector<uint32_t>{920, 920, 1, 13, 7, 0, 28, 12, 80, 5, 0, 2, 30, 34, 1, 1,
                                     w4("x"), 1, 4}));
    // with no more input the source has run out
    more_lines.clear();
    out.take();
    EXPECT_EQ(cc_compile("x = (1", nullptr), 612);
    EXPECT_EQ(out.take(), "unexpected end of file\n");
}

TEST_F(LumoCC, NotesOnUnusedAndUnsetNames) {
    out.take();
    EXPECT_FALSE(cc("function f(a, b) { real scalar x, y, z, u; pragma unused z; pragma unset u; "
                    "x = 1; return(y + u + b) }")
                     .empty());
    EXPECT_EQ(out.take(), "note: argument a unused\n"
                          "note: variable x set but not used\n"
                          "note: variable y may be used before set\n");
}

TEST_F(LumoCC, FunctionsAreKeptByNameAndNotRedefined) {
    EXPECT_FALSE(cc("function f() { return(g(1)) }").empty()); // g is bound late
    EXPECT_NE(m_findfcn("f"), nullptr);
    EXPECT_EQ(fails("function f() {}"), "f() already exists\n");
    EXPECT_EQ(m_dropfcn("f"), 0);
    EXPECT_EQ(m_findfcn("f"), nullptr);
    EXPECT_FALSE(cc("function f() {}").empty());
    // a function in use (a count of users above 0) is marked and dropped later
    LumoFcn* f = m_findfcn("f");
    f->count = 1;
    EXPECT_EQ(m_dropfcn("f"), 0);
    EXPECT_NE(m_findfcn("f"), nullptr);
    f->count = 0;
    m_dropoldfcns();
    EXPECT_EQ(m_findfcn("f"), nullptr);
    // the immediate statement is replaced each time
    EXPECT_FALSE(cc("x = 1").empty());
    EXPECT_FALSE(cc("x = 2").empty());
    EXPECT_EQ(dmcount(DM_LUMOFCN), 1);
}

TEST_F(LumoCC, OptionalArgumentsAndLocalsByType) {
    // 35 min max, the optional slot with its position and name, the checks
    EXPECT_EQ(
        cc("void f(string scalar s | real rowvector r) { }"),
        (std::vector<uint32_t>{920, 920,     1, 12, 1,  8,  1,  9, 42, 90, 3,  30, 35, 1, 2, 125, 2,
                               1,   w4("r"), 7, 0,  11, 12, 76, 2, 7,  1,  11, 26, 75, 2, 1, 4}));
}

} // namespace

namespace {

TEST_F(LumoCC, LookAheadDoesNotReadLines) {
    // the label test looks one token ahead; an open comment there is the end
    // of the line for the look ahead, and the statement reads on
    EXPECT_EQ(cc("x /* open", {"*/ = 1"}),
              (std::vector<uint32_t>{920, 920, 1, 9, 80, 5, 0, 2, 30, 34, 1, 1, w4("x"), 1, 4}));
    EXPECT_TRUE(more_lines.empty());
}

} // namespace

namespace {

TEST_F(LumoCC, LimitsOfExpressionsAndBranches) {
    // "x = 1" and 998 times "+1" are 1999 tokens; one more "+1" makes 2001
    std::string e = "x = 1";
    for (int i = 0; i < 998; i++) e += "+1";
    EXPECT_FALSE(cc(e.c_str()).empty());
    e += "+1";
    EXPECT_EQ(fails(e.c_str()), "too many tokens\n");
    // 100 open brackets at once are allowed, 101 are not
    const std::string d100 = "x = " + std::string(100, '(') + "1" + std::string(100, ')');
    EXPECT_FALSE(cc(d100.c_str()).empty());
    const std::string d101 = "x = " + std::string(101, '(') + "1" + std::string(101, ')');
    EXPECT_EQ(fails(d101.c_str()), "too many '(', '[', or '['\n");
    // a function has two tags of its own and each if one more: 498 ifs fit
    // in the 500 entries, 499 do not
    std::string f = "function f() {";
    for (int i = 0; i < 498; i++) f += " if (x) y = 1;";
    EXPECT_FALSE(cc((f + " }").c_str()).empty());
    m_dropallfcns();
    EXPECT_EQ(fails((f + " if (x) y = 1; }").c_str()), "too many branch points\n");
    // more than 200 arguments in one call
    std::string call = "x = g(1";
    for (int i = 0; i < 201; i++) call += ",1";
    EXPECT_EQ(fails((call + ")").c_str()), "too many list elements\n");
}

} // namespace

namespace {

TEST_F(LumoCC, OptimizerStoresThenPops) {
    m_optimize = 1;
    // a[2] = 3: 94 then 2 become 96; the block needs one filler word
    std::vector<uint32_t> v = {920, 920, 1, 11, 31,      20, 31, 22, 96, 0,
                               30,  34,  1, 1,  w4("a"), 1,  4,  82, 38, 2};
    pushd(v, 3.0);
    pushd(v, 2.0);
    EXPECT_EQ(cc("a[2] = 3"), v);
    // a[1,2] = 0: 92 then 2 become 95
    std::vector<uint32_t> m = {920, 920, 1, 11, 79,      80, 31, 20, 95, 0,
                               30,  34,  1, 1,  w4("a"), 1,  4,  82, 38, 1};
    pushd(m, 2.0);
    EXPECT_EQ(cc("a[1,2] = 0"), m);
    // a[|1\1|] = 0: 24 then 2 become 44
    EXPECT_EQ(cc("a[|1\\1|] = 0"), (std::vector<uint32_t>{920, 920, 1, 11, 79, 80, 80, 74, 44, 0,
                                                          30, 34, 1, 1, w4("a"), 1, 4}));
}

TEST_F(LumoCC, LineNumbersTurnTheOptimizerOff) {
    m_optimize = 1;
    m_lnum = 1;
    EXPECT_EQ(cc("x = 1"), (std::vector<uint32_t>{920, 920, 1, 11, 89, 1, 80, 5, 0, 2, 30, 34, 1, 1,
                                                  w4("x"), 1, 4}));
    m_lnum = 0;
}

} // namespace
