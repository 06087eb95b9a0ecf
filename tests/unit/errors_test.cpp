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
