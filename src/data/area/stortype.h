// Storage-type codes of the data area: one byte per variable in typlist.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// ---------------------------------------------------------------------------
// Storage types
// ---------------------------------------------------------------------------
enum : uint8_t {
    KV_STRMAX = 244,
    KV_OLDBYTE = 246,
    KV_OLDINT = 247,
    KV_OLDLONG = 248,
    KV_OLDFLOAT = 249,
    KV_OLDDOUBLE = 250,
    KV_BYTE = 251,
    KV_INT = 252,
    KV_LONG = 253,
    KV_FLOAT = 254,
    KV_DOUBLE = 255,
};
inline bool isstrtype(int code) {
    return code < 245;
}
inline bool isnumtype(int code) {
    return code > 244;
}
struct BytlenTable {
    uint8_t len[256];
};
inline constexpr BytlenTable bytlen_table = [] {
    BytlenTable t{};
    for (int c = 0; c < 256; c++) {
        switch (c) {
        case KV_OLDBYTE:
        case KV_BYTE: t.len[c] = 1; break;
        case KV_OLDINT:
        case KV_INT: t.len[c] = 2; break;
        case KV_OLDDOUBLE:
        case KV_DOUBLE: t.len[c] = 8; break;
        case KV_OLDLONG:
        case KV_OLDFLOAT:
        case KV_LONG:
        case KV_FLOAT: t.len[c] = 4; break;
        default: t.len[c] = static_cast<uint8_t>(c);
        }
    }
    return t;
}();
inline int bytlenc(int code) {
    return bytlen_table.len[code & 0xFF];
}
void map_vartypes_to_old(uint8_t* codes, int n);
// "byte", "int", ..., "str12": the type name of a code (into a static buffer
// when a string).
const char* typename_of(int code);

} // namespace korvu
