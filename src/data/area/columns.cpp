// The columns of the record area: bringing them into the order of mapj,
// handing them to loops over observations, and records made of them.
#include <algorithm>
#include <cstring>
#include <memory>

#include "data/area/dataarea.h"
#include "data/area/storage.h"

namespace korvu {

uint8_t mapjperm = 0;
int32_t mapjspan = 0;

void mapj_changed() {
    mapjperm = 1;
    if (nobs > mapjspan) mapjspan = nobs;
}

namespace {

// The gather buffer is kept from one call to the next: fresh memory costs a
// page clearing about as long as the gather itself.
std::unique_ptr<uint8_t[]> gbuf;
size_t gcap = 0;

template <class T> void gather(uint8_t* col, const int32_t* map, int64_t n, uint8_t* buf) {
    T* out = reinterpret_cast<T*>(buf);
    const T* in = reinterpret_cast<const T*>(col);
    constexpr int64_t AHEAD = 32;
    for (int64_t k = 0; k < n; k++) {
        if (k + AHEAD < n) __builtin_prefetch(in + map[k + AHEAD]);
        out[k] = in[map[k]];
    }
}

} // namespace

void colsync() {
    if (!mapjperm) return;
    const int64_t n = nobs;
    if (n > 0 && nvar > 0) {
        size_t need = static_cast<size_t>(n) * 8;
        for (int v = 1; v <= nvar; v++)
            if (static_cast<size_t>(n) * cellwidth(v) > need) need = n * cellwidth(v);
        if (gcap < need) {
            gbuf.reset();
            gbuf.reset(new uint8_t[need]);
            gcap = need;
        }
        uint8_t* buf = gbuf.get();
        for (int v = 1; v <= nvar; v++) {
            uint8_t* col = colptr(v);
            const int w = cellwidth(v);
            switch (w) {
            case 8: gather<uint64_t>(col, mapj, n, buf); break;
            case 4: gather<uint32_t>(col, mapj, n, buf); break;
            case 2: gather<uint16_t>(col, mapj, n, buf); break;
            case 1: gather<uint8_t>(col, mapj, n, buf); break;
            default:
                for (int64_t k = 0; k < n; k++)
                    std::memcpy(buf + k * w, col + static_cast<int64_t>(mapj[k]) * w, w);
            }
            std::memcpy(col, buf, static_cast<size_t>(n) * w);
        }
    }
    for (int32_t k = 0; k < mapjspan; k++) mapj[k] = k;
    mapjperm = 0;
    mapjspan = 0;
}

void* colbase_w(int v, int* type) {
    colsync();
    if (type) *type = typlist[v - 1];
    return colptr(v);
}

const void* colbase(int v, int* type) {
    return colbase_w(v, type);
}

void getdtaobs(void* dst, int i, int n) {
    uint8_t* d = static_cast<uint8_t*>(dst);
    for (int v = 1; v <= nvar && mapi[v - 1] < n; v++) {
        const int off = mapi[v - 1];
        int w = cellwidth(v);
        if (off + w > n) w = n - off;
        std::memcpy(d + off, dtaptr(v, i), w);
    }
}

void putdtaobs(const void* src, int i, int n) {
    const uint8_t* s = static_cast<const uint8_t*>(src);
    for (int v = 1; v <= nvar && mapi[v - 1] < n; v++) {
        const int off = mapi[v - 1];
        int w = cellwidth(v);
        if (off + w > n) w = n - off;
        std::memcpy(dtaptr(v, i), s + off, w);
    }
}

} // namespace korvu

namespace korvu {

namespace {

template <int W> void to_records(uint8_t* rec, int64_t recw, const uint8_t* col, int w, int64_t k) {
    const int n = W ? W : w;
    for (int64_t r = 0; r < k; r++) std::memcpy(rec + r * recw, col + r * n, n);
}
template <int W>
void from_records(uint8_t* col, int w, const uint8_t* rec, int64_t recw, int64_t k) {
    const int n = W ? W : w;
    for (int64_t r = 0; r < k; r++) std::memcpy(col + r * n, rec + r * recw, n);
}

} // namespace

void cells_to_records(uint8_t* rec, int64_t recw, const uint8_t* col, int w, int64_t k) {
    switch (w) {
    case 8: return to_records<8>(rec, recw, col, w, k);
    case 4: return to_records<4>(rec, recw, col, w, k);
    case 2: return to_records<2>(rec, recw, col, w, k);
    case 1: return to_records<1>(rec, recw, col, w, k);
    default: return to_records<0>(rec, recw, col, w, k);
    }
}

void cells_from_records(uint8_t* col, int w, const uint8_t* rec, int64_t recw, int64_t k) {
    switch (w) {
    case 8: return from_records<8>(col, w, rec, recw, k);
    case 4: return from_records<4>(col, w, rec, recw, k);
    case 2: return from_records<2>(col, w, rec, recw, k);
    case 1: return from_records<1>(col, w, rec, recw, k);
    default: return from_records<0>(col, w, rec, recw, k);
    }
}

void getdtablock(uint8_t* buf, int width, int i0, int k, int nv) {
    if (mapjperm) {
        for (int r = 0; r < k; r++) getdtaobs(buf + static_cast<int64_t>(r) * width, i0 + r, width);
        return;
    }
    // a tile of records at a time, small enough to stay in the cache while
    // every column writes its cells into it
    const int tile = std::max(1, (1 << 16) / std::max(width, 1));
    for (int r0 = 0; r0 < k; r0 += tile) {
        const int m = std::min(tile, k - r0);
        uint8_t* rec = buf + static_cast<int64_t>(r0) * width;
        for (int v = 1; v <= nv; v++) {
            const int w = cellwidth(v);
            cells_to_records(rec + mapi[v - 1], width,
                             colptr(v) + static_cast<int64_t>(i0 - 1 + r0) * w, w, m);
        }
    }
}

} // namespace korvu
