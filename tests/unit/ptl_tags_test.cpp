// Tags of line mode: placement by width, characters, repetition, titles,
// dialog tabs, syntax diagrams, and old help mode.
#include <gtest/gtest.h>

#include "ptl_engine.h"

#include <cstring>
#include <string>
#include <vector>

#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

using Lines = std::vector<std::string>;
using Ints = std::vector<int>;

TEST(PtlTags, CenterRightAndAlign) {
    Engine e(40);
    e.send("{center:hello}|\n{rcenter 10:abc}|{center 10:abc}|{ralign 6:ab}|{lalign 6:ab}|\n"
           "{right:right}\nxx{right:{bf:bold}}\n");
    EXPECT_EQ(e.texts(),
              (Lines{std::string(17, ' ') + "hello|", "    abc   |   abc    |    ab|ab    |",
                     std::string(35, ' ') + "right", "xx" + std::string(34, ' ') + "bold"}));
}

TEST(PtlTags, RightOnAFullLineEndsItFirst) {
    Engine e(40);
    e.send(std::string(38, 'x') + "{right:abcd}\n");
    EXPECT_EQ(e.texts(), (Lines{std::string(38, 'x'), std::string(36, ' ') + "abcd"}));
}

TEST(PtlTags, ColumnsAndRepeats) {
    Engine e;
    e.send("xx{col 10}y{col 5:ab}z{col 20:12}w{col -3}\n{dup 3:ab}{space 3}x{dup 0:q}\n"
           "a{tab}b\n");
    EXPECT_EQ(e.texts(), (Lines{"xx       yz12121212w", "ababab   x", "a       b"}));
}

TEST(PtlTags, RulesAndLines) {
    Engine e(40);
    e.send("ab{.-}\nnext\n{hline -2}|\n{hline 3}{hline 0}x\n");
    EXPECT_EQ(e.texts(),
              (Lines{"ab", std::string(40, '-'), "next", std::string(38, '-') + "|", "---x"}));
    EXPECT_EQ(e.runs(1), (Ints{0, COL_TEXT | ATTR_LINEART}));
}

TEST(PtlTags, Characters) {
    Engine e;
    e.send("{c TLC}{c TT}{c TRC}{c LT}{c +}{c RT}{c BLC}{c BT}{c BRC}{c 0x41}{c 66}{char S|}"
           "{c -(}{c )-}{c 'g}{c e'}{c ss}{c r?}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    const char* t = tpl_text(e.cap.lines[0].data());
    EXPECT_EQ(std::string(t, 9), std::string("\x08\x01\x07\x03+\x04\x06\x02\x05"));
    EXPECT_EQ(std::string(t + 9), "AB${}`\xE9\xDF\xBF");
    EXPECT_EQ(e.cap.text(0), "+-+|+|+-+AB${}`\xE9\xDF\xBF");
    EXPECT_EQ(e.runs(0), (Ints{0, COL_TEXT | ATTR_LINEART, 9, COL_TEXT}));
    ptlcharset = 0; // Mac Roman
    e.send("{c e'}\n");
    ptlcharset = 1;
    EXPECT_EQ(e.cap.text(1), "\x8E");
}

TEST(PtlTags, TitlePlainAndRich) {
    Engine plain(40, false);
    plain.send("  {title:Title}\n");
    EXPECT_EQ(plain.texts(), (Lines{"  Title", "  -----"}));
    EXPECT_EQ(plain.runs(0), (Ints{0, COL_TEXT, 2, COL_TEXT | ATTR_BOLD}));
    EXPECT_EQ(plain.runs(1), (Ints{0, COL_TEXT, 2, COL_TEXT | ATTR_LINEART}));
    Engine rich(40, true);
    rich.send("{title:Title}\n");
    EXPECT_EQ(rich.texts(), (Lines{"Title"}));
    EXPECT_EQ(rich.runs(0), (Ints{0, COL_TEXT | ATTR_BOLD | ATTR_UNDERLINE}));
}

TEST(PtlTags, DialogTab) {
    Engine e(50);
    e.send("{dlgtab:Main}\n");
    ASSERT_EQ(e.cap.lines.size(), 2u);
    EXPECT_EQ(e.texts(), (Lines{"        +------+", "    ----+ Main +" + std::string(32, '-')}));
    const char* t0 = tpl_text(e.cap.lines[0].data());
    EXPECT_EQ(static_cast<uint8_t>(t0[8]), LA_TLC);
    EXPECT_EQ(static_cast<uint8_t>(t0[15]), LA_TRC);
}

TEST(PtlTags, CmdabPlainAndRich) {
    Engine plain;
    plain.send("{cmdab:reg:ress}\n");
    EXPECT_EQ(plain.runs(0), (Ints{0, COL_HILITE, 3, COL_TEXT}));
    Engine rich(79, true);
    rich.send("{cmdab:reg:ress:ion}\n");
    EXPECT_EQ(rich.texts(), (Lines{"regression"}));
    EXPECT_EQ(rich.runs(0), (Ints{0, COL_HILITE | ATTR_UNDERLINE, 3, COL_HILITE}));
}

TEST(PtlTags, Options) {
    Engine e;
    e.send("{opt detail}{opt by(varlist [, x])}{opth vce(vcetype)}{opt f()}\n");
    ASSERT_EQ(e.cap.lines.size(), 1u);
    EXPECT_EQ(e.cap.text(0), "detailby(varlist [, x])vce(vcetype)f()");
    const int H = COL_HILITE, I = COL_TEXT | ATTR_ITALIC, T = COL_TEXT, L = COL_LINK | ATTR_ITALIC;
    EXPECT_EQ(e.runs(0), (Ints{0, H, 9, I, 17, T, 18, H, 19, I, 21, T, 22, H, 27, L, 34, H}));
    const uint8_t* entry = tpl_clickable(tpl_links(e.cap.lines[0].data()), 27, nullptr);
    ASSERT_NE(entry, nullptr);
    int kind;
    EXPECT_STREQ(tpl_clickable_contents(entry, &kind), "vcetype");
    EXPECT_EQ(kind, LINK_HELP);
}

TEST(PtlTags, ManhelpAndAbbreviations) {
    Engine e;
    e.send("{manhelp regress R}|{manhelpi logit R:lt}|{varlist}|{var:_1}|{ifin}|{dtype}\n");
    EXPECT_EQ(e.cap.text(0), "[R] regress|[R] lt|varlist|varname_1|[if] [in]|[type]");
    const uint8_t* links = tpl_links(e.cap.lines[0].data());
    EXPECT_EQ(links[0], 7);
    int kind;
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(links, 0, nullptr), &kind), "regress");
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(links, 28, nullptr), &kind), "varname");
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(links, 49, nullptr), &kind), "datatypes");
}

