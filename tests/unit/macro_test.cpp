// Macros: the store, expansion of every reference form, the limits, and the
// temporary names.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "kernel/dict.h"
#include "kernel/macro.h"
#include "kernel/macro_deps.h"
#include "kernel/regex.h"

using namespace korvu;

namespace {

struct Mac : ::testing::Test {
    int32_t saved_vernum = vernum;
    void SetUp() override {
        dminit();
        typelmac = DM_LMAC0;
        vernum = 920;
    }
    void TearDown() override {
        vernum = saved_vernum;
        typelmac = DM_LMAC0;
        mac_hooks = MacHooks{};
        dmshutdown();
    }
    // Expands a line in a buffer of conslen bytes; returns the text, or "r(920)".
    std::string x(const std::string& line) {
        std::vector<char> buf(static_cast<size_t>(conslen));
        std::strcpy(buf.data(), line.c_str());
        int rc = macexp_text(buf.data(), buf.size());
        if (rc) return "r(" + std::to_string(rc) + ")";
        return buf.data();
    }
    std::string val(const char* name) {
        const char* v = macptr(name);
        return v ? v : "<absent>";
    }
};

} // namespace

TEST_F(Mac, StoreAndFind) {
    EXPECT_EQ(macsave("g", "global value"), 0);
    EXPECT_EQ(macsave("_l", "local value"), 0);
    EXPECT_EQ(val("g"), "global value");
    EXPECT_EQ(val("_l"), "local value");
    // Globals are type 2, locals the current level.
    EXPECT_NE(dmfind0("g", DM_GMAC), nullptr);
    EXPECT_NE(dmfind0("_l", DM_LMAC0), nullptr);
    int len = 0;
    EXPECT_NE(macfind("g", &len), nullptr);
    EXPECT_EQ(len, 13); // with the NUL
    char buf[64];
    EXPECT_STREQ(macuse("g", buf), "global value");
    EXPECT_STREQ(macuse("nothere", buf), "");
    EXPECT_STREQ(macuseshort("g", buf, 7), "global");
}

TEST_F(Mac, EmptyTextErases) {
    macsave("a", "1");
    EXPECT_EQ(macresave("a", ""), 0);
    EXPECT_EQ(val("a"), "<absent>");
    EXPECT_EQ(macsave("b", ""), 0); // adds nothing
    EXPECT_EQ(val("b"), "<absent>");
    EXPECT_EQ(macsave0("_3"), 0); // positional arguments may be empty
    EXPECT_EQ(val("_3"), "");
}

TEST_F(Mac, ResaveQuotedAndOneScopeUp) {
    macresaveq("q", "a \"b\" c");
    EXPECT_EQ(val("q"), "`\"a \"b\" c\"'");
    EXPECT_EQ(macresave_c("_x", "up"), 198); // no scope above the base
    ++typelmac;
    EXPECT_EQ(macresave_c("_x", "up"), 0);
    EXPECT_EQ(val("_x"), "<absent>");
    --typelmac;
    EXPECT_EQ(val("_x"), "up");
}

TEST_F(Mac, NextWalksGlobalsThenLocals) {
    macsave("g1", "1");
    macsave("_l1", "2");
    ++typelmac;
    macsave("_l2", "3"); // a deeper scope: only its own locals are seen
    macsave("g2", "4");
    std::vector<std::string> names;
    char name[40];
    for (void* v = macnext(nullptr, name); v; v = macnext(v, name)) names.push_back(name);
    std::vector<std::string> want = {"g2", "g1", "_l2"};
    EXPECT_EQ(names, want);
}

TEST_F(Mac, Increment) {
    macsave("_i", "1");
    char out[40];
    EXPECT_EQ(macincr("_i", "+", out, 1), 0);
    EXPECT_STREQ(out, "2");
    EXPECT_EQ(macincr("_i", "-", out, -1), 0);
    EXPECT_STREQ(out, "2");
    EXPECT_EQ(val("_i"), "1");
    macsave("_s", "abc");
    EXPECT_EQ(macincr("_s", "+", out, 0), 109);
    EXPECT_EQ(macincr("_none", "+", out, 0), 111);
    macsave("_f", "2.5");
    macincr("_f", "+", out, 1);
    EXPECT_STREQ(out, "3.5");
}

