// The input path: held tag text and held "{ptag}\n" across sends, failed tags
// shown literally, asis mode and the way out of it, raw sends, line endings.
#include <gtest/gtest.h>

#include "ptl_engine.h"

#include <cstring>
#include <string>
#include <vector>

#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

using Bytes = std::vector<uint8_t>;
Bytes B(std::initializer_list<int> v) {
    return Bytes(v.begin(), v.end());
}
Bytes S(const char* s) {
    return Bytes(s, s + strlen(s));
}
Bytes cat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& b : parts) out.insert(out.end(), b.begin(), b.end());
    return out;
}

TEST(PtlInput, TagSplitOverTwoSends) {
    Engine e;
    e.send("x{hi");
    EXPECT_TRUE(e.cap.lines.empty());
    EXPECT_EQ(e.p->nheld, 3);
    e.send("}y\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    Bytes want = cat({B({23, 0, 13, 0, 14, 0, 20, 0, 0, 3}), B({0, 0, 0}), B({0}),
                      B({1, 0, 2, 1, 7, 2}), S("xy"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
}

TEST(PtlInput, BraceAloneAtTheEndOfASendIsHeld) {
    Engine e;
    e.send("{");
    e.send("hi");
    e.send("}x\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "x");
    EXPECT_EQ(tpl_runs(e.cap.lines[0].data())[2], COL_HILITE);
}

TEST(PtlInput, HeldTagTextBeforeALineFeedShowsLiterally) {
    Engine e;
    e.send("a{bf");
    e.send("\nb\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    EXPECT_EQ(e.cap.text(0), "a{bf");
    EXPECT_EQ(e.cap.text(1), "b");
}

TEST(PtlInput, FailedTagShowsLiterally) {
    Engine e;
    e.send("{bad {res}x}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    // "{bad " as text, the inner tag works, "x}" in colour 1
    Bytes want = cat({B({28, 0, 13, 0, 14, 0, 20, 0, 0, 8}), B({0, 0, 0}), B({0}),
                      B({1, 0, 2, 5, 1, 7}), S("{bad x}"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
}

TEST(PtlInput, UnknownAndOptionalTags) {
    Engine e;
    e.send("{unknown} {?unknown:x} {?unknown}.{?bf:b}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "{unknown} x .b");
    EXPECT_EQ(tpl_runs(e.cap.lines[0].data())[0], 1); // b is bold
}

TEST(PtlInput, WrongArgumentsFail) {
    Engine e;
    e.send("{hline 300}{hline x}{res foo}{reset:x}{dup 1000:a}{ul maybe}{c nosuch}{col 0}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0),
              "{hline 300}{hline x}{res foo}{reset:x}{dup 1000:a}{ul maybe}{c nosuch}{col 0}");
}

TEST(PtlInput, CommentsVanish) {
    Engine e;
    e.send("a{* a comment {with} braces}b\n");
    EXPECT_EQ(e.cap.text(0), "ab");
}

TEST(PtlInput, PtagSplitAcrossSendsInLineMode) {
    Engine e;
    e.send("abc{pt");
    EXPECT_EQ(e.p->nprefix, 3);
    EXPECT_TRUE(e.cap.lines.empty());
    e.send("ag}\n");
    // the switch to line mode ends the unfinished line
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "abc");
    EXPECT_EQ(e.p->nprefix, 0);
}

TEST(PtlInput, HeldPrefixNotCompletedIsProcessedAsInput) {
    Engine e;
    e.send("{pt");
    e.send("x}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "{ptx}");
}

TEST(PtlInput, PtagOnlyCountsAtTheEndOfABlock) {
    Engine e;
    e.send("{ptag} x\n");
    EXPECT_EQ(e.cap.text(0), "{ptag} x");
}

TEST(PtlInput, AsisModeAndTheWayOut) {
    Engine e;
    e.send("{asis}\n");
    EXPECT_EQ(ptlquery_mode(e.p), PTL_ASIS);
    e.send("{bf:not a tag}\n\tx\n");
    e.send("{pt");
    EXPECT_EQ(ptlquery_mode(e.p), PTL_ASIS);
    e.send("ag}\n{bf:bold}\n");
    EXPECT_EQ(ptlquery_mode(e.p), PTL_LINEMODE);
    ASSERT_EQ(e.cap.lines.size(), 3u);
    EXPECT_EQ(e.cap.text(0), "{bf:not a tag}");
    EXPECT_EQ(e.cap.text(1), "        x");
    EXPECT_EQ(e.cap.text(2), "bold");
    EXPECT_EQ(tpl_runs(e.cap.lines[2].data())[2], COL_TEXT | ATTR_BOLD);
}

TEST(PtlInput, AsisInTheMiddleOfASend) {
    Engine e;
    e.send("a\n{asis}\n{x}\n{ptag}\n{res}y\n");
    ASSERT_EQ(e.cap.lines.size(), 3u);
    EXPECT_EQ(e.cap.text(0), "a");
    EXPECT_EQ(e.cap.text(1), "{x}");
    EXPECT_EQ(e.cap.text(2), "y");
}

TEST(PtlInput, AsisLinesAreCutWithTheMark) {
    Engine e(40);
    e.send("{asis}\n" + std::string(45, 'a') + "\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    EXPECT_EQ(e.cap.text(0), std::string(40, 'a'));
    EXPECT_EQ(e.cap.text(1), "> " + std::string(5, 'a'));
}

TEST(PtlInput, ModeTagsAreRefusedBelowTheOuterLevel) {
    Engine e;
    e.send("{dup 1:{asis}x}{res:{p}}\n");
    EXPECT_EQ(ptlquery_mode(e.p), PTL_LINEMODE);
    EXPECT_EQ(e.cap.text(0), "{asis}x{p}");
}

TEST(PtlInput, RawSendShowsBraces) {
    Engine e;
    e.raw("{res}x\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "{res}x");
    EXPECT_EQ(tpl_runs(e.cap.lines[0].data())[0], 0); // one run: no colour change
}

TEST(PtlInput, ColorsetSendsATagOnlyOnAChange) {
    Engine e;
    ptlcolorset(e.p, COL_RESULT);
    EXPECT_EQ(e.p->attr, COL_RESULT);
    ptlcolorset(e.p, COL_RESULT);
    e.raw("a");
    ptlcolorset(e.p, COL_ERROR);
    e.raw("b\n");
    const uint8_t* runs = tpl_runs(e.cap.lines[0].data());
    EXPECT_EQ(B({runs[0], runs[1], runs[2], runs[3], runs[4], runs[5]}), B({1, 0, 1, 1, 4, 2}));
}

TEST(PtlInput, PtagSetEndsAnUnfinishedLine) {
    Engine e;
    ptlptagset(e.p); // line mode, empty line: nothing
    ptlptagsetweak(e.p);
    EXPECT_TRUE(e.cap.lines.empty());
    e.send("abc");
    ptlptagsetweak(e.p); // line mode: nothing
    EXPECT_TRUE(e.cap.lines.empty());
    ptlptagset(e.p);
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "abc");
    e.send("{asis}\n");
    ptlptagsetweak(e.p);
    EXPECT_EQ(ptlquery_mode(e.p), PTL_LINEMODE);
}

TEST(PtlInput, PromptSetResetsFontAndUnderline) {
    Engine e;
    e.send("{bf}{ul on}{res}");
    ptlpromptset(e.p);
    EXPECT_EQ(e.p->attr, COL_INPUT);
}

TEST(PtlInput, GenasciiNormalisesLineEndings) {
    Engine e;
    uint8_t st;
    ptlsend_genascii_begin(&st);
    const char a[] = "a\r\nb\rc\r";
    const char b[] = "\nd\n";
    ptlsend_genascii(&st, e.p, a, static_cast<int>(strlen(a)));
    ptlsend_genascii(&st, e.p, b, static_cast<int>(strlen(b)));
    ASSERT_EQ(e.cap.lines.size(), 4u);
    EXPECT_EQ(e.cap.all_text(), "a\nb\nc\nd\n");
}

TEST(PtlInput, LineFeedAfterDotsDoesNotEndTheLine) {
    Engine e;
    e.send("a{...}\nb\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "ab");
}

TEST(PtlInput, LongLineIsCutByCharacter) {
    Engine e(40);
    e.send(std::string(38, 'a') + " bcdef\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    EXPECT_EQ(e.cap.text(0), std::string(38, 'a') + " b");
    EXPECT_EQ(e.cap.text(1), "> cdef");
    EXPECT_EQ(e.cap.lines[1][8], 0); // not a paragraph continuation
}

TEST(PtlInput, WidthIsClamped) {
    Engine e;
    ptlset_maxwidth(e.p, 20);
    EXPECT_EQ(ptlquery_maxwidth(e.p), 40);
    ptlset_maxwidth(e.p, 1000);
    EXPECT_EQ(ptlquery_maxwidth(e.p), 255);
    PtlChars c{100, 1};
    ptlset_chars(e.p, &c);
    PtlChars q{};
    ptlquery_chars(e.p, &q);
    EXPECT_EQ(q.width, 100);
    EXPECT_EQ(q.rich, 1);
}

TEST(PtlInput, IgnoreFlagDropsSends) {
    Engine e;
    ptlset_ignore(e.p, 1);
    e.send("x\n");
    EXPECT_TRUE(e.cap.lines.empty());
}

TEST(PtlInput, UserOffAndOn) {
    Engine e;
    ptlset_useroff(e.p);
    e.send("x\n");
    EXPECT_TRUE(e.cap.lines.empty());
    ptlset_useron(e.p);
    e.send("y\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "y");
    EXPECT_EQ(ptluserrtn2(e.p, PTL_FOLLOW), 0);
    EXPECT_EQ(e.cap.msgs.back(), PTL_FOLLOW);
}

TEST(PtlInput, CloseShowsWhatIsUnfinished) {
    PtlCapture cap;
    Ptl* p = ptlopen();
    ptlset_user(p, ptl_capture_sink, &cap);
    ptlsend(p, "ab{pt", 5);
    ptlclose(p);
    ASSERT_EQ(cap.partials.size(), 1u);
    EXPECT_STREQ(tpl_text(cap.partials[0].data()), "ab{pt");
    EXPECT_EQ(cap.msgs, (std::vector<int>{PTL_PARTIAL, PTL_FLUSH, PTL_CLOSING}));
}

} // namespace
} // namespace korvu