TEST(PtlTags, CclAsksTheLookup) {
    Engine e;
    e.send("{ccl version}\n");
    EXPECT_EQ(e.cap.text(0), "{ccl version}");
    ptlset_ccl_lookup([](const char* name, char* out, int n) {
        if (strcmp(name, "version")) return false;
        snprintf(out, n, "9.2");
        return true;
    });
    e.send("{ccl version}{ccl other}\n");
    ptlset_ccl_lookup(nullptr);
    EXPECT_EQ(e.cap.text(1), "9.2{ccl other}");
}

TEST(PtlTags, QuotedArguments) {
    Engine e;
    e.send("{help \"a b:c\":x}{view `\"say \"hi\"\"':y}\n");
    const uint8_t* links = tpl_links(e.cap.lines[0].data());
    int kind;
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(links, 0, nullptr), &kind), "a b:c");
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(links, 1, nullptr), &kind), "say \"hi\"");
}

TEST(PtlOldHelp, LinkWordRules) {
    Engine e;
    e.send("{k6hlp}\n@back:x@ @rnethelp:@ @updatebox:@ @netfrom:a!b@ @ado:q@\n");
    EXPECT_EQ(e.cap.text(0), "@back:x@ @rnethelp:@ updatebox: b ado:q");
    const uint8_t* l = tpl_links(e.cap.lines[0].data());
    int kind;
    tpl_clickable_contents(tpl_clickable(l, 21, nullptr), &kind);
    EXPECT_EQ(kind, LINK_UPDATE_D);
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l, 32, nullptr), &kind), "a");
    EXPECT_EQ(kind, LINK_NETFROM_D);
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l, 34, nullptr), &kind), "q");
    EXPECT_EQ(kind, LINK_ADO);
}

TEST(PtlOldHelp, HighlightsLinksAndRules) {
    Engine e(50);
    e.send("{k6hlp}\n");
    EXPECT_EQ(ptlquery_mode(e.p), PTL_OLDHELP);
    e.send("^help^ me @regress!the reg@ and @@ and ^^ @search:foo bar@\n.-\n.\n"
           "@zzz:q!x@ @http://x.org@ @back:@\n\tx\n");
    e.send("{ptag}\n{bf:b}\n");
    EXPECT_EQ(e.texts(), (Lines{"help me the reg and @ and ^ search:foo bar", std::string(50, '-'),
                                "", "@zzz:q!x@ http://x.org back:", "        x", "b"}));
    EXPECT_EQ(e.runs(0),
              (Ints{0, COL_HILITE, 4, COL_TEXT, 8, COL_LINK, 15, COL_TEXT, 28, COL_LINK}));
    const uint8_t* l0 = tpl_links(e.cap.lines[0].data());
    int kind;
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l0, 8, nullptr), &kind), "regress");
    EXPECT_EQ(kind, LINK_HELP);
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l0, 30, nullptr), &kind), "foo bar");
    EXPECT_EQ(kind, LINK_SEARCH);
    const uint8_t* l3 = tpl_links(e.cap.lines[3].data());
    EXPECT_EQ(l3[0], 2); // an unknown word fails and shows as it stands
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l3, 10, nullptr), &kind), "http://x.org");
    EXPECT_EQ(kind, LINK_BROWSE);
    EXPECT_STREQ(tpl_clickable_contents(tpl_clickable(l3, 23, nullptr), &kind), "");
    EXPECT_EQ(kind, LINK_BACK);
}

} // namespace
} // namespace korvu
