// The settings table behind `set`, `query` and the c() keys of the settings.
// Settings that belong to the matrix store and the random numbers live here
// as plain globals and links, which those subsystems fill in.
#pragma once
#include <cstddef>
#include <cstdint>

namespace korvu {

// Matrix tolerances (the matrix store reads them).
struct MatTolerances {
    double tol_0 = 1e-19; // absolute floor of a pivot tolerance
    double tol_1 = 1e-9;  // relative pivot tolerance
    double tol_2 = 1e-8;  // tolerance of the collinearity pass
    int32_t tol_r = 1;    // 0: pivots in natural order; else largest diagonal first
};
extern MatTolerances matrind;

// Random numbers: `set seed` and `set seed0` run these with the tokenizer
// behind the word; seedtext writes the state text behind c(seed). Null until
// the generator exists: the command then says it is not yet available.
struct RngLink {
    int (*setseed)();
    int (*setseed0)();
    int (*seedtext)(char* buf, size_t n);
};
extern RngLink rnglink;

// Schemes of the graphics layer: `set scheme name` makes `name` current
// (0, or a code with its message printed); current gives the name behind
// c(scheme). Null until the class store is linked: `set scheme` then says
// it is not yet available and c(scheme) is "default".
struct SchemeLink {
    int (*set)(const char* name);
    const char* (*current)();
};
extern SchemeLink schemelink;

// Settings kept here until their users come.
struct KeptSettings {
    uint8_t dp_comma = 0; // set dp comma|period
    double level = 95;    // set level
    uint8_t lumostrict = 0, lumolnum = 0, lumooptimize = 1, lumofavor_space = 0, lumolofirst = 0;
    int32_t lumocache = 400;
    char lumolibs[245] = "";
    uint8_t virtual_on = 0;
    int32_t maxiter = 16000;
};
extern KeptSettings kset;

// The c() value of a setting: 0 unknown key, 1 number in *num, 2 text in str.
int setting_value(const char* key, double* num, char* str, size_t n);

int setcmd(int);
// One of two words (1 for the first, 0 for the second), then the end of the line.
int readpair(const char* w1, int n1, const char* w0, int n0, uint8_t* out);
// on|off, then the end of the line; *out changes only when both are right.
int readflag(uint8_t* out);
int query(int);

} // namespace korvu
