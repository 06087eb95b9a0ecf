// Line templates built from known input, compared byte for byte with the
// template layout, worked out by hand.
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

TEST(PtlTemplate, PlainText) {
    Engine e;
    e.send("hi\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    // header | links: count 0 and two zero bytes | markers: empty name |
    // runs: last index 0, run (0, attr 2), end 2 | text
    Bytes want = cat({B({21, 0, 13, 0, 14, 0, 18, 0, 0, 3}), B({0, 0, 0}), B({0}), B({0, 0, 2, 2}),
                      S("hi"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
}

TEST(PtlTemplate, EmptyLineIsThePrerenderedOne) {
    Engine e;
    e.send("\n");
    Bytes want = B({19, 0, 13, 0, 14, 0, 18, 0, 0, 1, 0, 0, 0, 0, 0, 0, 2, 0, 0});
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.lines[0], want);
    EXPECT_EQ(Bytes(tpl_empty, tpl_empty + tpl_empty_len), want);
}

TEST(PtlTemplate, RunsWithAttributes) {
    Engine e;
    // a: text; b: result; c: result bold (text only); d: result italic;
    // e: italic underlined; then text colour and a vertical line: line art.
    e.send("a{res}b{bf:c}{it}d{ul:e}{txt}{c |}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    Bytes want = cat({B({35, 0, 13, 0, 14, 0, 28, 0, 0, 7}), B({0, 0, 0}), B({0}),
                      B({5, 0, 2, 1, 1, 2, 1 | 16, 3, 1 | 8, 4, 1 | 8 | 32, 5, 2 | 8 | 128, 6}),
                      S("abcde|"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
}

TEST(PtlTemplate, LineArtRunsAndCorners) {
    Engine e;
    e.send("{hline 2}{c TLC}{c TT}{c BRC}x\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    Bytes want = cat({B({27, 0, 13, 0, 14, 0, 20, 0, 0, 7}), B({0, 0, 0}), B({0}),
                      B({1, 0, 130, 5, 2, 6}), B({'-', '-', 8, 1, 5, 'x', 0})});
    EXPECT_EQ(e.cap.lines[0], want);
    const uint8_t* t = e.cap.lines[0].data();
    EXPECT_EQ(tpl_has_wide(tpl_runs(t)), 1);
    std::string text(tpl_text(t));
    tpl_make_ascii(tpl_runs(t), text.data());
    EXPECT_EQ(text, "--+-+x");
}

TEST(PtlTemplate, LinkWithKindAndTarget) {
    Engine e;
    e.send("see {help regress:reg} now\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    // link entry: start 4, end 7, kind 12, target length with terminator 8
    Bytes want =
        cat({B({46, 0, 25, 0, 26, 0, 34, 0, 0, 12}), B({1, 4, 7, 12, 8}), S("regress"), B({0}),
             B({0, 0}), B({0}), B({2, 0, 2, 4, 6, 7, 2, 11}), S("see reg now"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
    const uint8_t* t = e.cap.lines[0].data();
    int idx = 0, kind = 0;
    EXPECT_EQ(tpl_clickable(tpl_links(t), 3, &idx), nullptr);
    EXPECT_EQ(idx, -1);
    const uint8_t* entry = tpl_clickable(tpl_links(t), 5, &idx);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(idx, 0);
    EXPECT_STREQ(tpl_clickable_contents(entry, &kind), "regress");
    EXPECT_EQ(kind, 12);
    EXPECT_EQ(tpl_clickable(tpl_links(t), 7, &idx), nullptr);
}

TEST(PtlTemplate, HelpbIsStoredAsHelpAndShownBold) {
    Engine e;
    e.send("{helpb regress}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    // colour 6 bold = 22; kind 12
    Bytes want = cat({B({38, 0, 25, 0, 26, 0, 30, 0, 0, 8}), B({1, 0, 7, 12, 8}), S("regress"),
                      B({0, 0, 0}), B({0}), B({0, 0, 22, 7}), S("regress"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
    // afterwards the colour and font are as before
    EXPECT_EQ(e.p->attr, 2);
}

TEST(PtlTemplate, LinkKindsFromTheTable) {
    Engine e;
    e.send("{search foo:a}{browse \"http://x y\":b}{back:c}{update:u}{korvu cmd:d}{lumocmd m:e}"
           "{dialog d:f}{view_d:g}{clearmore:h}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    const uint8_t* t = e.cap.lines[0].data();
    EXPECT_STREQ(tpl_text(t), "abcudefgh");
    struct Want {
        int col, kind;
        const char* target;
    } want[] = {{0, 14, "foo"}, {1, 9, "http://x y"}, {2, 11, ""}, {3, 17, ""}, {4, 21, "cmd"},
                {5, 23, "m"},   {6, 25, "d"},         {7, 7, ""},  {8, 8, ""}};
    for (const Want& w : want) {
        int idx, kind;
        const uint8_t* entry = tpl_clickable(tpl_links(t), w.col, &idx);
        ASSERT_NE(entry, nullptr) << w.col;
        EXPECT_STREQ(tpl_clickable_contents(entry, &kind), w.target);
        EXPECT_EQ(kind, w.kind);
    }
    EXPECT_EQ(tpl_links(t)[0], 9);
}

TEST(PtlTemplate, LinkArgumentRules) {
    Engine e;
    // help must have an argument; back must not; blank text fails (update without
    // argument or text has none); no link in a link
    e.send("{help}{back x:y}{help x: }{update}{help a:{help b:c}}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "{help}{back x:y}{help x: }{update}{help b:c}");
}

TEST(PtlTemplate, Markers) {
    Engine e;
    e.send("{marker here}{newpage}x\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    Bytes want = cat({B({27, 0, 13, 0, 21, 0, 25, 0, 0, 2}), B({0, 0, 0}), S("here"),
                      B({0, 12, 0, 0}), B({0, 0, 2, 1}), S("x"), B({0})});
    EXPECT_EQ(e.cap.lines[0], want);
}

TEST(PtlTemplate, MarkerNameCutAndAreaFull) {
    Engine e;
    std::string name(40, 'm');
    e.send("{marker " + name + "}{marker " + name + "}{marker " + name + "}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    const uint8_t* t = e.cap.lines[0].data();
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(tpl_markers(t))), std::string(32, 'm'));
    // two names of 33 bytes fit in 99, a third does not and shows as text
    EXPECT_EQ(e.cap.text(0), "{marker " + name + "}");
}

TEST(PtlTemplate, ContinuationFlagInParagraphMode) {
    Engine e(40);
    e.send("{p}\none two three four five six seven eight nine ten eleven twelve thirteen "
           "fourteen fifteen sixteen\n\n");
    ASSERT_EQ(e.cap.lines.size(), 4u);
    EXPECT_EQ(e.cap.text(0), "one two three four five six seven eight");
    EXPECT_EQ(e.cap.text(1), "nine ten eleven twelve thirteen fourteen");
    EXPECT_EQ(e.cap.lines[0][8], 0);
    EXPECT_EQ(e.cap.lines[1][8], 1);
    Bytes want = cat({B({34, 0, 13, 0, 14, 0, 18, 0, 1, 16}), B({0, 0, 0}), B({0}),
                      B({0, 0, 2, 15}), S("fifteen sixteen"), B({0})});
    EXPECT_EQ(e.cap.lines[2], want);
    // the empty line that ends the paragraph is not a continuation
    EXPECT_EQ(e.cap.lines[3], B({19, 0, 13, 0, 14, 0, 18, 0, 0, 1, 0, 0, 0, 0, 0, 0, 2, 0, 0}));
}

TEST(PtlTemplate, LinkCrossingTheLineEndReopens) {
    Engine e(40);
    std::string text(45, 'x');
    e.send("ab{view f:" + text + "}\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    const uint8_t* l0 = e.cap.lines[0].data();
    const uint8_t* l1 = e.cap.lines[1].data();
    // first line: link from 2 to the margin; second: after the mark "> "
    EXPECT_EQ(B({l0[10], l0[11], l0[12], l0[13]}), B({1, 2, 40, 19}));
    EXPECT_EQ(B({l1[10], l1[11], l1[12], l1[13]}), B({1, 2, 9, 19}));
    EXPECT_EQ(e.cap.text(1), "> " + std::string(7, 'x'));
}

TEST(PtlTemplate, RenpieceWalksTheRuns) {
    Engine e;
    e.send("ab{res}cd{txt}e\n");
    const uint8_t* runs = tpl_runs(e.cap.lines[0].data());
    uint8_t a = 0;
    EXPECT_EQ(tpl_renpiece(runs, 0, &a), 2);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(tpl_renpiece(runs, 2, &a), 4);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(tpl_renpiece(runs, 3, &a), 4); // inside a run
    EXPECT_EQ(a, 1);
    EXPECT_EQ(tpl_renpiece(runs, 4, &a), 5);
    EXPECT_EQ(a, 2);
    EXPECT_EQ(tpl_renpiece(runs, 9, &a), 0);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(tpl_has_wide(runs), 0);
}

TEST(PtlTemplate, FindTagAndTagmatch) {
    const char list[] = "help\0search\0\0";
    EXPECT_EQ(find_tag(list, "help"), 1);
    EXPECT_EQ(find_tag(list, "hel"), 0);
    EXPECT_EQ(find_tag(list, "help regress"), 0);
    EXPECT_EQ(tpl_tagmatch(list, "help regress"), 1);
    EXPECT_EQ(tpl_tagmatch(list, "search:x"), 1);
    EXPECT_EQ(tpl_tagmatch(list, "helpb x"), 0);
}

TEST(PtlTemplate, MorePromptTemplate) {
    Engine e;
    const uint8_t* m = ptl_more_template();
    ASSERT_NE(m, nullptr);
    // "--more--": clearmore link (kind 8, empty target) in colour 6, dashes as line art
    Bytes want = cat({B({36, 0, 18, 0, 19, 0, 27, 0, 0, 9}), B({1, 0, 8, 8, 1, 0, 0, 0}), B({0}),
                      B({2, 0, 134, 2, 6, 6, 134, 8}), S("--more--"), B({0})});
    EXPECT_EQ(Bytes(m, m + tpl_u16(m, 0)), want);
}

TEST(PtlTemplate, PartialLineOnFlush) {
    Engine e;
    e.send("abc");
    ptlflush(e.p);
    EXPECT_TRUE(e.cap.lines.empty());
    ASSERT_EQ(e.cap.partials.size(), 1u);
    EXPECT_EQ(std::string(tpl_text(e.cap.partials[0].data())), "abc");
    EXPECT_EQ(e.cap.msgs, (std::vector<int>{PTL_PARTIAL, PTL_FLUSH}));
    e.send("def\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "abcdef");
}

} // namespace
} // namespace korvu
