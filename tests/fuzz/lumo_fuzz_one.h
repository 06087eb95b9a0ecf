// One run of the compiler on arbitrary text, shared by the libFuzzer harness
// and the unit test that feeds it random and mutated programs. The input is
// split into lines; the first is compiled and the others are the further
// lines the compiler may ask for. Afterwards the workspace must be gone and
// any code must walk cleanly, instruction by instruction, with every jump
// landing on an instruction inside the function.
#pragma once
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <string>
#include <vector>

#include "kernel/dict/dict.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/lumo.h"

namespace lumofuzz {

inline std::deque<std::string>& lines() {
    static std::deque<std::string> q;
    return q;
}
inline int source(std::string& out) {
    if (lines().empty()) return 1;
    out = lines().front();
    lines().pop_front();
    return 0;
}

// Returns false when a check fails.
inline bool run_one(const uint8_t* data, size_t size) {
    using namespace korvu;
    std::string text(reinterpret_cast<const char*>(data), size);
    lines().clear();
    std::string first;
    size_t at = 0;
    bool firstline = true;
    while (at <= text.size()) {
        size_t nl = text.find('\n', at);
        if (nl == std::string::npos) nl = text.size();
        std::string l = text.substr(at, nl - at);
        for (char& c : l)
            if (c == 0) c = ' ';
        if (firstline)
            first = l;
        else
            lines().push_back(l);
        firstline = false;
        at = nl + 1;
    }
    m_linesource = source;
    m_mayreadcons = 1;
    m_abort_on_end = size % 2;
    m_optimize = (size / 2) % 2;
    m_strict = (size / 4) % 2;
    lumo_cmdtype = 1;
    std::string rest;
    for (int stmt = 0; stmt < 8; stmt++) {
        const int rc = cc_compile(first.c_str(), &rest);
        if (dmcount(DM_LUMOWORK) != 0) return false;
        if (rc) break;
        if (const LumoFcn* f = cc_lastfcn()) {
            const int n = f->nwords;
            std::vector<char> start(static_cast<size_t>(n), 0);
            int p = 2;
            while (p < n) {
                const int len = m_lofmop(f->code, p, n);
                if (len <= 0) return false;
                start[static_cast<size_t>(p)] = 1;
                p += len;
            }
            if (p != n) return false;
            for (p = 2; p < n;) {
                const uint32_t op = f->code[p];
                if (op < MOP_COUNT && mop_table[op].layout == ML_ADDR) {
                    const uint32_t t = f->code[p + 1];
                    if (t >= static_cast<uint32_t>(n) || !start[t]) return false;
                }
                p += m_lofmop(f->code, p, n);
            }
            if (m_disasm_text(f->code, n).empty()) return false;
            std::vector<uint32_t> copy(f->code, f->code + n);
            if (m_byteswap(copy.data(), n, false) || m_byteswap(copy.data(), n, true)) return false;
            for (int i = 0; i < n; i++)
                if (copy[static_cast<size_t>(i)] != f->code[i]) return false;
        }
        if (rest.empty()) break;
        first = rest;
    }
    m_dropallfcns();
    m_linesource = nullptr;
    return true;
}

} // namespace lumofuzz
