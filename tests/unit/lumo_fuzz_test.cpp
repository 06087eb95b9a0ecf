// The compiler under random and mutated program text, in the normal build:
// the same checks as the libFuzzer harness (no workspace left behind, code
// that walks instruction by instruction, jumps onto instructions, a byte
// swap that comes back), over a few thousand inputs from a fixed seed.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "../fuzz/lumo_fuzz_one.h"
#include "kernel/dict/dict.h"
#include "output/spout.h"

using namespace korvu;

namespace {

const char* const seeds[] = {
    "x = 1",
    "y = -2^2",
    "a*b/c + d :* e' \\ f",
    "a = b = 1; c = a ? b : 2",
    "x++ + ++x - x-- - --x",
    "z = a[1,2]' , a[|1,1\\2,2|]",
    "a[1..3, 2::4] = J(3,3,0)",
    "if (a == b) x = 2; else { y = 3 }",
    "for (i = 1; i <= 10; i++) { if (i == 3) continue; if (i > 5) break }",
    "while (x) x--",
    "do x++ while (x < 3)",
    "real scalar f(real scalar x) { real scalar y; y = x + 1; return(y) }",
    "string scalar g(string scalar s | real rowvector r, pointer scalar p) {\n"
    "  external real scalar glob\n  return(s + strofreal(glob))\n}",
    "struct S {\n real vector x\n struct S scalar next\n}",
    "function h(pointer(struct S scalar) scalar p) { return(p->x[1] + p->next->x[2]) }",
    "function k(struct S scalar s) { return(s.next.x) }",
    "void loops(n) {\n while (n > 0) n--\n goto out\n n = 7\nout:\n version 9\n}",
    "function q(f()) { return((*f)(1, 2) + &q()) }",
    "/* a comment\n across lines */ x = \"str\" + \"ing\" // the end",
    "printf(\"%g\\n\", 3); rows(x); cols(x)",
    "function n(a, b) { real scalar u; pragma unset u; pragma unused b; return(u + a) }",
    "x = 1i + .a + . + 1e300 + 2.5e-3",
    "(void) f(1)",
    "x = !a & b | c :& d :| e",
    "x = 1 :== 2 :!= 3 :< 4 :<= 5 :> 6 :>= 7",
    "x = NULL",
};

const char* const words[] = {
    "x",         "y",         "f",       "(",        ")",      "[",        "]",
    "[|",        "|]",        "{",       "}",        ",",      ";",        "\\",
    "=",         "==",        "+",       "-",        "*",      "/",        "^",
    "'",         ":+",        "::",      "..",       "->",     ".",        "?",
    ":",         "&",         "|",       "!",        "++",     "--",       "1",
    "0",         "2.5",       ".",       "\"s\"",    "if",     "else",     "for",
    "while",     "do",        "break",   "continue", "return", "goto",     "real",
    "scalar",    "string",    "matrix",  "pointer",  "struct", "function", "external",
    "void",      "pragma",    "unset",   "version",  "end",    "\n",       "/*",
    "*/",        "//",        "#",       "2i",       "rows",   "NULL",     "transmorphic",
    "colvector", "rowvector", "numeric", "complex"};

struct LumoFuzz : ::testing::Test {
    uint8_t lev = 0;
    void SetUp() override {
        dminit();
        lev = s_outlev;
        s_outlev = 5;
    }
    void TearDown() override {
        s_outlev = lev;
        m_optimize = 1;
        m_strict = 0;
    }
};

bool feed(const std::string& s) {
    return lumofuzz::run_one(reinterpret_cast<const uint8_t*>(s.data()), s.size());
}

TEST_F(LumoFuzz, SeedsCompileCleanly) {
    for (const char* s : seeds) EXPECT_TRUE(feed(s)) << s;
}

TEST_F(LumoFuzz, MutatedProgramsNeverBreakTheChecks) {
    std::mt19937 rng(20261123);
    const int nseeds = sizeof seeds / sizeof seeds[0];
    const int nwords = sizeof words / sizeof words[0];
    for (int k = 0; k < 3000; k++) {
        std::string s = seeds[rng() % nseeds];
        const int edits = 1 + static_cast<int>(rng() % 6);
        for (int e = 0; e < edits && !s.empty(); e++) {
            const size_t at = rng() % (s.size() + 1);
            switch (rng() % 4) {
            case 0: // delete a run
                s.erase(at, rng() % 4);
                break;
            case 1: // insert a word of the language
                s.insert(at, std::string(" ") + words[rng() % nwords] + " ");
                break;
            case 2: // any byte
                s.insert(s.begin() + static_cast<long>(at), static_cast<char>(rng() % 256));
                break;
            default: // splice another seed
                s.insert(at, seeds[rng() % nseeds]);
                break;
            }
        }
        ASSERT_TRUE(feed(s)) << s;
    }
}

TEST_F(LumoFuzz, RandomTokenSoupNeverBreakTheChecks) {
    std::mt19937 rng(7);
    const int nwords = sizeof words / sizeof words[0];
    for (int k = 0; k < 2000; k++) {
        std::string s;
        const int n = 1 + static_cast<int>(rng() % 40);
        for (int i = 0; i < n; i++) s += std::string(words[rng() % nwords]) + " ";
        ASSERT_TRUE(feed(s)) << s;
    }
    // deep nesting and long expressions stay within their limits
    EXPECT_TRUE(feed(std::string(150, '(') + "1" + std::string(150, ')')));
    std::string longsum = "x = 1";
    for (int i = 0; i < 1500; i++) longsum += " + y";
    EXPECT_TRUE(feed(longsum));
    EXPECT_TRUE(feed(std::string(3000, '-') + "x"));
}

} // namespace