TEST_F(Mac, GlobalReferences) {
    macsave("x", "hello");
    macsave("x1", "one");
    EXPECT_EQ(x("di \"$x world\""), "di \"hello world\"");
    EXPECT_EQ(x("$x$x"), "hellohello");
    EXPECT_EQ(x("${x}1 ${x1}"), "hello1 one");
    EXPECT_EQ(x("$nothere."), ".");
    // Not references: before a blank, before a digit, an empty brace.
    EXPECT_EQ(x("cost $ 5 $5 ${}"), "cost $ 5 $5 ${}");
    EXPECT_EQ(x("${unclosed"), "${unclosed");
    // $_x reaches the local x, as old code wrote it.
    macsave("_lx", "loc");
    EXPECT_EQ(x("$_lx"), "loc");
}

TEST_F(Mac, NamesOfGlobalsAreBuiltFromInnerReferences) {
    macsave("_i", "1");
    macsave("x1", "first");
    macsave("x", "plain");
    macsave("_n", "x");
    EXPECT_EQ(x("${x`i'}"), "first");
    EXPECT_EQ(x("$`n'1"), "first");
    // Left to right otherwise: $x then `i'.
    EXPECT_EQ(x("$x`i'"), "plain1");
    macsave("lvl", "x");
    EXPECT_EQ(x("${${lvl}1}"), "first");
}

TEST_F(Mac, LocalReferences) {
    macsave("_x", "value");
    EXPECT_EQ(x("`x'"), "value");
    EXPECT_EQ(x("a`x'b"), "avalueb");
    EXPECT_EQ(x("`nothere'"), "");
    // A backquoted 1 is a reference, "_1" being a valid name.
    macsave("_1", "arg1");
    EXPECT_EQ(x("`1' $1"), "arg1 $1");
    // No closing quote: the backquote stays.
    EXPECT_EQ(x("`x"), "`x");
}

TEST_F(Mac, NestedReferencesExpandFirst) {
    macsave("_i", "2");
    macsave("_v2", "second");
    macsave("_name", "i");
    EXPECT_EQ(x("`v`i''"), "second");
    EXPECT_EQ(x("`v``name'''"), "second");
}

TEST_F(Mac, SubstitutedTextIsRescanned) {
    macsave("_a", "`b'");
    macsave("_b", "end");
    macsave("g", "$h and `b'");
    macsave("h", "H");
    EXPECT_EQ(x("`a'"), "end");
    EXPECT_EQ(x("$g"), "H and end");
}

TEST_F(Mac, MacvalIsNotRescanned) {
    macsave("_a", "`b'");
    macsave("_b", "end");
    EXPECT_EQ(x("`macval(a)'"), "`b'");
    EXPECT_EQ(x("`macval( a )'!"), "`b'!");
}

TEST_F(Mac, CompoundQuotesAreNotReferences) {
    macsave("_x", "X");
    EXPECT_EQ(x("`\"a `x' b\"'"), "`\"a X b\"'");
    EXPECT_EQ(x("`\"\"'"), "`\"\"'");
}

TEST_F(Mac, Backslashes) {
    macsave("x", "X");
    macsave("_y", "Y");
    EXPECT_EQ(x("\\$x"), "$x");
    EXPECT_EQ(x("\\`y'"), "`y'");
    // From version 9 a double backslash is one only before a macro character.
    EXPECT_EQ(x("c:\\\\`y'"), "c:\\Y");
    EXPECT_EQ(x("a\\\\b"), "a\\\\b");
    EXPECT_EQ(x("a\\b"), "a\\b");
    vernum = 800;
    EXPECT_EQ(x("a\\\\b"), "a\\b");
}

TEST_F(Mac, Increments) {
    macsave("_i", "1");
    EXPECT_EQ(x("`i++'"), "1");
    EXPECT_EQ(val("_i"), "2");
    EXPECT_EQ(x("`++i'"), "3");
    EXPECT_EQ(x("`i--' `--i'"), "3 1");
    // A lone sign is a name of its own, hence absent.
    EXPECT_EQ(x("[`+i']"), "[]");
}

