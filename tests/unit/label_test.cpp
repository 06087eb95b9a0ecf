// Value-label tables against a plain ordered map, the do-file form, variable
// and data labels, characteristics and their upkeep, and the label command
// with label languages.
#include <map>
#include <random>
#include <vector>

#include "capture.h"
#include "data/labels/label.h"
#include "data/vars/char.h"
#include "dta_bytes.h"
#include "kernel/parse/gettok.h"

using namespace korvu;

namespace {

using Labels = DtaFixture;

int run(int (*cmd)(int), const char* line) {
    static char buf[1024];
    std::snprintf(buf, sizeof buf, "%s", line);
    settok(buf);
    return cmd(0);
}

} // namespace

TEST_F(Labels, LabellableValues) {
    EXPECT_EQ(vlable(0, 1.5), 198);
    EXPECT_EQ(vlable(0, misval), 198);
    EXPECT_EQ(vlable(0, mkmissing(1)), 0);
    EXPECT_EQ(vlable(0, mkmissing(26)), 0);
    EXPECT_EQ(vlable(0, -2147483647.0), 0);
    EXPECT_EQ(vlable(0, 2147483620.0), 0);
    EXPECT_EQ(vlable(0, 2147483621.0), 198);
    EXPECT_EQ(vlable(0, -2147483648.0), 198);
    EXPECT_EQ(vlable(0, 1e300), 198);
}

TEST_F(Labels, TableAgreesWithAnOrderedMap) {
    int32_t* t = vlallocate("t", 0, 0);
    ASSERT_TRUE(t);
    EXPECT_EQ(vlfindval(t, nullptr, 0, 5), -1);
    std::map<int64_t, std::string> ref; // .a..z sort above every number, as their long codes
    std::mt19937 rng(7);
    for (int step = 0; step < 400; ++step) {
        double x = rng() % 5 == 0 ? mkmissing(1 + static_cast<int>(rng() % 26))
                                  : static_cast<double>(static_cast<int>(rng() % 200) - 100);
        int64_t key = ismissing(x) ? 2147483621LL + missing_letter(x) : static_cast<int64_t>(x);
        int at = vlfindval(t, nullptr, 0, x);
        EXPECT_EQ(at >= 0, ref.count(key) == 1);
        if (at >= 0 && rng() % 2) {
            t = vlrmlab(t, at);
            ref.erase(key);
        } else if (at < 0) {
            std::string text = "L" + std::to_string(step);
            t = vladdlab(t, ~at, text.c_str(), x);
            ref[key] = text;
        }
        ASSERT_TRUE(t);
        ASSERT_EQ(vlcheck(t, static_cast<int64_t>(dmsize(t))), 0);
    }
    ASSERT_EQ(vl_n(t), static_cast<int>(ref.size()));
    int i = 0;
    for (auto& [k, text] : ref) {
        char buf[64];
        double x = k >= 2147483621LL ? mkmissing(static_cast<int>(k - 2147483621LL)) : k;
        EXPECT_EQ(vlfindval(t, buf, 100, x), i);
        EXPECT_EQ(text, buf);
        EXPECT_EQ(bitsof(vlgetofi(t, i)), bitsof(x));
        double back;
        EXPECT_EQ(vlsearch("t", text.c_str(), &back), 1);
        EXPECT_EQ(bitsof(back), bitsof(x));
        ++i;
    }
    double none;
    EXPECT_EQ(vlsearch("t", "absent", &none), 0);
    EXPECT_EQ(bitsof(none), bitsof(misval));
    // cut copies
    char buf[8];
    t = vlallocate("c", 0, 0);
    t = vladdlab(t, 0, "abcdefg", 3);
    vlfindval(t, buf, 3, 3);
    EXPECT_STREQ(buf, "abc");
    // removing the only entry leaves a valid empty table
    t = vlrmlab(t, 0);
    EXPECT_EQ(vl_n(t), 0);
    EXPECT_EQ(vl_txtlen(t), 0);
    EXPECT_EQ(vlcheck(t, static_cast<int64_t>(dmsize(t))), 0);
}

