// Scratch text buffers. `allocmacro` gives a buffer of `macrolen` bytes,
// `allocchar(n)` one of n bytes; both come back zero-terminated at the start
// and are returned with `freechar`. Released buffers are kept for reuse, so a
// command that needs macro-sized work space many times does not go to the
// allocator each time. Null when memory is short (the caller returns 9710).
#pragma once
#include <cstddef>

namespace korvu {

char* allocmacro();
char* allocchar(size_t n);
void freechar(char* p);
void scratch_release(); // frees the kept buffers (maxvar changed, exit)

// Copies src into dst of n bytes, cutting what does not fit; the result is
// always terminated when n > 0. Returns the length of src, so a caller can
// tell a cut (result >= n).
size_t copytext(char* dst, size_t n, const char* src);

// Longest file name the system builds or accepts, terminator included.
inline constexpr size_t FNLEN = 4096;

} // namespace korvu