TEST_F(Mac, StarIsTheArgumentList) {
    macsave("_1", "a");
    macsave("_2", "b c");
    macsave("_4", "d"); // after a gap: not reached
    EXPECT_EQ(x("`*'"), "a b c");
}

TEST_F(Mac, LimitsGive920) {
    macsave("s", "$s");
    EXPECT_EQ(x("$s"), "r(920)");
    macsave("_loop", "a`loop'");
    EXPECT_EQ(x("`loop'"), "r(920)");
    // Twenty repeats at one place are allowed.
    for (int i = 0; i < 20; ++i)
        macsave(("_c" + std::to_string(i)).c_str(), ("`c" + std::to_string(i + 1) + "'").c_str());
    macsave("_c20", "done");
    EXPECT_EQ(x("`c0'"), "done");
    macsave("_c20", "`c21'");
    macsave("_c21", "done");
    EXPECT_EQ(x("`c0'"), "r(920)");
    // The line may not reach its buffer's size.
    std::string big(static_cast<size_t>(macrolen) - 1, 'z');
    macsave("big", big.c_str());
    EXPECT_EQ(x("$big"), big);
    EXPECT_EQ(x("$big$big"), "r(920)");
}

TEST_F(Mac, BuiltInDateAndTime) {
    std::string t = x("$S_TIME");
    ASSERT_EQ(t.size(), 8u);
    EXPECT_EQ(t[2], ':');
    EXPECT_EQ(t[5], ':');
    std::string d = x("$S_DATE");
    EXPECT_GE(d.size(), 10u);
    EXPECT_NE(d[0], ' ');
}

TEST_F(Mac, HooksAndTheirAbsence) {
    // Without the subsystems: nothing is substituted.
    EXPECT_EQ(x("[`=1+1']"), "[]");
    EXPECT_EQ(x("[`r(N)']"), "[]");
    EXPECT_EQ(x("[`x[note1]']"), "[]");
    std::vector<char> out(static_cast<size_t>(macrolen));
    EXPECT_EQ(exp_xpand("1", out.data()), 199);
    mac_hooks.expvalue = [](const char* e, char* dst, size_t) {
        std::strcpy(dst, e);
        std::strcat(dst, "!");
        return 0;
    };
    mac_hooks.resultvalue = [](int which, const char* name, char* dst, size_t) {
        dst[0] = static_cast<char>(which);
        std::strcpy(dst + 1, name);
        return 0;
    };
    mac_hooks.charvalue = [](const char* v, const char* c, char* dst, size_t) {
        std::strcpy(dst, v);
        std::strcat(dst, "/");
        std::strcat(dst, c);
        return 0;
    };
    EXPECT_EQ(x("[`=1+1']"), "[1+1!]");
    EXPECT_EQ(x("[`r( N )' `e(b)' `return(x)' `c(pwd)' `s(a)']"), "[rN eb Rx cpwd sa]");
    EXPECT_EQ(x("[`price[note1]']"), "[price/note1]");
    // An extended form may not hold a dollar sign after expansion: stays.
    EXPECT_EQ(x("`=\\$'"), "`=$'");
    EXPECT_EQ(x("[`unknownfcn(3)']"), "[]");
}

TEST_F(Mac, OldVersionsTakeEightCharacters) {
    vernum = 600;
    macsave("abcdefgh", "eight");
    EXPECT_EQ(x("$abcdefghij"), "eightij");
}

TEST_F(Mac, NoExpansionWithoutMacroCharacters) {
    std::string s = "regress y x1 x2 if z > 3, robust";
    EXPECT_EQ(x(s), s);
}

TEST_F(Mac, TemporaryVariableNames) {
    tmpvctr = 0;
    char n[16];
    EXPECT_STREQ(mktmpvn(n), "__000000");
    EXPECT_STREQ(mktmpvn(n), "__000001");
    tmpvctr = 36 * 36 + 36 + 35; // 1, 1, Z in base 36
    EXPECT_STREQ(mktmpvn(n), "__00011Z");
    EXPECT_TRUE(istmpvn("__000001", 0));
    EXPECT_TRUE(istmpvn("__00011Z", 0));
    EXPECT_FALSE(istmpvn("__00011Z", tmpvctr)); // none made since
    EXPECT_FALSE(istmpvn("__000001", 2));
    EXPECT_FALSE(istmpvn("x", 0));
    EXPECT_FALSE(istmpvn("__00a000", 0));
    // The counter wraps to 0 at 2146483647.
    tmpvctr = 2146483646;
    int32_t since = tmpvctr;
    mktmpvn(n);
    EXPECT_EQ(tmpvctr, 0);
    mktmpvn(n);
    EXPECT_STREQ(n, "__000000");
    EXPECT_TRUE(istmpvn(n, since));
}

