// The object store's counts: headers and cells return to their pools, string
// cells are shared by count, a pointer keeps its target alive, and a run of
// compiled statements releases every object it made. Values are worked by
// hand.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "capture.h"
#include "data/area/missing.h"
#include "kernel/dict/dict.h"
#include "kernel/loop/brk.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/lumo.h"
#include "lumo/objects/mobj.h"
#include "lumo/vm/vm.h"

using namespace korvu;

namespace {

struct LumoStore : ::testing::Test {
    CapturedOutput out;
    void SetUp() override {
        dminit();
        mo_init();
        mo_counts = MoCounts{};
        m_curdepth = 1;
        m_linesource = nullptr;
        m_mayreadcons = 0;
        m_optimize = 1;
        m_dropallfcns();
    }
    void TearDown() override {
        lumo_clearmats();
        m_dropallfcns();
        mo_reinit();
        m_curdepth = 0;
    }
    // Compiles and runs one statement; returns the code.
    int run(const char* text) {
        std::string rest;
        if (int rc = cc_compile(text, &rest)) return rc;
        const LumoFcn* f = cc_lastfcn();
        if (!f || strcmp(dmname(f), mwrd_istmt)) return 0;
        m_curdepth = 0;
        return ixeq(const_cast<LumoFcn*>(f));
    }
    double real0(const char* name) {
        MObj* o = findlvl0mat(name);
        EXPECT_NE(o, nullptr) << name;
        if (!o) return -1;
        EXPECT_EQ(o->eltype, MT_REAL);
        return m_rel(o)[0];
    }
};

TEST_F(LumoStore, HeadersAndCellsComeBackToTheirPools) {
    MObj* a = m_mkmat("", MT_REAL, 1, 1); // 8 bytes: a cell
    MObj* b = m_mkmat("", MT_REAL, 2, 3); // 48 bytes
    MObj* z = m_mkmat("", MT_REAL, 0, 0); // a 0 x 0 still owns 8 bytes
    ASSERT_TRUE(a && b && z);
    EXPECT_EQ(z->size, 8);
    EXPECT_EQ(a->count, 0); // a temporary has no reference until pushed
    EXPECT_EQ(mo_counts.live, 3);
    mo_hold(a);
    mo_release(a); // back to 0: released
    mo_freemat(b);
    mo_freemat(z);
    EXPECT_EQ(mo_counts.live, 0);
    EXPECT_EQ(mo_counts.pooled, 3);
    EXPECT_EQ(mo_counts.cells, 2); // the scalar's and the empty matrix's
    // the next scalar takes a pooled header and a free cell: no new item
    const int64_t made = mo_counts.allocated;
    MObj* c = m_mktsmatsto(2.5);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(mo_counts.allocated, made);
    EXPECT_EQ(mo_counts.cells, 1);
    EXPECT_EQ(m_rel(c)[0], 2.5);
    mo_freemat(c);
    int cap, cells, hcap, hdrs;
    mo_rpt(&cap, &cells, &hcap, &hdrs);
    EXPECT_EQ(cap, 250);
    EXPECT_EQ(hcap, 500);
    EXPECT_EQ(cells, 2);
    EXPECT_EQ(hdrs, 3);
}

TEST_F(LumoStore, StringCellsAreSharedByCount) {
    MObj* s = m_mkmat("", MT_STRING, 1, 2);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(m_sel(s)[0]->len, 0); // starts empty
    m_sel(s)[0] = sel_make("abc", 3);
    m_sel(s)[1] = sel_make("de", 2);
    EXPECT_EQ(mo_counts.scells, 2);
    MObj* d = m_dupmat(s); // copies share the cells
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(m_sel(d)[0], m_sel(s)[0]);
    EXPECT_EQ(m_sel(s)[0]->count, 2);
    EXPECT_EQ(m_objsize(s), 16 + 3 + 2);
    mo_freemat(s);
    EXPECT_EQ(mo_counts.scells, 2);
    EXPECT_STREQ(m_sel(d)[0]->s, "abc");
    mo_freemat(d);
    EXPECT_EQ(mo_counts.scells, 0);
}

TEST_F(LumoStore, PointerKeepsTargetAliveAndSwapTakesTheViewKind) {
    MObj* t = m_mkmat("", MT_REAL, 1, 1);
    MObj* p = m_mkmat("", MT_POINTER, 1, 1);
    ASSERT_TRUE(t && p);
    mo_hold(t); // the frame's reference
    mo_hold(t); // the pointer's
    m_pel(p)[0] = t;
    mo_release(t); // the frame ends
    EXPECT_EQ(t->live, 1);
    mo_freemat(p); // the pointer goes: so does its target
    EXPECT_EQ(mo_counts.live, 0);
    MObj* a = m_mkmat("", MT_REAL, 2, 2);
    MObj* v = m_mkmat("", MT_REAL, 1, 1);
    v->view = 2;
    m_swapmat(a, v);
    EXPECT_EQ(a->view, 2);
    EXPECT_EQ(v->view, 0);
    EXPECT_EQ(v->rows, 2);
    a->view = 0;
    mo_freemat(a);
    mo_freemat(v);
}

TEST_F(LumoStore, AssignmentStealsOnlyFromTemporaries) {
    MObj* t = m_mkmat("x", MT_REAL, 1, 1);
    MObj* s = m_mkmat("", MT_REAL, 1, 3);
    ASSERT_TRUE(t && s);
    mo_hold(t);
    mo_hold(s); // on the stack once: stolen
    void* data = s->data;
    ASSERT_EQ(cpymat(t, s, true), 0);
    EXPECT_EQ(t->data, data);
    EXPECT_EQ(t->cols, 3);
    mo_hold(s); // now referenced twice: copied
    m_rel(t)[0] = 7;
    ASSERT_EQ(cpymat(s, t, true), 0);
    EXPECT_NE(s->data, t->data);
    EXPECT_EQ(m_rel(s)[0], 7);
    mo_release(s);
    mo_release(s);
    mo_release(t);
    EXPECT_EQ(mo_counts.live, 0);
}

// Statements: values worked by hand; after each run only the named
// matrices of the interactive level stay alive.
TEST_F(LumoStore, StatementsReleaseWhatTheyMake) {
    ASSERT_EQ(run("a = (1,2,3)"), 0);
    ASSERT_EQ(run("b = a"), 0);
    ASSERT_EQ(run("b[2] = 9"), 0);
    EXPECT_EQ(m_rel(findlvl0mat("a"))[1], 2);
    EXPECT_EQ(m_rel(findlvl0mat("b"))[1], 9);
    ASSERT_EQ(run("function f(x) { real scalar y; y = x * 2; return(&y) }"), 0);
    ASSERT_EQ(run("p = f(21)"), 0);
    ASSERT_EQ(run("q = *p"), 0);
    EXPECT_EQ(real0("q"), 42);
    ASSERT_EQ(run("s = \"ab\" + \"c\""), 0);
    ASSERT_EQ(run("m = (1,2\\3,4) * (5\\6)"), 0); // 1*5+2*6 = 17, 3*5+4*6 = 39
    MObj* m = findlvl0mat("m");
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(m->rows, 2);
    EXPECT_EQ(m_rel(m)[0], 17);
    EXPECT_EQ(m_rel(m)[1], 39);
    EXPECT_EQ(run("(1,2) + (1,2,3)"), 3200);
    EXPECT_EQ(run("undefined_fn(1)"), 3499);
    // a, b, p, q, s, m, and y kept alive by p
    EXPECT_EQ(mo_counts.live, 7);
    lumo_clearmats();
    EXPECT_EQ(mo_counts.live, 0);
    EXPECT_EQ(mo_counts.scells, 0);
}

// The machine's column of the instruction table: every opcode has a
// handler, and the numbers that are not instructions answer 3997.
TEST_F(LumoStore, EveryOpcodeHasAHandler) {
    for (int op = 0; op < MOP_COUNT; op++) EXPECT_NE(mop_table[op].xeq, nullptr) << op;
    // a function whose first instruction is 45, not an instruction
    const uint32_t code[] = {920, 920, 45, 30};
    auto* f =
        static_cast<LumoFcn*>(dmadd("t45", DM_LUMOFCN, 0, offsetof(LumoFcn, code) + sizeof code));
    ASSERT_NE(f, nullptr);
    f->nwords = 4;
    f->count = f->replaced = 0;
    memcpy(f->code, code, sizeof code);
    m_curdepth = 0;
    EXPECT_EQ(ixeq(f), 3997);
    EXPECT_NE(out.take().find("t45():  3997  unimplemented opcode"), std::string::npos);
}

// A break seen at a backward jump ends the statement with code 1, releasing
// what it held.
TEST_F(LumoStore, BreakEndsALoopWithCodeOne) {
    ASSERT_EQ(run("i = 0"), 0);
    const int64_t live = mo_counts.live;
    std::string rest;
    ASSERT_EQ(cc_compile("for (i = 1; i <= 10; i++) j = i * 10", &rest), 0);
    stopflag = 1; // the compiler itself stops at a break, so it comes after
    m_curdepth = 0;
    EXPECT_EQ(ixeq(const_cast<LumoFcn*>(cc_lastfcn())), 1);
    stopflag = 0;
    // the prologue's jump back to the body is the first backward jump: the
    // loop never starts, and j exists only as the 0 x 0 its lookup made
    EXPECT_EQ(real0("i"), 0);
    ASSERT_NE(findlvl0mat("j"), nullptr);
    EXPECT_EQ(findlvl0mat("j")->rows, 0);
    EXPECT_EQ(mo_counts.live, live + 1);
}

// Random statements over every kind of operand: whatever each one answers,
// the stack comes back empty, and once the names are dropped nothing of the
// store is left.
TEST_F(LumoStore, RandomStatementsLeaveNothingBehind) {
    static const char* const atoms[] = {
        "1",      "0",          ".",        "2.5",      "\"ab\"", "\"\"",         "(1,2,3)",
        "(1\\2)", "(1,2\\3,4)", "J(0,0,0)", "J(2,0,1)", "1i",     "(1i,2)",       "a",
        "b",      "s",          "p",        "*p",       "NULL",   "&a",           "(1..3)",
        "(3::1)", "I(3)",       "a[1]",     "b[.,1]",   "s[1]",   "J(1,3,\"x\")", "c"};
    static const char* const ops[] = {"+",  "-",  "*",  "/",  "^", ":+", ":-", ":*",
                                      ":/", ":^", "==", "!=", "<", ">=", ":<", "&",
                                      "|",  ":&", ",",  "\\", "#", "..", "::"};
    uint32_t seed = 12345;
    auto rnd = [&](uint32_t n) {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 16) % n;
    };
    std::function<std::string(int)> expr = [&](int d) -> std::string {
        if (d == 0 || rnd(10) < 3) return atoms[rnd(sizeof atoms / sizeof *atoms)];
        switch (rnd(8)) {
        case 0: return "-(" + expr(d - 1) + ")";
        case 1: return "(" + expr(d - 1) + ")'";
        case 2: return "(" + expr(d - 1) + ")[" + std::string(rnd(2) ? "1" : ".") + "]";
        default:
            return "(" + expr(d - 1) + " " + ops[rnd(sizeof ops / sizeof *ops)] + " " +
                   expr(d - 1) + ")";
        }
    };
    ASSERT_EQ(lumostakinit(1), 0);
    MObj** base = m_stak;
    const char* const setup[] = {"a = (1,2,3)", "b = (1,2\\3,4)", "s = (\"x\",\"y\")", "p = &a",
                                 "c = (1i, 2 \\ 3, 4i)"};
    for (int i = 0; i < 1500; i++) {
        if (i % 100 == 0) {
            for (const char* t : setup) ASSERT_EQ(run(t), 0) << t;
        }
        std::string st = expr(3);
        switch (rnd(5)) {
        case 0: st = "a = " + st; break;
        case 1: st = "b[1,.] = " + st; break;
        case 2: st = "*p = " + st; break;
        default: break;
        }
        run(st.c_str());
        ASSERT_EQ(m_stak, base) << st;
    }
    out.take();
    lumo_clearmats();
    EXPECT_EQ(mo_counts.live, 0);
    EXPECT_EQ(mo_counts.scells, 0);
}

} // namespace
