// Paragraph mode: filling, sentence spacing, the end of a paragraph, words
// held across sends, links in a paragraph, and the two-column layout.
#include <gtest/gtest.h>

#include "ptl_engine.h"

#include <string>
#include <vector>

#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

using Lines = std::vector<std::string>;

const char* kSentences = "{p}\nThis is the end.  Next starts here. And this one: yes!  Done.\n\n";

TEST(PtlPara, SentenceSpacingAtWidth79) {
    Engine e(79);
    e.send(kSentences);
    EXPECT_EQ(e.texts(),
              (Lines{"This is the end.  Next starts here. And this one: yes!  Done.", ""}));
    EXPECT_EQ(ptlquery_mode(e.p), PTL_LINEMODE);
}

TEST(PtlPara, SentenceSpacingAtWidth40) {
    Engine e(40);
    e.send(kSentences);
    EXPECT_EQ(e.texts(),
              (Lines{"This is the end.  Next starts here. And", "this one: yes!  Done.", ""}));
    EXPECT_EQ(e.cap.lines[1][8], 1);
}

TEST(PtlPara, LineEndInTheSourceKeepsTwoBlanks) {
    Engine e;
    e.send("{p}\nend.\nNext and\nmore\n\n");
    EXPECT_EQ(e.texts(), (Lines{"end.  Next and more", ""}));
}

TEST(PtlPara, MarginsAndIndents) {
    Engine e(40);
    // first-line indent 4, left indent 8, right margin 2: width 38
    e.send("{phang}\naaaa bbbb cccc dddd eeee ffff gggg hhhh iiii jjjj kkkk\n\n");
    EXPECT_EQ(e.texts(),
              (Lines{"    aaaa bbbb cccc dddd eeee ffff gggg", "        hhhh iiii jjjj kkkk", ""}));
    EXPECT_EQ(ptlquery_maxwidth(e.p), 40);
    EXPECT_EQ(e.p->width, 40); // restored after the paragraph
}

TEST(PtlPara, LongWordIsCutWithTheMark) {
    Engine e(40);
    e.send("{p}\nshort " + std::string(50, 'w') + " end\n\n");
    EXPECT_EQ(e.texts(),
              (Lines{"short", std::string(40, 'w'), "> " + std::string(10, 'w') + " end", ""}));
}

TEST(PtlPara, EmptyLineEndsItOnlyAfterALineFeedInItsSend) {
    Engine e;
    e.send("{p}\n");
    e.send("word");
    e.send("\n"); // the line of "word" ends here
    EXPECT_EQ(ptlquery_mode(e.p), PTL_PARA);
    e.send("\n"); // and this is the empty line
    EXPECT_EQ(ptlquery_mode(e.p), PTL_LINEMODE);
    EXPECT_EQ(e.texts(), (Lines{"word", ""}));
}

TEST(PtlPara, WordHeldAcrossSends) {
    Engine e;
    e.send("{p}\nsplit wo");
    e.send("rd here");
    e.send("{bf:bold}tail.\n\n");
    EXPECT_EQ(e.texts(), (Lines{"split word hereboldtail.", ""}));
    const uint8_t* runs = tpl_runs(e.cap.lines[0].data());
    EXPECT_EQ(runs[0], 2);  // three runs: text, bold, text
    EXPECT_EQ(runs[3], 15); // bold starts at "bold"
    EXPECT_EQ(runs[4], COL_TEXT | ATTR_BOLD);
}

TEST(PtlPara, PEndDropsTheLineFeedAndTheEmptyLine) {
    Engine e;
    e.send("{pstd}\nsome text{p_end}\nnext\n");
    EXPECT_EQ(e.texts(), (Lines{"    some text", "next"}));
}

TEST(PtlPara, NonBreakingBlanks) {
    Engine e(40);
    e.send("{p}\n" + std::string(30, 'a') + " x{space 3}y {bind:b c d}\n\n");
    EXPECT_EQ(e.texts(), (Lines{std::string(30, 'a') + " x   y", "b c d", ""}));
}

