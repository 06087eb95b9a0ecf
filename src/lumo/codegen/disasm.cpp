// The disassembler: one instruction a line, with its operands, jump targets
// resolved to word indexes, literals shown by value and texts unpacked.
#include <cstdio>
#include <cstring>
#include <string>

#include "data/area/missing.h"
#include "lumo/codegen/opcodes.h"
#include "lumo/lumo.h"
#include "output/spout.h"

namespace korvu {

static std::string packed(const uint32_t* code, int at, int n) {
    // code[at] is the word count; the text follows
    const int words = static_cast<int>(code[at]);
    std::string s;
    for (int i = 0; i < words && at + 1 + i < n; i++) {
        char b[4];
        memcpy(b, &code[at + 1 + i], 4);
        for (char ch : b) {
            if (!ch) return s;
            s += ch;
        }
    }
    return s;
}

static std::string dbltext(const uint32_t* code, int at, int n) {
    if (at < 0 || at + 1 >= n) return "?";
    double x;
    memcpy(&x, code + at, sizeof x);
    char buf[40];
    if (ismissing(x)) {
        const int k = missing_letter(x);
        if (k > 0)
            snprintf(buf, sizeof buf, ".%c", 'a' + k - 1);
        else
            snprintf(buf, sizeof buf, ".");
    } else {
        snprintf(buf, sizeof buf, "%.17g", x);
    }
    return buf;
}

static std::string strlit(const uint32_t* code, int at, int n) {
    if (at < 0 || at + 1 >= n) return "?";
    const int len = static_cast<int>(code[at + 1]);
    std::string s = "\"";
    const char* p = reinterpret_cast<const char*>(code + at + 2);
    for (int i = 0; i < len && at + 2 + i / 4 < n; i++) s += p[i];
    return s + "\"";
}

std::string m_disasm_text(const uint32_t* code, int n) {
    std::string out;
    char buf[256];
    if (n < 2) return "(no code)\n";
    snprintf(buf, sizeof buf, "%5d  format %u, version %u\n", 0, code[0], code[1]);
    out += buf;
    int at = 2;
    while (at < n) {
        const uint32_t op = code[at];
        const int len = m_lofmop(code, at, n);
        if (!len) {
            snprintf(buf, sizeof buf, "%5d  ?? %u\n", at, op);
            out += buf;
            at++;
            continue;
        }
        const MopInfo& mi = mop_table[op];
        std::string ops;
        char o[160];
        switch (mi.layout) {
        case ML_NONE: break;
        case ML_ADDR:
            snprintf(o, sizeof o, "-> %u", code[at + 1]);
            ops = o;
            break;
        case ML_SLOT:
        case ML_N:
        case ML_MEMBER:
            snprintf(o, sizeof o, "%u", code[at + 1]);
            ops = o;
            break;
        case ML_LITD:
        case ML_LITI:
            snprintf(o, sizeof o, "@%u (%s%s)", code[at + 1],
                     dbltext(code, static_cast<int>(code[at + 1]), n).c_str(),
                     mi.layout == ML_LITI ? "i" : "");
            ops = o;
            break;
        case ML_LITS:
            snprintf(o, sizeof o, "@%u ", code[at + 1]);
            ops = o + strlit(code, static_cast<int>(code[at + 1]), n);
            break;
        case ML_STR: ops = "\"" + packed(code, at + 1, n) + "\""; break;
        case ML_POSSTR:
        case ML_CLSSTR:
            snprintf(o, sizeof o, "%u ", code[at + 1]);
            ops = o + ("\"" + packed(code, at + 2, n) + "\"");
            break;
        case ML_FINDF:
            snprintf(o, sizeof o, "%u %u %u ", code[at + 1], code[at + 2], code[at + 3]);
            ops = o + ("\"" + packed(code, at + 4, n) + "\"");
            break;
        case ML_SYMN:
        case ML_IDXN:
        case ML_MINMAX:
        case ML_SLOTMEM:
            snprintf(o, sizeof o, "%u %u", code[at + 1], code[at + 2]);
            ops = o;
            break;
        case ML_SLOTMM:
            snprintf(o, sizeof o, "%u %u %u", code[at + 1], code[at + 2], code[at + 3]);
            ops = o;
            break;
        case ML_DBLOCK: {
            snprintf(buf, sizeof buf, "%5d  %s %u\n", at, mi.name, code[at + 1]);
            out += buf;
            for (uint32_t k = 0; k < code[at + 1]; k++) {
                const int p = at + 2 + 2 * static_cast<int>(k);
                snprintf(buf, sizeof buf, "%5d    %s\n", p, dbltext(code, p, n).c_str());
                out += buf;
            }
            at += len;
            continue;
        }
        case ML_SBLOCK: {
            snprintf(buf, sizeof buf, "%5d  %s %u\n", at, mi.name, code[at + 1]);
            out += buf;
            int p = at + 2;
            for (uint32_t k = 0; k < code[at + 1]; k++) {
                snprintf(buf, sizeof buf, "%5d    %s\n", p, strlit(code, p, n).c_str());
                out += buf;
                p += 1 + static_cast<int>(code[p]);
            }
            at += len;
            continue;
        }
        }
        if (ops.empty())
            snprintf(buf, sizeof buf, "%5d  %s\n", at, mi.name);
        else
            snprintf(buf, sizeof buf, "%5d  %-13s%s\n", at, mi.name, ops.c_str());
        out += buf;
        at += len;
    }
    return out;
}

void m_disasm(const char* name, const uint32_t* code, int nwords) {
    const uint8_t lev = c_outlev;
    c_outlev = 1;
    spoutsetptagweak();
    std::string head = std::string(name) + ":  " + std::to_string(nwords) + " words\n";
    spout21(head.c_str());
    spoutsetptagweak();
    spout21(m_disasm_text(code, nwords).c_str());
    c_outlev = lev;
}

} // namespace korvu
