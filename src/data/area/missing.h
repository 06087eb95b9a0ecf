// Missing values of doubles: `.` is 2^1023, and `.a` to `.z` add 1 to 26 in the
// byte holding bits 40 to 47; a double is missing when it is at or above `.`.
#pragma once
#include <cstdint>
#include <cstring>

namespace korvu {

inline constexpr double misval = 0x1p1023;

inline uint64_t dbits(double x) {
    uint64_t u;
    std::memcpy(&u, &x, 8);
    return u;
}
inline double bitsd(uint64_t u) {
    double x;
    std::memcpy(&x, &u, 8);
    return x;
}
inline bool ismissing(double x) {
    return x >= misval;
}
// 0 for `.`, 1 to 26 for `.a` to `.z`.
inline int missing_letter(double x) {
    return static_cast<int>((dbits(x) >> 40) & 0xff);
}
inline double mkmissing(int letter) {
    return bitsd(dbits(misval) + (static_cast<uint64_t>(letter) << 40));
}

} // namespace korvu