TEST(PtlPara, LinkInAParagraphStaysOpenForItsHeldWord) {
    Engine e(40);
    e.send("{p}\nsee ({help regress:linear regression}) and more\n\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    EXPECT_EQ(e.cap.text(0), "see (linear regression) and more");
    const uint8_t* t = e.cap.lines[0].data();
    int kind;
    const uint8_t* entry = tpl_clickable(tpl_links(t), 5, nullptr);
    ASSERT_NE(entry, nullptr);
    EXPECT_STREQ(tpl_clickable_contents(entry, &kind), "regress");
    EXPECT_EQ(entry[0], 5);  // starts at the word, not at the parenthesis
    EXPECT_EQ(entry[1], 22); // ends before ")"
    EXPECT_EQ(tpl_links(t)[0], 1);
}

TEST(PtlPara, LinkWrappedOverTwoLines) {
    Engine e(40);
    e.send("{p}\n" + std::string(30, 'a') + " {help x:one two three}\n\n");
    ASSERT_EQ(e.cap.lines.size(), 3u);
    EXPECT_EQ(e.cap.text(0), std::string(30, 'a') + " one two");
    EXPECT_EQ(e.cap.text(1), "three");
    const uint8_t* l0 = tpl_links(e.cap.lines[0].data());
    const uint8_t* l1 = tpl_links(e.cap.lines[1].data());
    EXPECT_EQ(std::vector<int>({l0[0], l0[1], l0[2]}), std::vector<int>({1, 31, 38}));
    EXPECT_EQ(std::vector<int>({l1[0], l1[1], l1[2]}), std::vector<int>({1, 0, 5}));
}

TEST(PtlPara, TabsAreTwoBlanks) {
    Engine e;
    e.send("{p}\na\tb\n\n");
    EXPECT_EQ(e.cap.text(0), "a b");
}

TEST(PtlPara, MarkersSurviveEnteringAParagraph) {
    Engine e;
    e.send("{marker m}{p}\nx\n\n");
    EXPECT_STREQ(reinterpret_cast<const char*>(tpl_markers(e.cap.lines[0].data())), "m");
}

TEST(PtlPara, BreakEndsTheLineAndResetsTheCount) {
    Engine e;
    e.send("{p}\none{break}two three\n\n");
    EXPECT_EQ(e.texts(), (Lines{"one", "two three", ""}));
    EXPECT_EQ(e.cap.lines[1][8], 0);
}

TEST(PtlPara, TwoColumnLayout) {
    Engine e(40);
    e.send("{p2colset 2 12 14 2}{...}\n"
           "{p2col:first}second column text that wraps around the margin{p_end}\n"
           "{p2col:a_very_long_first_col}x{p_end}\n"
           "after\n");
    EXPECT_EQ(e.texts(),
              (Lines{" first     second column text that", "             wraps around the margin",
                     " a_very_long_first_col", "             x", "after"}));
    EXPECT_EQ(e.cap.lines[1][8], 1);
    EXPECT_EQ(e.cap.lines[3][8], 0); // {break} reset the count
}

TEST(PtlPara, TwoColumnWithDentAndDefaults) {
    Engine e(60);
    e.send("{p2colset 3 20 22 0 4}{p2coldent:dent}text{p_end}\n");
    e.send("{p2colreset}{p2col:x}y{p_end}\n");
    EXPECT_EQ(e.texts(), (Lines{"      dent         text", "x                             y"}));
}

TEST(PtlPara, P2colsetRules) {
    Engine e;
    // second not above first; above 255; a negative dent as large as the first column
    e.send("{p2colset 5 5 8 2}{p2colset 300 1 2 3}{p2colset 3 10 12 0 -3}\n");
    EXPECT_EQ(e.cap.text(0), "{p2colset 5 5 8 2}{p2colset 300 1 2 3}{p2colset 3 10 12 0 -3}");
    e.send("{p2colset 4 10 12 0 -3}");
    EXPECT_EQ(std::vector<int>(e.p->p2, e.p->p2 + 5), std::vector<int>({4, 10, 12, 0, -3}));
    // a 0 counts as 1; without a fifth number the dent stands
    e.send("{p2colset 0 10 12 0}");
    EXPECT_EQ(std::vector<int>(e.p->p2, e.p->p2 + 5), std::vector<int>({1, 10, 12, 0, -3}));
}

TEST(PtlPara, OptionTable) {
    Engine e(60);
    e.send("{synoptset 20 tabbed}{...}\n{synopthdr}\n{synoptline}\n{syntab:Main}\n"
           "{synopt:{opt d:etail}}display additional statistics and more text so that it "
           "wraps{p_end}\n"
           "{synoptline}\n");
    EXPECT_EQ(e.texts(),
              (Lines{"    options               description", "    " + std::string(54, '-'),
                     "    Main", "      detail              display additional statistics",
                     "                            and more text so that it wraps",
                     "    " + std::string(54, '-')}));
    // options in italics
    const uint8_t* runs = tpl_runs(e.cap.lines[0].data());
    EXPECT_EQ(runs[4], COL_TEXT | ATTR_ITALIC);
}

TEST(PtlPara, TwoColumnLine) {
    Engine e(40);
    e.send("{p2colset 3 10 12 5}{p2line}\n{p2line 1 2}\nx\n");
    EXPECT_EQ(e.texts(), (Lines{"  " + std::string(33, '-'), "   " + std::string(34, '-'), "x"}));
}

} // namespace
} // namespace korvu
