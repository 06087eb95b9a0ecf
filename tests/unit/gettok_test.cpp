#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "capture.h"
#include "kernel/loop/limits.h"
#include "kernel/loop/scratch.h"
#include "kernel/parse/gettok.h"

using namespace korvu;

// All tokens of a line under one delimiter set.
static std::vector<std::string> tokens(const char* line, const char* delims) {
    static char buf[2048];
    snprintf(buf, sizeof buf, "%s", line);
    settok(buf);
    std::vector<std::string> out;
    for (;;) {
        gettok(delims);
        if (!token[0]) break;
        out.emplace_back(token);
    }
    return out;
}

using V = std::vector<std::string>;

TEST(Tokenizer, DelimiterSets) {
    EXPECT_EQ(tokens("a==b", prsestd), (V{"a", "==", "b"}));
    EXPECT_EQ(tokens("x=-1", prsestd), (V{"x", "=", "-", "1"}));
    EXPECT_EQ(tokens("x=-1", prsenum), (V{"x", "=", "-1"}));
    EXPECT_EQ(tokens("x=+1e-5", prsenum), (V{"x", "=", "+1e-5"}));
    // ~ ends a word under the standard set, stays in it under the varlist set
    EXPECT_EQ(tokens("ab~c d", prsestd), (V{"ab", "~", "c", "d"}));
    EXPECT_EQ(tokens("ab~c d", prsevar), (V{"ab~c", "d"}));
    // wild cards stay in words under prsestd2
    EXPECT_EQ(tokens("x* y? z~", prsestd2), (V{"x*", "y?", "z~"}));
    // file names keep / . - ~ \ :
    EXPECT_EQ(tokens("~/a-b/c.do, replace", prsefls), (V{"~/a-b/c.do", ",", "replace"}));
    // program names keep nothing special, but prsestdot ends at a dot
    EXPECT_EQ(tokens("a.b", prsestdot), (V{"a", ".", "b"}));
    EXPECT_EQ(tokens("a.b", prsestd), (V{"a.b"}));
    // parentheses are no delimiters under prsestdnp
    EXPECT_EQ(tokens("A(1,2)", prsestdnp), (V{"A(1", ",", "2)"}));
}

TEST(Tokenizer, TwoCharacterOperators) {
    EXPECT_EQ(tokens("a<=b>=c!=d~=e==f", prsestd),
              (V{"a", "<=", "b", ">=", "c", "!=", "d", "~=", "e", "==", "f"}));
    EXPECT_EQ(tokens("a< =b", prsestd), (V{"a", "<", "=", "b"}));
    EXPECT_EQ(tokens("a+=b", prsestd), (V{"a", "+", "=", "b"}));
}

TEST(Tokenizer, TabIsNoBlank) {
    EXPECT_EQ(tokens("a\tb c", prsestd), (V{"a\tb", "c"}));
}

TEST(Tokenizer, Strings) {
    EXPECT_EQ(tokens("\"abc def\" x", prsestd), (V{"\"abc def", "x"}));
    // unterminated: no error, the content to the end
    EXPECT_EQ(tokens("\"abc", prsestd), (V{"\"abc"}));
    // compound quotes nest and keep their inner pairs
    EXPECT_EQ(tokens("`\"a \"b\" `\"c\"' d\"' e", prsestd), (V{"\"a \"b\" `\"c\"' d", "e"}));
    // a quote inside a word ends the word
    EXPECT_EQ(tokens("ab\"cd\"", prsestd), (V{"ab", "\"cd"}));
    // the empty string is a token of its own
    EXPECT_EQ(tokens("\"\" x", prsestd), (V{"\"", "x"}));
}

