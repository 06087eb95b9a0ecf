// The error helpers print their text at the error level, put the caller's
// level back, and return the code they were given.
#include <gtest/gtest.h>

#include <string>

#include "capture.h"
#include "kernel/errors/errors.h"
#include "output/spout.h"

using namespace korvu;

TEST(Errors, TextAndFormattedMessagesKeepTheLevel) {
    CapturedOutput out;
    c_outlev = 1;
    s_outlev = 3; // as under quietly: only errors pass
    EXPECT_EQ(errtext(134, "too many values\n"), 134);
    EXPECT_EQ(c_outlev, 1);
    EXPECT_EQ(errorf(111, "value label %s not found\n", "yesno"), 111);
    EXPECT_EQ(errorf(198, "%s must be between %d and %d\n", "linesize", 40, 255), 198);
    spout21("hidden text\n"); // level 1 stays below the threshold
    EXPECT_EQ(out.take(), "too many values\nvalue label yesno not found\n"
                          "linesize must be between 40 and 255\n");
    // a message longer than any fixed buffer comes out whole
    std::string name(3000, 'n');
    errorf(198, "%s invalid name\n", name.c_str());
    std::string got = out.take(), joined; // long lines go on after "> "
    for (size_t i = 0; i < got.size(); ++i) {
        if (got.compare(i, 3, "\n> ") == 0) {
            i += 2;
            continue;
        }
        joined += got[i];
    }
    EXPECT_EQ(joined, name + " invalid name\n");
    s_outlev = 0;
    c_outlev = 0;
}

TEST(Errors, SiblingsWithoutCodeMarkupAndNotes) {
    CapturedOutput out;
    c_outlev = 0;
    s_outlev = 3; // quietly: errors pass, notes do not
    errsay("in option by()\n");
    errsayf("%s:  too %s names specified\n", "x", "few");
    EXPECT_EQ(c_outlev, 0);
    // markup at the error level: the link shows as its text, braces given as
    // plain text stay braces
    EXPECT_EQ(errptl(111, ("help for {hilite:" + plainmarkup("a{b}") + "} not found\n").c_str()),
              111);
    spoutlev(1, "(note: hidden)\n");
    EXPECT_EQ(spoutlevf(4, "(error occurred while loading %s.%s)\n", "myprog", "ado"), 0);
    EXPECT_EQ(c_outlev, 0);
    EXPECT_EQ(out.take(), "in option by()\nx:  too few names specified\nhelp for a{b} not found\n"
                          "(error occurred while loading myprog.ado)\n");
    // under capture (threshold 5) nothing at all, and the level still kept
    s_outlev = 5;
    EXPECT_EQ(errtext(198, "invalid syntax\n"), 198);
    spoutlev(4, "echo\n");
    EXPECT_EQ(out.take(), "");
    s_outlev = 0;
    spoutlev(1, "(file a.log written)\n");
    EXPECT_EQ(out.take(), "(file a.log written)\n");
    EXPECT_EQ(c_outlev, 0);
}

TEST(Errors, FileNameTooLongIsInvalidSyntaxWithItsOwnText) {
    CapturedOutput out;
    EXPECT_EQ(error(7199), 198);
    EXPECT_EQ(error(7197), 198);
    EXPECT_EQ(out.take(), "file name too long\ninvalid file specification\n");
}
