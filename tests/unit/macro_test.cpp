// Macros: the store, expansion of every reference form, the limits, and the
// temporary names.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "app/link.h"
#include "kernel/dict/dict.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/loop.h"
#include "kernel/loop/scratch.h"
#include "kernel/macro/macro.h"
#include "kernel/macro/macro_deps.h"
#include "kernel/parse/gettok.h"
#include "kernel/regex/regex.h"

using namespace korvu;

namespace {

struct Mac : ::testing::Test {
    int32_t saved_vernum = vernum;
    void SetUp() override {
        dminit();
        typelmac = DM_LMAC0;
        vernum = 920;
        static char tmp[] = "/tmp";
        if (!tmpdir) tmpdir = tmp;
        unix_pid = static_cast<int32_t>(getpid());
        // the macro code on its own: only the kernel's links, none of the data side
        mac_hooks = MacHooks{};
        for (auto& h : mac_fcn_hooks) h = nullptr;
        link_programs();
        link_flow();
    }
    void TearDown() override {
        vernum = saved_vernum;
        typelmac = DM_LMAC0;
        dmshutdown();
        link_all();
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

// The clock read around the expansion, written out here field by field: the
// time as hh:mm:ss, the date as "23 Nov 2026" (no blank before a one-digit day).
TEST_F(Mac, BuiltInDateAndTime) {
    static const char* mon[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    auto fields = [](time_t t) {
        struct tm v;
        localtime_r(&t, &v);
        return v;
    };
    auto hms = [](const struct tm& v) {
        char b[32];
        snprintf(b, sizeof b, "%02d:%02d:%02d", v.tm_hour, v.tm_min, v.tm_sec);
        return std::string(b);
    };
    auto dmy = [](const struct tm& v) {
        return std::to_string(v.tm_mday) + " " + mon[v.tm_mon] + " " +
               std::to_string(v.tm_year + 1900);
    };
    const struct tm a = fields(time(nullptr));
    const std::string t = x("$S_TIME"), d = x("$S_DATE");
    const struct tm b = fields(time(nullptr));
    EXPECT_TRUE(t == hms(a) || t == hms(b)) << t << " not " << hms(a) << " or " << hms(b);
    EXPECT_TRUE(d == dmy(a) || d == dmy(b)) << d << " not " << dmy(a) << " or " << dmy(b);
    // braced, inside a longer text
    const std::string br = x("[${S_DATE}]");
    EXPECT_TRUE(br == "[" + dmy(a) + "]" || br == "[" + dmy(b) + "]") << br;
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
    char fn[FNLEN], want[FNLEN];
    ASSERT_EQ(mktmpfn(fn, sizeof fn), 0);
    std::snprintf(want, sizeof want, "%s/St%05d.000001", tmpdir, unix_pid);
    EXPECT_STREQ(fn, want);
    tmpfctr = 34 * 34 - 1; // "0000xx"
    ASSERT_EQ(mktmpfn(fn, sizeof fn), 0);
    EXPECT_EQ(std::string(fn).substr(std::strlen(fn) - 6), "0000xx");
    tmpfctr = 1544000000;
    ASSERT_EQ(mktmpfn(fn, sizeof fn), 0);
    EXPECT_EQ(tmpfctr, 1);
}

// A long temporary directory is taken whole, and one too long for the buffer
// gives 914 without writing past it.
TEST_F(Mac, TemporaryFileNameFromLongDirectory) {
    char* saved = tmpdir;
    std::string dir(2000, 'd');
    dir[0] = '/';
    tmpdir = dir.data();
    tmpfctr = 34 * 34 * 34 + 2; // "001002" in base 34
    std::vector<char> fn(FNLEN + 16, '#');
    ASSERT_EQ(mktmpfn(fn.data(), FNLEN), 0);
    char tail[64];
    std::snprintf(tail, sizeof tail, "/St%05d.001002", unix_pid);
    EXPECT_EQ(std::string(fn.data()), dir + tail);
    EXPECT_EQ(tmpfctr, 34 * 34 * 34 + 3);
    // room for the directory but not the digits: 914, the counter unchanged
    std::string longer(FNLEN - 10, 'e');
    longer[0] = '/';
    tmpdir = longer.data();
    EXPECT_EQ(mktmpfn(fn.data(), FNLEN), 914);
    EXPECT_EQ(tmpfctr, 34 * 34 * 34 + 3);
    for (size_t i = FNLEN; i < fn.size(); ++i) EXPECT_EQ(fn[i], '#');
    tmpdir = saved;
}

TEST(Scratch, MacroBuffersAreReusedAndSized) {
    char* a = allocmacro();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a[0], 0);
    std::memset(a, 'x', static_cast<size_t>(macrolen)); // the whole of macrolen is usable
    a[macrolen] = 0;
    freechar(a);
    char* b = allocmacro();
    EXPECT_EQ(b, a); // the released buffer comes back
    EXPECT_EQ(b[0], 0);
    char* c = allocchar(10);
    ASSERT_NE(c, nullptr);
    EXPECT_NE(c, b);
    freechar(c);
    freechar(b);
    freechar(nullptr);
    scratch_release();
}

TEST(Scratch, CopyTextCutsAndTerminates) {
    char d[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(copytext(d, sizeof d, "abcdef"), 6u);
    EXPECT_STREQ(d, "abc");
    EXPECT_EQ(copytext(d, sizeof d, "ab"), 2u);
    EXPECT_STREQ(d, "ab");
    EXPECT_EQ(copytext(d, 0, "zz"), 2u);
    EXPECT_STREQ(d, "ab");
}

TEST_F(Mac, FrameEndRemovesFilesLocalsAndTemporaryItems) {
    int32_t vsince = tmpvctr, fsince = tmpfctr;
    char fn[FNLEN], n1[16];
    ASSERT_EQ(mktmpfn(fn, sizeof fn), 0);
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

namespace {

// Runs a handler on the text that follows the command word.
std::string cmdline;
int run(int (*h)(int), int arg, const std::string& text) {
    cmdline = text;
    settok(cmdline.data());
    return h(arg);
}

struct MacCmd : Mac {
    std::string fcn(const std::string& text) {
        std::vector<char> out(static_cast<size_t>(macrolen));
        int rc = extended_xpand(text.c_str(), out.data());
        return rc ? "r(" + std::to_string(rc) + ")" : std::string(out.data());
    }
};

} // namespace

TEST_F(MacCmd, LocalGlobalAndTheirForms) {
    EXPECT_EQ(run(macgen, 1, "x  hello world  "), 0);
    EXPECT_EQ(val("_x"), "hello world");
    EXPECT_EQ(run(macgen, 2, "g \"quoted text\""), 0);
    EXPECT_EQ(val("g"), "quoted text");
    EXPECT_EQ(run(macgen, 1, "c `\"say \"hi\"\"'"), 0);
    EXPECT_EQ(val("_c"), "say \"hi\"");
    EXPECT_EQ(run(macgen, 1, "ab \"a\" \"b\""), 0);
    EXPECT_EQ(val("_ab"), "a\" \"b");
    EXPECT_EQ(run(macgen, 1, "bad \"open"), 198);
    // Erasing: nothing, or empty quotes.
    EXPECT_EQ(run(macgen, 1, "x"), 0);
    EXPECT_EQ(val("_x"), "<absent>");
    ASSERT_EQ(run(macgen, 1, "x 1"), 0);
    ASSERT_EQ(val("_x"), "1");
    EXPECT_EQ(run(macgen, 1, "x \"\""), 0);
    EXPECT_EQ(val("_x"), "<absent>");
    // Names.
    EXPECT_EQ(run(macgen, 2, "_x 1"), 198);
    EXPECT_EQ(run(macgen, 1, "a.b 1"), 198);
    EXPECT_EQ(run(macgen, 1, std::string(32, 'n') + " 1"), 198);
    EXPECT_EQ(run(macgen, 1, std::string(31, 'n') + " 1"), 0);
    EXPECT_EQ(run(macgen, 1, ""), 198);
    // Increments.
    ASSERT_EQ(run(macgen, 1, "i 5"), 0);
    EXPECT_EQ(run(macgen, 1, "++i"), 0);
    EXPECT_EQ(val("_i"), "6");
    EXPECT_EQ(run(macgen, 1, "--i"), 0);
    EXPECT_EQ(val("_i"), "5");
    EXPECT_EQ(run(macgen, 2, "++i"), 198);
    EXPECT_EQ(run(macgen, 1, "+i"), 198);
    // c_local: one scope up; at the base it fails.
    EXPECT_EQ(run(macgen, 7, "up 1"), 198);
    ++typelmac;
    EXPECT_EQ(run(macgen, 7, "up yes"), 0);
    --typelmac;
    EXPECT_EQ(val("_up"), "yes");
    // The result stores' macros.
    EXPECT_EQ(run(macgen, 5, "cmd regress"), 0);
    EXPECT_STREQ(static_cast<char*>(dmfind0("cmd", DM_EMACRO)), "regress");
    EXPECT_EQ(run(macgen, 6, "x 1"), 0);
    EXPECT_NE(dmfind0("x", DM_SMACRO), nullptr);
    EXPECT_EQ(run(macgen, 4, "r1 yes"), 0);
    EXPECT_NE(dmfind0("r1", typelmac + 128), nullptr);
    // =exp waits for the expression evaluator.
    EXPECT_EQ(run(macgen, 1, "e = 2+2"), 199);
    // : runs an extended function.
    EXPECT_EQ(run(macgen, 1, "n : word count a b \"c d\""), 0);
    EXPECT_EQ(val("_n"), "3");
}

TEST_F(MacCmd, MacroSubcommands) {
    macsave("keep1", "x");
    macsave("S_ADO", "path");
    macsave("S_other", "o");
    macsave("ab1", "1");
    macsave("ab2", "2");
    macsave("_loc", "l");
    EXPECT_EQ(run(macro, 0, "drop ab*"), 0);
    EXPECT_EQ(val("ab1"), "<absent>");
    EXPECT_EQ(val("ab2"), "<absent>");
    EXPECT_EQ(val("keep1"), "x");
    EXPECT_EQ(run(macro, 0, "drop S_*"), 0);
    EXPECT_EQ(val("S_ADO"), "path");
    EXPECT_EQ(val("S_other"), "<absent>");
    macsave("S_other", "o");
    EXPECT_EQ(run(macro, 0, "drop _all"), 0);
    EXPECT_EQ(val("S_ADO"), "path");
    EXPECT_EQ(val("S_other"), "o");
    EXPECT_EQ(val("keep1"), "<absent>");
    EXPECT_EQ(val("_loc"), "<absent>");
    EXPECT_EQ(run(macro, 0, "drop S_ADO"), 0);
    EXPECT_EQ(val("S_ADO"), "<absent>");
    EXPECT_EQ(run(macro, 0, "define g 12"), 0);
    EXPECT_EQ(val("g"), "12");
    EXPECT_EQ(run(macro, 0, "list g S_other"), 0);
    EXPECT_EQ(run(macro, 0, "dir"), 0);
    EXPECT_EQ(run(macro, 0, "list nothere"), 111);
    EXPECT_EQ(run(macro, 0, "frobnicate"), 198);
}

TEST_F(MacCmd, Shift) {
    macsave("_1", "a");
    macsave("_2", "b");
    macsave("_3", "c");
    EXPECT_EQ(run(macro, 0, "shift"), 0);
    EXPECT_EQ(val("_1"), "b");
    EXPECT_EQ(val("_2"), "c");
    EXPECT_EQ(val("_3"), "<absent>");
    EXPECT_EQ(run(macro, 0, "shift 2"), 0);
    EXPECT_EQ(val("_1"), "<absent>");
}

TEST_F(MacCmd, TempNames) {
    tmpvctr = 10;
    EXPECT_EQ(run(tmpvcmd, 1, "a b"), 0);
    EXPECT_EQ(val("_a"), "__00000A");
    EXPECT_EQ(val("_b"), "__00000B");
    tmpfctr = 1;
    EXPECT_EQ(run(tmpvcmd, 0, "f"), 0);
    EXPECT_EQ(val("_f").substr(val("_f").size() - 7), ".000001");
    EXPECT_EQ(run(tmpvcmd, 1, ""), 198);
}

TEST_F(MacCmd, ExtendedFunctions) {
    EXPECT_EQ(fcn("word 2 of a \"b c\" d"), "b c");
    EXPECT_EQ(fcn("word 9 of a b"), "");
    EXPECT_EQ(fcn("word count"), "0");
    EXPECT_EQ(fcn("dirsep"), "/");
    setenv("KORVU_MACRO_TEST", "envval", 1);
    EXPECT_EQ(fcn("env KORVU_MACRO_TEST"), "envval");
    EXPECT_EQ(fcn("environment KORVU_NOT_SET_XYZ"), "");
    EXPECT_EQ(fcn("piece 2 5 of \"aaa bbb ccc\""), "bbb");
    EXPECT_EQ(fcn("piece 1 5 of \"aaa bbb ccc\""), "aaa");
    EXPECT_EQ(fcn("piece 1 7 of \"aaa bbb ccc\""), "aaa bbb");
    EXPECT_EQ(fcn("piece 2 4 of \"abcdefg\", nobreak"), "efg");
    macsave("_s", "a b a b");
    EXPECT_EQ(fcn("subinstr local s \"a\" \"x\""), "x b a b");
    EXPECT_EQ(fcn("subinstr local s \"a\" \"x\", all count(local n)"), "x b x b");
    EXPECT_EQ(val("_n"), "2");
    macsave("_w", "ab a b");
    EXPECT_EQ(fcn("subinstr local w \"a\" \"Z\", all word"), "ab Z b");
    EXPECT_EQ(fcn("length local s"), "7");
    EXPECT_EQ(fcn("regexm \"abc123\" \"([a-z]+)([0-9]+)\""), "1");
    EXPECT_EQ(fcn("regexs 2"), "123");
    EXPECT_EQ(fcn("regexr \"a1b2\" \"[0-9]\" \"#\" ."), "a#b#");
    EXPECT_EQ(fcn("regexr \"a1b2\" \"[0-9]\" \"#\""), "a#b2");
    EXPECT_EQ(fcn("regexr \"a1b2\" \"[0-9]\" \"#\" 0"), "a1b2");
    EXPECT_EQ(fcn("adosubdir \"mycmd.ado\""), "m");
    EXPECT_EQ(fcn("adosubdir \"_x.ado\""), "_");
    macsave("gx1", "1");
    macsave("gx2", "2");
    EXPECT_EQ(fcn("all globals \"gx*\""), "gx1 gx2");
    // Functions of other subsystems say so.
    EXPECT_EQ(fcn("type price"), "r(199)");
    EXPECT_EQ(fcn("rownames b"), "r(199)");
    EXPECT_EQ(fcn("nosuchfunction x"), "r(101)");
}

TEST_F(MacCmd, ListFunctions) {
    macsave("_a", "x y z y \"p q\"");
    macsave("_b", "z w");
    macsave("b", "y");
    EXPECT_EQ(fcn("list uniq a"), "x y z \"p q\"");
    EXPECT_EQ(fcn("list dups a"), "y");
    EXPECT_EQ(fcn("list sort b"), "w z");
    EXPECT_EQ(fcn("list sizeof a"), "5");
    EXPECT_EQ(fcn("list a | b"), "x y z y \"p q\" w");
    EXPECT_EQ(fcn("list a & b"), "z");
    EXPECT_EQ(fcn("list a - b"), "x y y \"p q\"");
    EXPECT_EQ(fcn("list b in a"), "0");
    EXPECT_EQ(fcn("list global(b) in a"), "1");
    EXPECT_EQ(fcn("list local(b) == b"), "1");
    macsave("_c", "w z");
    EXPECT_EQ(fcn("list b == c"), "1");
    EXPECT_EQ(fcn("list b === c"), "0");
    EXPECT_EQ(fcn("list posof \"p q\" in a"), "5");
    EXPECT_EQ(fcn("list posof \"nope\" in a"), "0");
    macsave("_d", " \"one\"   `\"two words\"'  three ");
    EXPECT_EQ(fcn("list retok d"), "\"one\" `\"two words\"' three");
    EXPECT_EQ(fcn("list clean d"), "one \"two words\" three");
}

TEST_F(MacCmd, InlineExtendedForms) {
    EXPECT_EQ(x("n=`:word count a b c'"), "n=3");
    macsave("_lst", "a b c");
    EXPECT_EQ(x("`:word 2 of `lst''"), "b");
    EXPECT_EQ(x("[`:type x']"), "[]");
}
