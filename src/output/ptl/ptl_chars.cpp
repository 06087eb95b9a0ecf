// Names of the `c` tag: line art, braces and the like, and accented letters
// (Latin-1 when ptlcharset is nonzero, Mac Roman when 0).
#include <string_view>

#include "output/ptl/ptl_tags.h"

namespace korvu::ptl {

struct CharName {
    std::string_view name;
    uint8_t latin1;
    uint8_t macroman;
};

// clang-format off
inline constexpr CharName kLineArt[] = {
    {"TT", LA_TT, 0}, {"BT", LA_BT, 0}, {"LT", LA_LT, 0}, {"RT", LA_RT, 0},
    {"BRC", LA_BRC, 0}, {"BLC", LA_BLC, 0}, {"TRC", LA_TRC, 0}, {"TLC", LA_TLC, 0},
    {"+", '+', 0}, {"-", '-', 0}, {"|", '|', 0},
};

inline constexpr CharName kPlain[] = {
    {"-(", '{', '{'}, {")-", '}', '}'}, {"'g", '`', '`'}, {"S|", '$', '$'},
    {"A'g", 0xC0, 0xCB}, {"A'", 0xC1, 0xE7}, {"A^", 0xC2, 0xE5}, {"A~", 0xC3, 0xCC},
    {"A:", 0xC4, 0x80}, {"AE", 0xC6, 0xAE}, {"C,", 0xC7, 0x82}, {"C=", 0x80, 0xDB},
    {"E'g", 0xC8, 0xE9}, {"E'", 0xC9, 0x83}, {"E^", 0xCA, 0xE6}, {"E:", 0xCB, 0xE8},
    {"I'g", 0xCC, 0xED}, {"I'", 0xCD, 0xEA}, {"I^", 0xCE, 0xEB}, {"I:", 0xCF, 0xEC},
    {"L-", 0xA3, 0xA3}, {"N~", 0xD1, 0x84},
    {"O'g", 0xD2, 0xF1}, {"O'", 0xD3, 0xEE}, {"O^", 0xD4, 0xEF}, {"O~", 0xD5, 0xCD},
    {"O:", 0xD6, 0x85}, {"O/", 0xD8, 0xAF},
    {"U'g", 0xD9, 0xF4}, {"U'", 0xDA, 0xF2}, {"U^", 0xDB, 0xF3}, {"U:", 0xDC, 0x86},
    {"Y'", 0xDD, 'Y'}, {"Y=", 0xA5, 0xB4},
    {"a'g", 0xE0, 0x88}, {"a'", 0xE1, 0x87}, {"a^", 0xE2, 0x89}, {"a~", 0xE3, 0x8B},
    {"a:", 0xE4, 0x8A}, {"ae", 0xE6, 0xBE}, {"c,", 0xE7, 0x8D},
    {"e'g", 0xE8, 0x8F}, {"e'", 0xE9, 0x8E}, {"e^", 0xEA, 0x90}, {"e:", 0xEB, 0x91},
    {"i'g", 0xEC, 0x93}, {"i'", 0xED, 0x92}, {"i^", 0xEE, 0x94}, {"i:", 0xEF, 0x95},
    {"n~", 0xF1, 0x96},
    {"o'g", 0xF2, 0x98}, {"o'", 0xF3, 0x97}, {"o^", 0xF4, 0x99}, {"o~", 0xF5, 0x9B},
    {"o:", 0xF6, 0x9A}, {"o/", 0xF8, 0xBF},
    {"r?", 0xBF, 0xC0}, {"r!", 0xA1, 0xC1}, {"ss", 0xDF, 0xA7},
    {"u'g", 0xF9, 0x9D}, {"u'", 0xFA, 0x9C}, {"u^", 0xFB, 0x9E}, {"u:", 0xFC, 0x9F},
    {"y'", 0xFD, 'y'}, {"y:", 0xFF, 0xD8},
};
// clang-format on

static int hexval(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool char_lookup(std::string_view name, int& code, bool& lineart) {
    lineart = false;
    if (name.size() == 4 && name[0] == '0' && (name[1] == 'x' || name[1] == 'X') &&
        hexval(name[2]) >= 0 && hexval(name[3]) >= 0) {
        code = hexval(name[2]) * 16 + hexval(name[3]);
        return code != 0;
    }
    for (const CharName& c : kLineArt) {
        if (c.name == name) {
            code = c.latin1;
            lineart = true;
            return true;
        }
    }
    for (const CharName& c : kPlain) {
        if (c.name == name) {
            code = ptlcharset ? c.latin1 : c.macroman;
            return true;
        }
    }
    int v;
    bool digits = !name.empty();
    for (char ch : name) digits &= ch >= '0' && ch <= '9';
    if (digits && parse_int(name, v) && v >= 1 && v <= 255) {
        code = v;
        return true;
    }
    return false;
}

} // namespace korvu::ptl