TEST(Tokenizer, TruncationAt503) {
    std::string w(600, 'w');
    auto t = tokens(w.c_str(), prsestd);
    ASSERT_EQ(t.size(), 2u);
    EXPECT_EQ(t[0].size(), 503u);
    EXPECT_EQ(t[1].size(), 97u);
    std::string s = "\"" + std::string(600, 's') + "\"";
    t = tokens(s.c_str(), prsestd);
    ASSERT_GE(t.size(), 1u);
    EXPECT_EQ(t[0], "\"" + std::string(502, 's')); // the mark and 502 characters
    // the rest of the string is read on as words; its closing quote starts an
    // unterminated string of nothing
    ASSERT_EQ(t.size(), 3u);
    EXPECT_EQ(t[1], std::string(98, 's'));
    EXPECT_EQ(t[2], "\"");
}

// The command word: `cmd` keeps its first 32 characters, `token` the whole.
TEST(Tokenizer, CommandWord) {
    char line[] = "  abcdefghijklmnopqrstuvwxyz0123456789 x, y";
    settok(line);
    EXPECT_STREQ(gettokcmd(), "abcdefghijklmnopqrstuvwxyz0123456789");
    EXPECT_STREQ(cmd, "abcdefghijklmnopqrstuvwxyz012345");
    EXPECT_STREQ(gettok(prsestd), "x");
    char line2[] = "gen=1";
    settok(line2);
    EXPECT_STREQ(gettokcmd(), "gen"); // the standard delimiters end it
    EXPECT_STREQ(cmd, "gen");
    EXPECT_STREQ(gettok(prsestd), "=");
    setcmdword("replace");
    EXPECT_STREQ(cmd, "replace");
    setcmdword(std::string(40, 'w').c_str());
    EXPECT_EQ(std::string(cmd), std::string(32, 'w'));
    char empty[] = "   ";
    settok(empty);
    EXPECT_STREQ(gettokcmd(), "");
    EXPECT_STREQ(cmd, "");
}

// The end of a line: nothing left is 0, a word left over is invalid syntax.
TEST(Tokenizer, EndOfLine) {
    CapturedOutput out;
    char a[] = "x   ";
    settok(a);
    gettok(prsestd);
    EXPECT_EQ(endofline(), 0);
    char b[] = "x y";
    settok(b);
    gettok(prsestd);
    EXPECT_EQ(endofline(), 198);
    char c[] = "x \"\"";
    settok(c);
    gettok(prsestd);
    EXPECT_EQ(endofline(), 198); // an empty string is still a word
    EXPECT_EQ(out.take(), "invalid syntax\ninvalid syntax\n");
}

// Long tokens: strings inside a word kept whole with their quotes; bracketed
// parts copied through to their match, ( and [ with 1, ( only with 2.
TEST(Tokenizer, LongTokensKeepStringsAndBrackets) {
    ASSERT_GT(macrolen, 1000);
    std::vector<char> buf(static_cast<size_t>(macrolen));
    char* dst = buf.data();
    char a[] = "a\"b c\"d e";
    settok(a);
    ASSERT_EQ(gettoklong(dst, prsestd, 0), 0);
    EXPECT_STREQ(dst, "a\"b c\"d");
    EXPECT_STREQ(gettok(prsestd), "e");
    char b[] = "f(a, b)[1 2] next";
    settok(b);
    gettoklong(dst, prsestd, 1);
    EXPECT_STREQ(dst, "f(a, b)[1 2]");
    EXPECT_STREQ(gettok(prsestd), "next");
    settok(b);
    gettoklong(dst, prsestd, 2);
    EXPECT_STREQ(dst, "f(a, b)");
    EXPECT_STREQ(gettok(prsestd), "[");
    settok(b);
    gettoklong(dst, prsestd, 0);
    EXPECT_STREQ(dst, "f");
    // a group may open the token; a string in it may hold a closing bracket
    char c[] = "(x \")\" (y)) z";
    settok(c);
    gettoklong(dst, prsestd, 1);
    EXPECT_STREQ(dst, "(x \")\" (y))");
    EXPECT_STREQ(gettok(prsestd), "z");
    // a string at the start is a string token, marked as one
    char d[] = "\"p q\" r";
    settok(d);
    gettoklong(dst, prsestd, 0);
    EXPECT_STREQ(dst, "\"p q");
    // a token longer than 503 characters is whole, unlike gettok's
    std::string w(550, 'w');
    std::vector<char> e(w.begin(), w.end());
    e.push_back(0);
    settok(e.data());
    gettoklong(dst, prsestd, 0);
    EXPECT_EQ(std::string(dst), w);
    // a pushed-back token is served first
    char f[] = "later";
    settok(f);
    pushtok("first");
    gettoklong(dst, prsestd, 0);
    EXPECT_STREQ(dst, "first");
    EXPECT_STREQ(gettok(prsestd), "later");
}

