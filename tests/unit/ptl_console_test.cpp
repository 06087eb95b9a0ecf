// The console sink: plain text on a pipe, colour on request, the more prompt.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "kernel/loop/brk.h"
#include "output/console_sink.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

// Everything written to a pipe through a FILE*, read back after closing.
struct PipeOut {
    int fds[2];
    FILE* f = nullptr;
    PipeOut() {
        EXPECT_EQ(pipe(fds), 0);
        f = fdopen(fds[1], "w");
    }
    std::string finish() {
        fclose(f);
        std::string s;
        char buf[4096];
        ssize_t n;
        while ((n = read(fds[0], buf, sizeof buf)) > 0) s.append(buf, n);
        close(fds[0]);
        return s;
    }
};

TEST(PtlConsole, PlainTextOnAPipe) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    Ptl* p = ptlopen();
    ptlset_user(p, console_sink, &cs);
    const char* s = "{res}result {err}error {hi}hilite {bf}bold{sf} {ul:ul} {help x:link}\n"
                    "{hline 3}{c |}{c +}{c TLC}{c TT}{c BRC}{c LT}x\n"
                    "{.-}\n"
                    "partial";
    ptlsend(p, s, static_cast<int>(strlen(s)));
    ptlflush(p);
    ptlsend(p, " more\nlast", 10);
    ptlclose(p);
    std::string got = out.finish();
    EXPECT_EQ(got, "result error hilite bold ul link\n---|++-+|x\n" + std::string(79, '-') +
                       "\npartial more\nlast");
    EXPECT_EQ(got.find('\x1b'), std::string::npos);
}

TEST(PtlConsole, PartialIsHeldUntilAFlush) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    Ptl* p = ptlopen();
    ptlset_user(p, console_sink, &cs);
    ptlsend(p, "Prompt? ", 8);
    ptlflush(p);
    fflush(out.f);
    char buf[64];
    ssize_t n = read(out.fds[0], buf, sizeof buf);
    EXPECT_EQ(std::string(buf, n > 0 ? n : 0), "Prompt? ");
    ptlsend(p, "yes\n", 4);
    ptlclose(p);
    EXPECT_EQ(out.finish(), "yes\n");
}

TEST(PtlConsole, NoKeySourceMeansNoPause) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    Ptl* p = ptlopen();
    ptlset_user(p, console_sink, &cs);
    ptlset_pagesize(p, 2);
    for (int i = 0; i < 5; i++) ptlsend(p, "x\n", 2);
    EXPECT_EQ(ptlmore(p), 0);
    ptlclose(p);
    EXPECT_EQ(out.finish(), "x\nx\nx\nx\nx\n");
}

TEST(PtlConsole, KeySourceAnswersThePrompt) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    static int asked = 0;
    cs.keysource = [](void*) {
        asked++;
        return static_cast<int>('q');
    };
    Ptl* p = ptlopen();
    ptlset_user(p, console_sink, &cs);
    EXPECT_EQ(ptlmore(p), 113);
    EXPECT_EQ(asked, 1);
    ptlclose(p);
    EXPECT_EQ(out.finish(), "--more--\n");
    stopflag = 0;
    altstopflag = 0;
}

TEST(PtlConsole, ColourWhenAsked) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    cs.colour = true;
    Ptl* p = ptlopen();
    ptlset_user(p, console_sink, &cs);
    ptlsend(p, "a{res}b{bf:c}{c |}\n", 19);
    ptlclose(p);
    EXPECT_EQ(out.finish(), "\x1b[0;39ma\x1b[0;33mb\x1b[0;33;1mc\x1b[0;33m|\x1b[0m\n");
}

TEST(PtlConsole, RenderPlain) {
    PipeOut out;
    ConsoleSink cs;
    cs.out = out.f;
    EXPECT_EQ(console_render(tpl_empty, false), "");
    out.finish();
}

} // namespace
} // namespace korvu
