// Moving cells between the file's records and the columns in memory: one
// tight loop per variable over a block of records, its width and byte order
// decided once for the block.
#include <cstring>

#include "data/dta/dta_internal.h"

namespace korvu {

namespace {

template <class T> inline T bswap(T v) {
    if constexpr (sizeof(T) == 2)
        return __builtin_bswap16(v);
    else if constexpr (sizeof(T) == 4)
        return __builtin_bswap32(v);
    else
        return __builtin_bswap64(v);
}

template <class T, bool SWAP>
void scatter_num(uint8_t* col, const uint8_t* rec, int64_t recw, int64_t k) {
    for (int64_t r = 0; r < k; ++r) {
        T x;
        std::memcpy(&x, rec + r * recw, sizeof(T));
        if constexpr (SWAP) x = bswap(x);
        std::memcpy(col + r * static_cast<int64_t>(sizeof(T)), &x, sizeof(T));
    }
}

template <class T> void gather_num(uint8_t* rec, int64_t recw, const uint8_t* col, int64_t k) {
    for (int64_t r = 0; r < k; ++r) {
        T x;
        std::memcpy(&x, col + r * static_cast<int64_t>(sizeof(T)), sizeof(T));
        std::memcpy(rec + r * recw, &x, sizeof(T));
    }
}

// A string cell keeps its text and zeros behind it, whatever the file held
// after the terminator.
void scatter_str(uint8_t* col, int w, const uint8_t* rec, int64_t recw, int64_t k) {
    for (int64_t r = 0; r < k; ++r) {
        const uint8_t* s = rec + r * recw;
        uint8_t* d = col + r * w;
        const auto* z = static_cast<const uint8_t*>(std::memchr(s, 0, w));
        const int n = z ? static_cast<int>(z - s) : w;
        std::memcpy(d, s, n);
        std::memset(d + n, 0, w - n);
    }
}

} // namespace

void dta_scatter(uint8_t* col, int w, bool num, bool swap, const uint8_t* rec, int64_t recw,
                 int64_t k) {
    if (!num) return scatter_str(col, w, rec, recw, k);
    switch (w) {
    case 8:
        return swap ? scatter_num<uint64_t, true>(col, rec, recw, k)
                    : scatter_num<uint64_t, false>(col, rec, recw, k);
    case 4:
        return swap ? scatter_num<uint32_t, true>(col, rec, recw, k)
                    : scatter_num<uint32_t, false>(col, rec, recw, k);
    case 2:
        return swap ? scatter_num<uint16_t, true>(col, rec, recw, k)
                    : scatter_num<uint16_t, false>(col, rec, recw, k);
    case 1: return scatter_num<uint8_t, false>(col, rec, recw, k);
    default:
        for (int64_t r = 0; r < k; ++r) std::memcpy(col + r * w, rec + r * recw, w);
    }
}

void dta_gather(uint8_t* rec, int64_t recw, const uint8_t* col, int w, int64_t k) {
    switch (w) {
    case 8: return gather_num<uint64_t>(rec, recw, col, k);
    case 4: return gather_num<uint32_t>(rec, recw, col, k);
    case 2: return gather_num<uint16_t>(rec, recw, col, k);
    case 1: return gather_num<uint8_t>(rec, recw, col, k);
    default:
        for (int64_t r = 0; r < k; ++r) std::memcpy(rec + r * recw, col + r * w, w);
    }
}

} // namespace korvu
