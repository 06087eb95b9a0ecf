// The input and output log lists: descriptors, 512-byte buffers, requests
// 1, 2 and 3, and the "{ptag}\n" state written when a ptag log attaches.
#include <gtest/gtest.h>

#include "ptl_engine.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

struct TempFile {
    char path[64] = "/tmp/ptl_log_testXXXXXX";
    int fd = mkstemp(path);
    ~TempFile() {
        close(fd);
        unlink(path);
    }
    std::string contents() const {
        std::string s;
        int r = open(path, O_RDONLY);
        char buf[4096];
        ssize_t n;
        while ((n = read(r, buf, sizeof buf)) > 0) s.append(buf, n);
        close(r);
        return s;
    }
};

TEST(PtlLog, OutputLogOnAPipeMatchesTheRenderedLines) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    Engine e;
    ASSERT_EQ(ptlset_log_output(e.p, fds[1], 1), 0);
    e.send("{res}result{txt} and {help x:a link}\n{hline 4}{c +}{c TLC}{c LT}\n{p}\nsome "
           "words in a paragraph\n\n{.-}\n");
    ptlflush(e.p);
    close(fds[1]);
    std::string got;
    char buf[4096];
    ssize_t n;
    while ((n = read(fds[0], buf, sizeof buf)) > 0) got.append(buf, n);
    close(fds[0]);
    EXPECT_EQ(got, e.cap.all_text());
    EXPECT_EQ(got, "result and a link\n----++|\nsome words in a paragraph\n\n" +
                       std::string(79, '-') + "\n");
}

TEST(PtlLog, OutputLogIsBufferedUntilFlush) {
    TempFile f;
    Engine e;
    ptlset_log_output(e.p, f.fd, 1);
    e.send("abc\n");
    EXPECT_EQ(f.contents(), "");
    ptlflush(e.p);
    EXPECT_EQ(f.contents(), "abc\n");
    // 600 bytes of lines: the buffer goes out when full
    for (int i = 0; i < 60; i++) e.send("123456789\n");
    EXPECT_GE(f.contents().size(), 4u + 500u);
    ptlflush(e.p);
    EXPECT_EQ(f.contents().size(), 4u + 600u);
}

TEST(PtlLog, OutputLogWorksWithoutASink) {
    TempFile f;
    Ptl* p = ptlopen();
    ptlset_log_output(p, f.fd, 1);
    ptlsend(p, "one\ntwo", 7);
    ptlclose(p); // the unfinished line goes out as it stands
    EXPECT_EQ(f.contents(), "one\ntwo");
}

TEST(PtlLog, PtagLogGetsTheStateThenTheRawStream) {
    TempFile f;
    Engine e;
    e.send("{res}");
    ASSERT_EQ(ptlset_log_input(e.p, f.fd, 1), 0);
    EXPECT_EQ(f.contents(), "{ptag}\n{res}{sf}{ul off}");
    const char* raw = "{txt}a {bf:b}\n{unknown}";
    e.send(raw);
    ptlsendraw(e.p, "{x}", 3);
    ptlflush(e.p);
    EXPECT_EQ(f.contents(), std::string("{ptag}\n{res}{sf}{ul off}") + raw + "{c -(}x{c )-}");
}

TEST(PtlLog, PtagStateNamesTheMode) {
    TempFile a, b, c;
    Engine e;
    e.send("{it}{ul on}{err}{pstd}\nx");
    ptlset_log_input(e.p, a.fd, 1);
    EXPECT_EQ(a.contents(), "{ptag}\n{err}{it}{ul on}{p 4 4 2}\n");
    e.send("\n\n{asis}\n");
    ptlset_log_input(e.p, b.fd, 1);
    EXPECT_EQ(b.contents(), "{ptag}\n{err}{it}{ul on}{asis}\n");
    e.send("{ptag}\n{k6hlp}\n");
    ptlset_log_input(e.p, c.fd, 1);
    EXPECT_EQ(c.contents(), "{ptag}\n{txt}{sf}{ul off}{k6hlp}\n");
}

TEST(PtlLog, PauseAndResumeWriteTheStateAgain) {
    TempFile f;
    Engine e;
    ptlset_log_input(e.p, f.fd, 1);
    e.send("a\n");
    EXPECT_EQ(ptlset_log_input(e.p, f.fd, 2), 0); // pause: the buffer is written out
    EXPECT_EQ(f.contents(), "{ptag}\n{txt}{sf}{ul off}a\n");
    e.send("not logged\n");
    ptlset_log_input(e.p, f.fd, 1);
    e.send("b\n");
    ptlflush(e.p);
    EXPECT_EQ(f.contents(), "{ptag}\n{txt}{sf}{ul off}a\n{ptag}\n{txt}{sf}{ul off}b\n");
}

TEST(PtlLog, RemoveWithoutWritingOut) {
    TempFile f, g;
    Engine e;
    ptlset_log_output(e.p, f.fd, 1);
    ptlset_log_output(e.p, g.fd, 1);
    e.send("a\n");
    EXPECT_EQ(ptlset_log_output(e.p, f.fd, 3), 0);
    ptlflush(e.p);
    EXPECT_EQ(f.contents(), "");
    EXPECT_EQ(g.contents(), "a\n");
}

TEST(PtlLog, TableLimitsAndUnknownFiles) {
    TempFile f;
    Engine e;
    int fds[6];
    for (int i = 0; i < 5; i++) {
        fds[i] = dup(f.fd);
        EXPECT_EQ(ptlset_log_output(e.p, fds[i], 1), 0);
    }
    fds[5] = dup(f.fd);
    EXPECT_EQ(ptlset_log_output(e.p, fds[5], 1), 1); // no room
    EXPECT_EQ(ptlset_log_output(e.p, fds[5], 2), 1); // unknown
    EXPECT_EQ(ptlset_log_input(e.p, fds[0], 3), 1);  // not in the input list
    e.send("x\n");
    ptlflush(e.p);
    // five logs share the file: each write goes to its end
    EXPECT_EQ(f.contents(), "x\nx\nx\nx\nx\n");
    ptlset_nologchange(e.p, 1);
    EXPECT_EQ(ptlset_log_output(e.p, fds[0], 2), 1);
    for (int fd : fds) close(fd);
    ptlset_nologchange(e.p, 0);
    for (int i = 0; i < 5; i++) ptlset_log_output(e.p, fds[i], 3);
}

TEST(PtlLog, FailedFileIsMarkedAndSkipped) {
    TempFile f;
    int bad = open("/dev/null", O_RDONLY);
    Engine e;
    ptlset_log_output(e.p, bad, 1);
    ptlset_log_output(e.p, f.fd, 1);
    EXPECT_EQ(ptl_query_log_err(e.p), 0);
    e.send("x\n");
    ptlflush(e.p);
    EXPECT_EQ(ptl_query_log_err(e.p), 1);
    EXPECT_EQ(f.contents(), "x\n");
    close(bad);
}

TEST(PtlLog, LargeBlockGoesDirectly) {
    TempFile f;
    Engine e;
    ptlset_log_input(e.p, f.fd, 1);
    std::string big(600, 'a');
    big += "\n";
    e.send("x");
    e.send(big);
    // the small send was written out first, the big one directly, no flush needed
    EXPECT_EQ(f.contents(), "{ptag}\n{txt}{sf}{ul off}x" + big);
}

} // namespace
} // namespace korvu