TEST_F(Mac, TemporaryFileNames) {
    tmpfctr = 1;
    char fn[1200], want[1200];
    mktmpfn(fn);
    std::snprintf(want, sizeof want, "%s/St%05d.000001", tmpdir, unix_pid);
    EXPECT_STREQ(fn, want);
    tmpfctr = 34 * 34 - 1; // "0000xx"
    mktmpfn(fn);
    EXPECT_EQ(std::string(fn).substr(std::strlen(fn) - 6), "0000xx");
    tmpfctr = 1544000000;
    mktmpfn(fn);
    EXPECT_EQ(tmpfctr, 1);
}

TEST_F(Mac, FrameEndRemovesFilesLocalsAndTemporaryItems) {
    int32_t vsince = tmpvctr, fsince = tmpfctr;
    char fn[1200], n1[16];
    mktmpfn(fn);
    FILE* f = std::fopen(fn, "w");
    ASSERT_NE(f, nullptr);
    std::fclose(f);
    ++typelmac;
    macsave("_loc", "x");
    mktmpvn(n1);
    dmsave(n1, DM_SCALAR, 0, "12345678", 8);
    dmsave("keepme", DM_SCALAR, 0, "12345678", 8);
    dmsave("rv", typelmac + 128, 3, "rv", 3); // a return macro being built
    dmsave("old", DM_RMACRO, 4, "old", 4);
    EXPECT_EQ(mac_frame_end(vsince, fsince, 1), 0);
    EXPECT_NE(access(fn, F_OK), 0);
    EXPECT_EQ(dmcount(typelmac), 0);
    EXPECT_EQ(dmfind0(n1, DM_SCALAR), nullptr);
    EXPECT_NE(dmfind0("keepme", DM_SCALAR), nullptr);
    EXPECT_EQ(dmfind0("old", DM_RMACRO), nullptr);
    EXPECT_NE(dmfind0("rv", DM_RMACRO), nullptr);
    EXPECT_EQ(dmcount(typelmac + 128), 0);
}

TEST(Regex, MatchReplaceSubexpressions) {
    EXPECT_EQ(regexm("abc123def", "[0-9]+"), 1);
    std::string s;
    EXPECT_EQ(regexs(0, s), 0);
    EXPECT_EQ(s, "123");
    EXPECT_EQ(regexm("2024-11-21", "^([0-9]+)-([0-9]+)-([0-9]+)$"), 1);
    regexs(1, s);
    EXPECT_EQ(s, "2024");
    regexs(3, s);
    EXPECT_EQ(s, "21");
    regexs(7, s); // no such subexpression
    EXPECT_EQ(s, "");
    EXPECT_EQ(regexm("xyz", "[0-9]"), 0);
    EXPECT_EQ(regexs(0, s), 198);
    EXPECT_EQ(regexm("x", "(unclosed"), -198);
    EXPECT_NE(std::string(regexerror()), "");

    std::string out;
    EXPECT_EQ(regexr("a1b22c333", "[0-9]+", "#", out), 0);
    EXPECT_EQ(out, "a#b22c333");
    regexr("a1b22c333", "[0-9]+", "#", out, -1);
    EXPECT_EQ(out, "a#b#c#");
    regexr("a1b22c333", "[0-9]+", "#", out, 2);
    EXPECT_EQ(out, "a#b#c333");
    regexr("a1b22c333", "[0-9]+", "#", out, 0);
    EXPECT_EQ(out, "a1b22c333");
    regexr("aaa", "^a", "b", out, -1); // anchored: only at the start
    EXPECT_EQ(out, "baa");
    regexr("abc", "x*", "-", out, -1); // empty matches step along
    EXPECT_EQ(out, "-a-b-c-");
    EXPECT_EQ(regexr("a", "[", "", out), 198);
}
