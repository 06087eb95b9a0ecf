// Collects what the output layer prints, as plain text lines.
#pragma once
#include <string>

#include "output/ptl/ptl.h"
#include "output/spout.h"

struct CapturedOutput {
    std::string text;
    korvu::Ptl* engine = nullptr;
    korvu::Ptl* saved = nullptr;

    static int sink(void* user, const uint8_t* tpl, int msg) {
        auto* self = static_cast<CapturedOutput*>(user);
        if (msg == korvu::PTL_LINE) {
            self->text += korvu::tpl_text(tpl);
            self->text += '\n';
        }
        return ' ';
    }
    CapturedOutput() {
        engine = korvu::ptlopen();
        korvu::ptlset_user(engine, sink, this);
        saved = korvu::ptl_cur;
        korvu::ptl_cur = engine;
        korvu::s_outlev = 0;
    }
    std::string take() {
        korvu::ptlflush(engine);
        std::string t = text;
        text.clear();
        return t;
    }
    ~CapturedOutput() {
        korvu::ptl_cur = saved;
        korvu::ptlset_user(engine, nullptr, nullptr);
        korvu::ptlclose(engine);
    }
};