TEST(Tokenizer, PushAndUnget) {
    char line[] = "a b c";
    settok(line);
    EXPECT_STREQ(gettok(prsestd), "a");
    pushtok("zz");
    EXPECT_STREQ(gettok(prsestd), "zz");
    EXPECT_STREQ(gettok(prsestd), "b");
    ungettok();
    EXPECT_STREQ(gettok(prsestd), "b");
    // a second ungettok in a row does nothing more
    ungettok();
    ungettok();
    EXPECT_STREQ(gettok(prsestd), "b");
    EXPECT_STREQ(gettok(prsestd), "c");
    // a pushed token served once can be pushed back once more
    pushtok("p");
    EXPECT_STREQ(gettok(prsestd), "p");
    ungettok();
    EXPECT_STREQ(gettok(prsestd), "p");
    EXPECT_STREQ(gettok(prsestd), "");
    EXPECT_STREQ(gettok(prsestd), ""); // the end is sticky
}

TEST(Tokenizer, SavedStates) {
    char line[] = "one two three";
    char other[] = "x y";
    settok(line);
    gettok(prsestd);
    TokPos at;
    stattok(&at);
    gettok(prsestd);
    resettok(&at);
    EXPECT_STREQ(gettok(prsestd), "two");
    TokState st;
    borrow_gettok(&st);
    settok(other);
    EXPECT_STREQ(gettok(prsestd), "x");
    return_gettok(&st);
    EXPECT_STREQ(token, "two");
    EXPECT_STREQ(gettok(prsestd), "three");
}

TEST(Tokenizer, Scanners) {
    char a[] = "(a]rest";
    int err = -1;
    char* e = pbrackets(a, &err);
    EXPECT_EQ(err, 0);
    EXPECT_STREQ(e, "rest");
    char b[] = "(f(x, \")\") [1]) tail";
    e = pbrackets(b, &err);
    EXPECT_EQ(err, 0);
    EXPECT_STREQ(e, " tail");
    char c[] = "(never";
    e = pbrackets(c, &err);
    EXPECT_EQ(err, 1);
    EXPECT_EQ(*e, 0);
    char d[] = "`\"a `\"b\"' c\"' after";
    int depth = -1;
    e = pcompoundquotes(d, &depth);
    EXPECT_EQ(depth, 0);
    EXPECT_STREQ(e, " after");
    char f[] = "`\"open";
    pcompoundquotes(f, &depth);
    EXPECT_EQ(depth, 1);
    char g[] = "  `\"x \"y\" z\"' w";
    char *s, *en, *nx;
    ASSERT_EQ(parse_quoted_string(g, &s, &en, &nx), 0);
    EXPECT_EQ(std::string(s, en), "x \"y\" z");
    EXPECT_STREQ(nx, " w");
    char h[] = "\"unterminated";
    EXPECT_EQ(parse_quoted_string(h, &s, &en, &nx), 1);
    EXPECT_EQ(s, nullptr);
    // from the tokenizer's last start, past the 503-character cut
    std::string longstr = "\"" + std::string(700, 'q') + "\" next";
    std::vector<char> buf(longstr.begin(), longstr.end());
    buf.push_back(0);
    settok(buf.data());
    gettok(prsestd);
    ASSERT_EQ(parse_quoted_string(nullptr, &s, &en, &nx), 0);
    EXPECT_EQ(en - s, 700);
    EXPECT_STREQ(gettok(prsestd), "next");
}

