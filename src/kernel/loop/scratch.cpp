#include "kernel/loop/scratch.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kernel/loop/limits.h"

namespace korvu {

// Each buffer carries its size in front of it, so freechar knows which pool
// it belongs to. Only macro-sized buffers are kept: they are the large ones
// asked for again and again.
namespace {
struct ScratchHead {
    size_t size;
    ScratchHead* next;
};
constexpr size_t HEAD = (sizeof(ScratchHead) + 15) / 16 * 16;
ScratchHead* kept = nullptr;
int nkept = 0;
constexpr int MAXKEPT = 8;
} // namespace

static char* take(size_t n) {
    ScratchHead* h = nullptr;
    for (ScratchHead** pp = &kept; *pp; pp = &(*pp)->next)
        if ((*pp)->size == n) {
            h = *pp;
            *pp = h->next;
            --nkept;
            break;
        }
    if (!h) {
        h = static_cast<ScratchHead*>(std::malloc(HEAD + n));
        if (!h) return nullptr;
        h->size = n;
    }
    char* p = reinterpret_cast<char*>(h) + HEAD;
    p[0] = 0;
    return p;
}

char* allocmacro() {
    return take(static_cast<size_t>(macrolen) + 1);
}

char* allocchar(size_t n) {
    return take(n ? n : 1);
}

void freechar(char* p) {
    if (!p) return;
    ScratchHead* h = reinterpret_cast<ScratchHead*>(p - HEAD);
    if (h->size == static_cast<size_t>(macrolen) + 1 && nkept < MAXKEPT) {
        h->next = kept;
        kept = h;
        ++nkept;
        return;
    }
    std::free(h);
}

void scratch_release() {
    while (kept) {
        ScratchHead* h = kept;
        kept = h->next;
        std::free(h);
    }
    nkept = 0;
}

size_t copytext(char* dst, size_t n, const char* src) {
    size_t len = std::strlen(src);
    if (n == 0) return len;
    size_t k = len < n ? len : n - 1;
    std::memmove(dst, src, k);
    dst[k] = 0;
    return len;
}

} // namespace korvu
