// c(): the system's read-only values by name, as `creturn list` shows them.
#pragma once
#include <cstddef>

namespace korvu {

// The value of c(name): 0 no such name, 1 a number (into *num), 2 a text
// (into str, n bytes, cut to fit).
int cfcn(const char* name, char* str, size_t n, double* num);

} // namespace korvu