TEST(Tokenizer, Cmdcmp) {
    EXPECT_TRUE(cmdcmp("su", "summarize", 2));
    EXPECT_FALSE(cmdcmp("s", "summarize", 2));
    EXPECT_FALSE(cmdcmp("summarizes", "summarize", 2));
    EXPECT_FALSE(cmdcmp("Su", "summarize", 2));
    EXPECT_TRUE(cmdcmp_lc("SU", "summarize", 2));
    EXPECT_TRUE(cmdcmp("", "", 0));
    EXPECT_FALSE(cmdcmp("", "x", 0));
    EXPECT_FALSE(cmdcmp("sx", "summarize", 1));
    EXPECT_EQ(cmdhash(""), 0u);
    // h = h*31 + byte, then modulo 1997333137
    EXPECT_EQ(cmdhash("ab"), static_cast<uint32_t>(97 * 31 + 98));
    uint64_t h = 0;
    for (char c : std::string("a much longer line of text to hash")) h = (h * 31 + c) & 0xffffffffu;
    EXPECT_EQ(cmdhash("a much longer line of text to hash"), h % 1997333137u);
}

// File names: whole up to the one file-name length, refused (never cut) when
// they do not fit the caller's buffer.
TEST(Tokenizer, FileNamesAreNeverCut) {
    static char line[3 * FNLEN];
    char dst[FNLEN];
    auto setline = [&](const std::string& s) {
        snprintf(line, sizeof line, "%s", s.c_str());
        settok(line);
    };
    std::string d600 = "/tmp/" + std::string(595, 'd'); // 600 characters
    setline(d600 + "/x.dta, replace");
    ASSERT_EQ(gettokfn(dst, sizeof dst), 0);
    EXPECT_EQ(std::string(dst), d600 + "/x.dta");
    EXPECT_EQ(std::string(gettok(prsestd)), ",");
    // quoted, with blanks
    setline("\"" + std::string(700, 'q') + " r.do\" x");
    ASSERT_EQ(gettokfn(dst, sizeof dst), 0);
    EXPECT_EQ(std::string(dst), std::string(700, 'q') + " r.do");
    EXPECT_EQ(std::string(gettok(prsestd)), "x");
    // a buffer of 10 bytes takes 9 characters, and no more
    char small[10];
    setline("abcdefghi");
    EXPECT_EQ(gettokfn(small, sizeof small), 0);
    EXPECT_STREQ(small, "abcdefghi");
    setline("abcdefghij");
    EXPECT_EQ(gettokfn(small, sizeof small), 7199);
    EXPECT_STREQ(small, "");
    // the longest name the system takes is FNLEN - 1 characters
    setline(std::string(FNLEN - 1, 'f'));
    EXPECT_EQ(gettokfn(dst, sizeof dst), 0);
    EXPECT_EQ(strlen(dst), FNLEN - 1);
    setline(std::string(FNLEN, 'f') + " y");
    EXPECT_EQ(gettokfn(dst, sizeof dst), 7199);
    setline("\"" + std::string(FNLEN + 5, 'f') + "\"");
    EXPECT_EQ(gettokfn(dst, sizeof dst), 7199);
    // no name: the end, a comma, a close parenthesis, an empty string
    for (const char* s : {"", ", replace", ") x", "\"\""}) {
        setline(s);
        EXPECT_EQ(gettokfn(dst, sizeof dst), 7197) << s;
    }
    // after a refusal for want of a name the comma is still the token
    setline(", replace");
    gettokfn(dst, sizeof dst);
    EXPECT_STREQ(token, ",");
    // a pushed-back token is taken as the name
    setline("b.dta");
    pushtok("a.dta");
    EXPECT_EQ(gettokfn(dst, sizeof dst), 0);
    EXPECT_STREQ(dst, "a.dta");
}
