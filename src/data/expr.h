// Compiled expressions: `compexp` reads an expression from the token stream
// and compiles it into an object; `xeq` evaluates it for one observation.
#pragma once
#include <cstdint>

namespace korvu {

struct ExpObj {
    double konst = 0;  // the value of a constant expression
    uint8_t set = 0;   // compiled
    uint8_t isstr = 0; // result is a string
    char str[245] = {};
};

extern ExpObj ifpgm, wepgm;

// wanted: 0 numeric, 1 string, 3 either, 4 matrix, 5 numeric or matrix
int compexp(ExpObj* obj, int wanted, int end_flag, int syntax_only);
double xeq(ExpObj* obj, int obs);
void zapexp(ExpObj* obj);

} // namespace korvu
