// Programs: the stored form of a line, finding by owner, reading lines back,
// eviction of the least recently used ado programs, and number lists.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/program/argparse.h"
#include "kernel/program/program.h"

using namespace korvu;

namespace {

struct Pgm : ::testing::Test {
    std::vector<char> buf;
    char* saved_console = console;
    void SetUp() override {
        dminit();
        buf.assign(static_cast<size_t>(conslen), 0);
        console = buf.data();
        sysldtime = 0;
        sys_pgmclass[0] = 0;
        adosize = 500;
    }
    void TearDown() override {
        console = saved_console;
        sys_pgmloc = nullptr;
        sysldtime = 0;
        adosize = 500;
        dmshutdown();
    }
    static PgmRec* rec(void* v) { return static_cast<PgmRec*>(v); }
    // Stores a program as if loaded from an ado-file at `load`.
    void* ado(const char* name, const char* owner, int load, int lastuse, size_t textsize) {
        std::string line(textsize, 'x');
        const char* lines[] = {line.c_str()};
        sysldtime = load;
        EXPECT_EQ(pgmstore(name, owner, lines, 1, 0, 0, 0, ""), 0);
        sysldtime = 0;
        for (void* v = dmfind0(name, DM_PROGRAM); v; v = dmnamenext(v, DM_PROGRAM))
            if (!strcmp(rec(v)->owner, owner)) {
                rec(v)->lastuse = lastuse;
                return v;
            }
        return nullptr;
    }
};

TEST_F(Pgm, StoredLinesCollapseBlanksOutsideStrings) {
    char out[200];
    EXPECT_EQ(pgmsqueeze("   display    x", out), 3);
    EXPECT_STREQ(out, "display x");
    EXPECT_EQ(pgmsqueeze("di \"a    b\"    c   ", out), 0);
    EXPECT_STREQ(out, "di \"a    b\" c");
    EXPECT_EQ(pgmsqueeze("", out), 0);
    EXPECT_STREQ(out, "");
    // an unclosed string keeps its blanks to the end
    EXPECT_EQ(pgmsqueeze("x \"a  ", out), 0);
    EXPECT_STREQ(out, "x \"a  ");
}

TEST_F(Pgm, LinesComeBackWithABlankInPlaceOfTheIndent) {
    const char* lines[] = {"    version 9", "  display   \"hi  there\"", "exit"};
    ASSERT_EQ(pgmstore("p", "", lines, 3, 1, 2, 1, "prop"), 0);
    void* v = pgmfind("p", "", 1);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(dmtag(v), 3);
    PgmRec* p = rec(v);
    EXPECT_EQ(p->pgmclass, 1);
    EXPECT_EQ(p->bymode, 2);
    EXPECT_EQ(p->sortpres, 1);
    EXPECT_STREQ(p->properties, "prop");
    // index: header, four offsets, then the lines each with their indent byte
    const int32_t* idx = pgmindex(p);
    EXPECT_EQ(idx[0], static_cast<int32_t>(sizeof(PgmRec) + 4 * 4));
    EXPECT_EQ(static_cast<uint64_t>(idx[3]), dmsize(v));
    EXPECT_EQ(static_cast<const char*>(v)[idx[0]], 4);
    EXPECT_EQ(idx[1] - idx[0], 1 + 9 + 1);
    strcpy(sys_pgmname, "p");
    sys_pgmloc = nullptr;
    sys_upline = 0;
    std::vector<std::string> got;
    while (!pgmgetline()) got.emplace_back(console);
    ASSERT_EQ(got.size(), 3u);
    EXPECT_EQ(got[0], " version 9");
    EXPECT_EQ(got[1], " display \"hi  there\"");
    EXPECT_EQ(got[2], " exit");
}

TEST_F(Pgm, OwnerDecidesWhichOfTwoNamesakesIsFound) {
    const char* body[] = {"display 1"};
    ASSERT_EQ(pgmstore("check", "", body, 1, 0, 0, 0, ""), 0);
    ASSERT_EQ(pgmstore("check", "shadow", body, 1, 0, 0, 0, ""), 0);
    ASSERT_EQ(pgmstore("check", "twin", body, 1, 0, 0, 0, ""), 0);
    EXPECT_STREQ(rec(pgmfind("check", "shadow", 1))->owner, "shadow");
    EXPECT_STREQ(rec(pgmfind("check", "twin", 1))->owner, "twin");
    EXPECT_STREQ(rec(pgmfind("check", "other", 1))->owner, "");
    EXPECT_STREQ(rec(pgmfind("check", "", 1))->owner, "");
    EXPECT_EQ(pgmfind("nothing", "", 3), nullptr);
    EXPECT_EQ(byability("check"), 0);
    EXPECT_EQ(byability("nothing"), 9);
}

TEST_F(Pgm, KillTakesTheOwnedAndSparesTheRunning) {
    void* main = ado("main", "", 7, 1, 10);
    ado("sub", "main", 7, 1, 10);
    rec(main)->running = 1;
    EXPECT_EQ(pgmkill("main"), 0);
    EXPECT_NE(pgmfind("sub", "main", 1), nullptr);
    rec(main)->running = 0;
    void* sub = pgmfind("sub", "main", 1);
    rec(sub)->running = 1;
    EXPECT_EQ(pgmkill("main"), 0); // a running subprogram protects its file
    rec(sub)->running = 0;
    EXPECT_EQ(pgmkill("main"), 1);
    EXPECT_EQ(dmcount(DM_PROGRAM), 0);
}

TEST_F(Pgm, EvictionTakesTheLeastRecentlyUsedGroup) {
    // each program holds 4000 bytes of text and a fixed head and index
    void* a = ado("a", "", 1, 50, 4000);
    ado("asub", "a", 1, 10, 4000); // the group counts by its newest use, 50
    void* b = ado("b", "", 2, 30, 4000);
    void* c = ado("c", "", 3, 40, 4000);
    uint64_t each = dmsize(a);
    EXPECT_EQ(each, sizeof(PgmRec) + 2 * 4 + 1 + 4000 + 1);
    EXPECT_EQ(dmsize(b), each);
    adosize = 13; // 13000 bytes: room for three of the four
    pgm_evict(0);
    EXPECT_EQ(pgmfind("b", "", 1), nullptr);
    EXPECT_NE(pgmfind("a", "", 1), nullptr);
    EXPECT_NE(pgmfind("asub", "a", 1), nullptr);
    EXPECT_NE(pgmfind("c", "", 1), nullptr);
    // the load just made is never taken, and a running group stays
    adosize = 10;
    rec(c)->running = 1;
    pgm_evict(1);
    EXPECT_NE(pgmfind("a", "", 1), nullptr);
    EXPECT_NE(pgmfind("c", "", 1), nullptr);
    rec(c)->running = 0;
    pgm_evict(1);
    EXPECT_EQ(pgmfind("c", "", 1), nullptr);
    EXPECT_NE(pgmfind("a", "", 1), nullptr);
    // programs typed by hand don't count and never go
    const char* body[] = {"display 1"};
    ASSERT_EQ(pgmstore("byhand", "", body, 1, 0, 0, 0, ""), 0);
    adosize = 0;
    pgm_evict(0);
    EXPECT_EQ(pgmfind("a", "", 1), nullptr);
    EXPECT_NE(pgmfind("byhand", "", 1), nullptr);
}

struct NumCase {
    const char* text;
    std::vector<double> want;
};

TEST(Numlist, FormsGiveTheHandCountedElements) {
    const NumCase cases[] = {
        {"1/3 6(2)10", {1, 2, 3, 6, 8, 10}},
        {"3/1", {3, 2, 1}},
        {"5[-2]1", {5, 3, 1}},
        {"1 3 : 9", {1, 3, 5, 7, 9}},
        {"10 7 to 1", {10, 7, 4, 1}},
        {"2.5/4", {2.5, 3.5}},
        {"-1/-3 0", {-1, -2, -3, 0}},
        {"7", {7}},
        {"", {}},
    };
    for (const NumCase& c : cases) {
        std::vector<double> got;
        ASSERT_EQ(znumlist_text(c.text, got, 0, 0, 0, nullptr, 0), 0) << c.text;
        EXPECT_EQ(got, c.want) << c.text;
    }
    // tenths: eleven elements from 0 to 1, the last exactly 1
    std::vector<double> t;
    ASSERT_EQ(znumlist_text("0(.1)1", t, 0, 0, 0, nullptr, 0), 0);
    ASSERT_EQ(t.size(), 11u);
    EXPECT_EQ(t.back(), 1.0);
    EXPECT_NEAR(t[3], 0.3, 1e-15);
    EXPECT_EQ(numtext(t[3]), ".3");
    std::vector<double> s;
    ASSERT_EQ(znumlist_text("4 1 3", s, 0, 0, NL_SORT, nullptr, 0), 0);
    EXPECT_EQ(s, (std::vector<double>{1, 3, 4}));
}

TEST(Numlist, EachFaultHasItsCode) {
    std::vector<double> v;
    NumRange r{0, 10};
    EXPECT_EQ(znumlist_text("/3", v, 0, 0, 0, nullptr, 0), -121);
    EXPECT_EQ(znumlist_text("1(2]5", v, 0, 0, 0, nullptr, 0), -121);
    EXPECT_EQ(znumlist_text("1(0)5", v, 0, 0, 0, nullptr, 0), -121);
    EXPECT_EQ(znumlist_text("a b", v, 0, 0, 0, nullptr, 0), -121);
    EXPECT_EQ(znumlist_text("1 2", v, 3, 0, 0, nullptr, 0), -122);
    EXPECT_EQ(znumlist_text("1/5", v, 0, 4, 0, nullptr, 0), -123);
    EXPECT_EQ(znumlist_text("1/2000", v, 0, 0, 0, nullptr, 0), -123);
    EXPECT_EQ(znumlist_text("3/1", v, 0, 0, NL_ASC, nullptr, 0), -124);
    EXPECT_EQ(znumlist_text("1 1", v, 0, 0, NL_DESC, nullptr, 0), -124);
    EXPECT_EQ(znumlist_text("9/11", v, 0, 0, 0, &r, 0), -125);
    EXPECT_EQ(znumlist_text("1.5", v, 0, 0, NL_INT, nullptr, 0), -126);
    EXPECT_EQ(znumlist_text("1 .", v, 0, 0, 0, nullptr, 0), -127);
    EXPECT_EQ(znumlist_text("1 .a", v, 0, 0, NL_MISS, nullptr, 0), 0);
    NumRange open{0, 10, true, false};
    EXPECT_EQ(znumlist_text("0", v, 0, 0, 0, &open, 0), -125);
    EXPECT_EQ(znumlist_text("10", v, 0, 0, 0, &open, 0), 0);
}

} // namespace
