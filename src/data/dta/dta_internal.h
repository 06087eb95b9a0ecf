// Shared by the reader and writer of the dataset file.
#pragma once
#include <cstdint>
#include <cstring>
#include <vector>

namespace korvu {

inline int native_order() {
    const uint16_t one = 1;
    uint8_t b;
    std::memcpy(&b, &one, 1);
    return b ? 2 : 1;
}

inline int16_t rd16(const uint8_t* p, bool swap) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    if (swap) v = __builtin_bswap16(v);
    return static_cast<int16_t>(v);
}
inline int32_t rd32(const uint8_t* p, bool swap) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    if (swap) v = __builtin_bswap32(v);
    return static_cast<int32_t>(v);
}
// Writes in the native (low byte first) order.
inline void wr16(uint8_t* p, int16_t v) {
    std::memcpy(p, &v, 2);
}
inline void wr32(uint8_t* p, int32_t v) {
    std::memcpy(p, &v, 4);
}
inline void swapcell(uint8_t* p, int width) {
    switch (width) {
    case 2: {
        uint16_t v;
        std::memcpy(&v, p, 2);
        v = __builtin_bswap16(v);
        std::memcpy(p, &v, 2);
        break;
    }
    case 4: {
        uint32_t v;
        std::memcpy(&v, p, 4);
        v = __builtin_bswap32(v);
        std::memcpy(p, &v, 4);
        break;
    }
    case 8: {
        uint64_t v;
        std::memcpy(&v, p, 8);
        v = __builtin_bswap64(v);
        std::memcpy(p, &v, 8);
        break;
    }
    default: break;
    }
}

// The cells of one variable in k records (at rec, recw bytes apart) into
// its column from col on: numeric cells byte-swapped when swap, string cells
// cleared behind their terminator. dta_gather is the reverse, for writing.
void dta_scatter(uint8_t* col, int w, bool num, bool swap, const uint8_t* rec, int64_t recw,
                 int64_t k);
void dta_gather(uint8_t* rec, int64_t recw, const uint8_t* col, int w, int64_t k);
// Records moved per block: a few thousand, so that the block stays in the
// cache while every column takes its cells from it.
inline int64_t dta_blockrecs(int64_t width) {
    const int64_t n = (int64_t{1} << 18) / (width > 0 ? width : 1);
    return n < 2 ? 2 : n;
}

// Storage code (1..244, 251..255) of a type byte of a format; 0 when invalid.
int dta_type_from_file(int format, uint8_t c);
// Letter code of format 110 for a storage code; 0 when it has none.
int cnv111to110vtype(int code);

// The file's variable names (33 bytes each) and storage codes, read without
// touching memory, for `use varlist using`.
struct DtaNames {
    std::vector<char> names;
    std::vector<uint8_t> types;
    int32_t nobs = 0;
};
int dta_readnames(const char* fname, DtaNames& out);

// The newer formats (114, 115 and the tagged 117 to 119). dta_newer_kind
// tells from the first bytes: 0 none of them, 1 binary, 2 tagged.
// dta_newer_image reads the open file whole and leaves in *out an anonymous
// file holding the same dataset in format 113 (0), or gives 610, 688, 692,
// 900, 901, or 6101 for a tagged file of a later release. The notes of what
// was cut or renamed are printed by dta_newer_notes after a load.
int dta_newer_kind(const uint8_t* first, size_t n);
int dta_newer_image(int fd, int* out);
void dta_newer_notes();

} // namespace korvu