TEST_F(Labels, ByteSwapLaysTheBlockOutHighByteFirst) {
    int32_t* t = vlallocate("s", 0, 0);
    t = vladdlab(t, 0, "a", -5);
    t = vladdlab(t, 1, "bb", 70000);
    std::vector<uint8_t> before(reinterpret_cast<uint8_t*>(t),
                                reinterpret_cast<uint8_t*>(t) + dmsize(t));
    ASSERT_GE(before.size(), 29u);
    vlrevbytes(t, 0);
    // the block in the high-byte-first order, laid out by hand: n = 2,
    // txtlen = 5, offsets 0 and 2, values -5 (0xFFFFFFFB) and 70000
    // (0x00011170), then the texts "a" and "bb" with their terminators,
    // which keep their bytes
    const uint8_t want[29] = {0, 0,    0,    2,    0,   0, 0,    0x05, 0,    0,
                              0, 0,    0,    0,    0,   2, 0xFF, 0xFF, 0xFF, 0xFB,
                              0, 0x01, 0x11, 0x70, 'a', 0, 'b',  'b',  0};
    EXPECT_EQ(
        std::vector<uint8_t>(reinterpret_cast<uint8_t*>(t), reinterpret_cast<uint8_t*>(t) + 29),
        std::vector<uint8_t>(want, want + 29));
    vlrevbytes(t);
    std::vector<uint8_t> after(reinterpret_cast<uint8_t*>(t),
                               reinterpret_cast<uint8_t*>(t) + dmsize(t));
    EXPECT_EQ(before, after);
}

TEST_F(Labels, DoFileFormAndLabelSave) {
    CapturedOutput out;
    ASSERT_EQ(run(labelcmd, "define yn 0 \"no\" 1 `\"say \"yes\"\"' .b \"bee\""), 0);
    std::string f = path("l");
    ASSERT_EQ(run(labelcmd, ("save yn using " + f).c_str()), 0);
    auto b = slurp(f + ".do");
    EXPECT_EQ(std::string(b.begin(), b.end()), "label define yn 0 `\"no\"'\n"
                                               "label define yn 1 `\"say \"yes\"\"', modify\n"
                                               "label define yn .b `\"bee\"', modify\n");
    EXPECT_NE(out.take().find("saved"), std::string::npos);
    EXPECT_EQ(run(labelcmd, ("save yn using " + f).c_str()), 602);
}

TEST_F(Labels, DefineAddModifyReplace) {
    CapturedOutput out;
    ASSERT_EQ(run(labelcmd, "define a 1 \"one\" 2 \"two\""), 0);
    EXPECT_EQ(run(labelcmd, "define a 3 \"three\""), 110);
    EXPECT_NE(out.take().find("a already defined"), std::string::npos);
    EXPECT_EQ(run(labelcmd, "define a 1 \"uno\", add"), 180);
    ASSERT_EQ(run(labelcmd, "define a 1 \"uno\" 2 \"\", modify"), 0);
    EXPECT_STREQ(vl_lookup("a", 1), "uno");
    EXPECT_EQ(vl_lookup("a", 2), nullptr);
    ASSERT_EQ(run(labelcmd, "define a 9 \"nine\", replace"), 0);
    EXPECT_EQ(vl_lookup("a", 1), nullptr);
    EXPECT_EQ(run(labelcmd, "define a 1.5 \"x\", modify"), 198);
    EXPECT_NE(out.take().find("may not label"), std::string::npos);
    ASSERT_EQ(run(labelcmd, "list a"), 0);
    EXPECT_EQ(out.take(), "a:\n           9 nine\n");
    ASSERT_EQ(run(labelcmd, "copy a b"), 0);
    ASSERT_EQ(run(labelcmd, "dir"), 0);
    EXPECT_EQ(out.take(), "a\nb\n");
    ASSERT_EQ(run(labelcmd, "drop _all"), 0);
    EXPECT_EQ(vlfind("b"), nullptr);
}

TEST_F(Labels, VariableAndDataLabels) {
    CapturedOutput out;
    ASSERT_EQ(addvar_named(KV_BYTE, "x", "%8.0g"), 0);
    ASSERT_EQ(run(labelcmd, "variable x \"the x\""), 0);
    EXPECT_STREQ(ptrvarlab(1), "the x");
    std::string longer(90, 'q');
    ASSERT_EQ(run(labelcmd, ("data \"" + longer + "\"").c_str()), 0);
    EXPECT_NE(out.take().find("note: label truncated to 80 characters"), std::string::npos);
    EXPECT_EQ(std::string(datalbl), longer.substr(0, 80));
    ASSERT_EQ(run(labelcmd, "variable x"), 0);
    EXPECT_EQ(ptrvarlab(1), nullptr);
}

