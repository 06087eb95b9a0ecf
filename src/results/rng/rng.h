// The uniform pseudo-random generators: the main generator behind uniform()
// and matuniform() with its state text, and the old one-word generator
// behind uniform0(). The state can be written out as text and set back, so a
// run can be repeated from any point.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// The main generator's four words.
struct UrnState {
    uint32_t x, y, z, w;
};
extern UrnState urnstate;
extern int32_t rndseed; // the old generator's word, always odd

inline constexpr uint32_t URN_X0 = 123456789u, URN_Y0 = 521288629u, URN_Z0 = 362436069u,
                          URN_W0 = 2262615u;
inline constexpr int URN_TEXTLEN = 37; // "X", four words of 8 digits, 4 check digits

// The next double in (0,1) from the main generator.
inline double urnuni() {
    UrnState& s = urnstate;
    s.x = 69069u * s.x + 1234567u;
    s.y ^= s.y << 13;
    s.y ^= s.y >> 17;
    s.y ^= s.y << 5;
    s.z = 65184u * (s.z & 65535u) + (s.z >> 16);
    s.w = 63663u * (s.w & 65535u) + (s.w >> 16);
    uint32_t sum = s.x + s.y + s.z + (s.w << 16);
    return sum / 4294967296.0;
}

void seturnseed_i4(int32_t n);
// Sets the state from its text; 0, or 1 (state unchanged) when the text is bad.
int seturnseed(const char* text);
// Writes the 37-character state text and its NUL (buffer of at least 38 bytes).
void geturnseed(char* buf, size_t n);
// The check of the first 33 characters of a state text.
uint32_t urnseedcheck(const char* text);

void setrndseed0(int32_t n); // `set seed0 n`
double strandom();           // the next double from the old generator

// `set seed` and `set seed0`, reading the rest of the line.
int setseed();
int setseed0();

// Fills n doubles with successive draws, in order.
void urnfill(double* out, long n);

} // namespace korvu
