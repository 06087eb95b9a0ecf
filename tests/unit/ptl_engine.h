// An engine instance whose lines are kept by a capture sink, for the tests of
// the markup engine.
#pragma once
#include <string>
#include <vector>

#include "output/ptl/ptl.h"
#include "output/ptl/ptl_capture.h"
#include "output/ptl/ptl_state.h"

namespace korvu {

struct Engine {
    Ptl* p = ptlopen();
    PtlCapture cap;
    explicit Engine(int width = 79, bool rich = false) {
        ptlset_user(p, ptl_capture_sink, &cap);
        PtlChars c{width, static_cast<uint8_t>(rich)};
        ptlset_chars(p, &c);
    }
    ~Engine() {
        if (p) {
            p->sink = nullptr;
            ptlclose(p);
        }
    }
    void send(const std::string& s) { ptlsend(p, s.data(), static_cast<int>(s.size())); }
    void raw(const std::string& s) { ptlsendraw(p, s.data(), static_cast<int>(s.size())); }
    std::vector<std::string> texts() const {
        std::vector<std::string> v;
        for (size_t i = 0; i < cap.lines.size(); i++) v.push_back(cap.text(i));
        return v;
    }
    // (start, attribute) of every run of line i
    std::vector<int> runs(size_t i) const {
        const uint8_t* r = tpl_runs(cap.lines[i].data());
        std::vector<int> v;
        for (int k = 0; k <= r[0]; k++) v.push_back(r[1 + 2 * k]), v.push_back(r[2 + 2 * k]);
        return v;
    }
};

} // namespace korvu