TEST_F(Labels, CharacteristicsFollowRenamesAndDrops) {
    CapturedOutput out;
    ASSERT_EQ(addvar_named(KV_BYTE, "x", "%8.0g"), 0);
    ASSERT_EQ(run(charcmd, "x[a] first"), 0);
    ASSERT_EQ(run(charcmd, "_dta[b] `\"quoted\"'"), 0);
    ASSERT_EQ(run(charcmd, "x[c] third"), 0);
    EXPECT_STREQ(charfind("_dta", "b", nullptr), "quoted");
    std::vector<std::string> order;
    char obj[33], name[33];
    const char* text;
    for (const void* it = charnext(nullptr, obj, name, &text); it;
         it = charnext(it, obj, name, &text))
        order.push_back(std::string(obj) + "[" + name + "]=" + text);
    EXPECT_EQ(order, (std::vector<std::string>{"x[a]=first", "_dta[b]=quoted", "x[c]=third"}));
    ASSERT_EQ(run(charcmd, "_dta[b] \"\""), 0);
    EXPECT_EQ(charfind("_dta", "b", nullptr), nullptr);
    putvarlab(1, "lab");
    char_rename("x", "y");
    std::strcpy(varname(1), "y");
    EXPECT_STREQ(charfind("y", "a", nullptr), "first");
    EXPECT_EQ(charfind("x", "a", nullptr), nullptr);
    EXPECT_STREQ(ptrvarlab(1), "lab");
    char buf[64];
    EXPECT_EQ(charfcn("y", "c", buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "third");
    char_dropvar("y");
    EXPECT_EQ(charfind("y", "c", nullptr), nullptr);
    EXPECT_EQ(ptrvarlab(1), nullptr);
}

TEST_F(Labels, NotesNumberThemselves) {
    CapturedOutput out;
    ASSERT_EQ(run(notescmd, ": first"), 0);
    ASSERT_EQ(run(notescmd, "_dta: second"), 0);
    EXPECT_STREQ(charfind("_dta", "note0", nullptr), "2");
    EXPECT_STREQ(charfind("_dta", "note2", nullptr), "second");
    ASSERT_EQ(run(notescmd, ""), 0);
    EXPECT_EQ(out.take(), "\n_dta:\n    1.  first\n    2.  second\n");
    // merging: incoming notes go behind
    charpreproc();
    charsave("_dta", "note0", "1");
    charsave("_dta", "note1", "incoming");
    charspostproc();
    EXPECT_STREQ(charfind("_dta", "note0", nullptr), "3");
    EXPECT_STREQ(charfind("_dta", "note3", nullptr), "incoming");
}

TEST_F(Labels, LanguagesKeepTheirOwnLabels) {
    CapturedOutput out;
    ASSERT_EQ(addvar_named(KV_BYTE, "x", "%8.0g"), 0);
    putvarlab(1, "English x");
    putdatalbl("English data");
    std::strcpy(lblname(1), "en");
    ASSERT_EQ(run(labelcmd, "language"), 0);
    EXPECT_NE(out.take().find("language:  default"), std::string::npos);
    ASSERT_EQ(run(labelcmd, "language fr, new"), 0);
    EXPECT_EQ(out.take(), "(fr now current language)\n");
    EXPECT_EQ(ptrvarlab(1), nullptr);
    EXPECT_STREQ(lblname(1), "");
    putvarlab(1, "x en francais");
    ASSERT_EQ(run(labelcmd, "language default"), 0);
    EXPECT_STREQ(ptrvarlab(1), "English x");
    EXPECT_STREQ(datalbl, "English data");
    EXPECT_STREQ(lblname(1), "en");
    ASSERT_EQ(run(labelcmd, "language fr"), 0);
    EXPECT_STREQ(ptrvarlab(1), "x en francais");
    EXPECT_EQ(run(labelcmd, "language fr"), 0);
    EXPECT_NE(out.take().find("(fr already current language)"), std::string::npos);
    EXPECT_EQ(run(labelcmd, "language de, new rename"), 198);
    EXPECT_EQ(run(labelcmd, "language de, copy"), 198);
    EXPECT_EQ(run(labelcmd, "language xx"), 111);
    ASSERT_EQ(run(labelcmd, "language french, rename"), 0);
    ASSERT_EQ(run(labelcmd, "language default, delete"), 0);
    EXPECT_EQ(run(labelcmd, "language french, delete"), 198);
    EXPECT_NE(out.take().find("french is the only language defined; it may not be deleted"),
              std::string::npos);
    EXPECT_STREQ(ptrvarlab(1), "x en francais");
}
