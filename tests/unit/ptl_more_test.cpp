// The `more` pause, driven by keys from a script.
#include <gtest/gtest.h>

#include <string>

#include "kernel/loop/brk.h"
#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {
namespace {

struct Paged : ::testing::Test {
    Ptl* p = nullptr;
    PtlCapture cap;
    void SetUp() override {
        stopflag = 0;
        altstopflag = 0;
        p = ptlopen();
        ptlset_user(p, ptl_capture_sink, &cap);
        ptlset_pagesize(p, 3);
    }
    void TearDown() override {
        p->sink = nullptr;
        ptlclose(p);
        stopflag = 0;
        altstopflag = 0;
    }
    // Sends lines until a break is seen; returns how many were sent.
    int lines(int n) {
        for (int i = 0; i < n; i++) {
            std::string s = "line " + std::to_string(i) + "\n";
            ptlsend(p, s.data(), static_cast<int>(s.size()));
            if (stopflag) return i + 1;
        }
        return n;
    }
    // positions of the prompts among the messages, counted in lines before each
    std::vector<int> prompt_after() const {
        std::vector<int> v;
        int n = 0;
        for (int m : cap.msgs) {
            if (m == PTL_LINE) n++;
            if (m == PTL_MORE) v.push_back(n);
        }
        return v;
    }
};

TEST_F(Paged, SpaceGivesTheNextPage) {
    cap.keys = {' ', ' ', ' '};
    EXPECT_EQ(lines(10), 10);
    EXPECT_EQ(prompt_after(), (std::vector<int>{3, 6, 9}));
    EXPECT_EQ(p->pagelines, 1);
}

TEST_F(Paged, EnterGivesOneMoreLine) {
    cap.keys = {13, 10, 'l', ' '};
    lines(8);
    // after the first page each of Enter, LF and `l` lets one line through
    EXPECT_EQ(prompt_after(), (std::vector<int>{3, 4, 5, 6}));
}

TEST_F(Paged, QGivesABreak) {
    cap.keys = {' ', 'q'};
    EXPECT_EQ(lines(20), 6);
    EXPECT_EQ(stopflag, stopflag_val);
    EXPECT_EQ(altstopflag, altstopflag_val);
    EXPECT_EQ(p->pagelines, 0);
    EXPECT_EQ(cap.prompts, 2);
}

TEST_F(Paged, MoreReturns113OnBreak) {
    cap.keys = {3};
    EXPECT_EQ(ptlmore(p), 113);
    EXPECT_EQ(stopflag, stopflag_val);
    stopflag = 0;
    cap.keys = {'x'};
    EXPECT_EQ(ptlmore(p), 0);
    EXPECT_EQ(stopflag, 0);
}

TEST_F(Paged, ThePromptIsTheMoreTemplate) {
    cap.keys = {' '};
    ptlmore(p);
    ASSERT_EQ(cap.msgs.back(), PTL_MORE);
    EXPECT_EQ(cap.prompts, 1);
}

TEST_F(Paged, NoPauseWhenDisabledOrWithoutPageSize) {
    ptlset_moreenable(p, 0);
    EXPECT_EQ(ptlquery_moreenable(p), 0);
    lines(10);
    EXPECT_EQ(cap.prompts, 0);
    EXPECT_EQ(ptlmore(p), 0);
    EXPECT_EQ(cap.prompts, 0);
    ptlset_moreenable(p, 1);
    ptlset_pagesize(p, 0);
    lines(10);
    EXPECT_EQ(cap.prompts, 0);
}

TEST_F(Paged, ZeroingTheCountDelaysThePause) {
    lines(2);
    ptlzero_pagelines(p);
    lines(2);
    EXPECT_EQ(cap.prompts, 0);
    lines(1);
    EXPECT_EQ(cap.prompts, 1);
}

TEST_F(Paged, SendtplCountsLines) {
    cap.keys = {' '};
    ptlsendtpl(p, tpl_empty, 0);
    ptlsendtpl(p, tpl_empty, 0);
    ptlsendtpl(p, tpl_empty, 0);
    EXPECT_EQ(prompt_after(), (std::vector<int>{3}));
}

} // namespace
} // namespace korvu
