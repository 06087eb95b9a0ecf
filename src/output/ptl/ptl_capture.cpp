#include "output/ptl/ptl_capture.h"

namespace korvu {

static std::string ascii(const std::vector<uint8_t>& t) {
    std::string s(tpl_text(t.data()), tpl_textlen(t.data()));
    tpl_make_ascii(tpl_runs(t.data()), s.data());
    return s;
}

std::string PtlCapture::text(size_t i) const {
    return i < lines.size() ? ascii(lines[i]) : "";
}

std::string PtlCapture::all_text() const {
    std::string s;
    for (const auto& l : lines) s += ascii(l) + "\n";
    return s;
}

int ptl_capture_sink(void* user, const uint8_t* tpl, int msg) {
    auto* c = static_cast<PtlCapture*>(user);
    c->msgs.push_back(msg);
    if (msg == PTL_LINE || msg == PTL_PARTIAL) {
        std::vector<uint8_t> t(tpl, tpl + tpl_u16(tpl, 0));
        (msg == PTL_LINE ? c->lines : c->partials).push_back(std::move(t));
    } else if (msg == PTL_MORE) {
        c->prompts++;
        if (c->keys.empty()) return ' ';
        int k = c->keys.front();
        c->keys.pop_front();
        return k;
    }
    return 0;
}

} // namespace korvu
