// Display of a value at the block prompt. A scalar shows as its value; a
// matrix as rows under a line of column numbers, each row behind its
// number. Real elements go through %9.0g without the padding; a column is as
// wide as its widest element or its number; columns that do not fit the line
// width go to a further panel. Strings stand left-aligned, numbers right.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "data/area/missing.h"
#include "data/formats/formats.h"
#include "kernel/dict/dict.h"
#include "lumo/vm/vm.h"
#include "output/spout.h"

namespace korvu {

static std::string eltext(const MObj* o, int64_t k) {
    char buf[64];
    switch (o->eltype) {
    case MT_REAL: {
        fmtnum(buf, "%9.0g", m_rel(o)[k]);
        const char* p = buf;
        while (*p == ' ') p++;
        return p;
    }
    case MT_COMPLEX: {
        const double re = m_rel(o)[2 * k], im = m_rel(o)[2 * k + 1];
        if (re >= misval || im >= misval) return ".";
        auto num = [](double x) {
            char b[64];
            fmtnum(b, "%9.0g", x);
            const char* p = b;
            while (*p == ' ') p++;
            return std::string(p);
        };
        std::string s;
        if (re != 0 || im == 0) s = num(re);
        if (im != 0) {
            if (!s.empty())
                s += im < 0 ? " - " : " + ";
            else if (im < 0)
                s += "-";
            s += num(std::fabs(im)) + "i";
        }
        return s;
    }
    case MT_STRING: {
        const SCell* c = m_sel(o)[k];
        return std::string(c->s, static_cast<size_t>(c->len));
    }
    case MT_POINTER: {
        const MObj* t = m_pel(o)[k];
        if (!t) return "NULL";
        if (t->fcn) return std::string("&") + dmname(t->fcn) + "()";
        snprintf(buf, sizeof buf, "0x%llx",
                 static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(t)));
        return buf;
    }
    default: return "?";
    }
}

static void line(const std::string& s) {
    const uint8_t lev = c_outlev;
    c_outlev = 0;
    spoutnoptl(s.c_str());
    spoutnoptl("\n");
    c_outlev = lev;
}

void m_list(const MObj* o) {
    if (o->fcn) {
        line(std::string("  ") + dmname(o->fcn) + "()");
        return;
    }
    if (o->isvoid || m_nel(o) == 0) return;
    if (o->eltype == MT_STRUCT) {
        line(std::string("  ") + m_eltname(o) + " [" + std::to_string(o->rows) + "," +
             std::to_string(o->cols) + "]");
        return;
    }
    if (o->rows == 1 && o->cols == 1) {
        line("  " + eltext(o, 0));
        return;
    }
    const bool left = o->eltype == MT_STRING;
    const int R = o->rows, C = o->cols;
    std::vector<std::string> cell(static_cast<size_t>(R) * C);
    std::vector<size_t> w(static_cast<size_t>(C));
    for (int j = 0; j < C; j++) w[j] = std::to_string(j + 1).size();
    for (int i = 0; i < R; i++)
        for (int j = 0; j < C; j++) {
            std::string& s = cell[static_cast<size_t>(i) * C + j];
            s = eltext(o, static_cast<int64_t>(i) * C + j);
            if (s.size() > w[j]) w[j] = s.size();
        }
    const size_t rw = std::to_string(R).size();
    const size_t lead = 2 + rw + 1; // "  " number ":"
    size_t width = korvu_linewidth > 20 ? static_cast<size_t>(korvu_linewidth) : 79;
    int from = 0;
    while (from < C) {
        // the columns of this panel
        size_t used = lead;
        int to = from;
        while (to < C && (to == from || used + 2 + w[to] <= width)) used += 2 + w[to++];
        std::string head(lead, ' ');
        for (int j = from; j < to; j++) {
            const std::string n = std::to_string(j + 1);
            head += "  ";
            if (left) {
                head += n + std::string(w[j] - n.size(), ' ');
            } else {
                head += std::string(w[j] - n.size(), ' ') + n;
            }
        }
        while (!head.empty() && head.back() == ' ') head.pop_back();
        line(head);
        for (int i = 0; i < R; i++) {
            const std::string n = std::to_string(i + 1);
            std::string s = "  " + std::string(rw - n.size(), ' ') + n + ":";
            for (int j = from; j < to; j++) {
                const std::string& e = cell[static_cast<size_t>(i) * C + j];
                s += "  ";
                if (left)
                    s += e + std::string(w[j] - e.size(), ' ');
                else
                    s += std::string(w[j] - e.size(), ' ') + e;
            }
            while (!s.empty() && s.back() == ' ') s.pop_back();
            line(s);
        }
        from = to;
        if (from < C) line("");
    }
}

} // namespace korvu
