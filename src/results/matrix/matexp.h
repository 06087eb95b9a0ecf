// Matrix expressions: values, loading and storing by name, and the evaluator
// behind `matrix name = exp`.
#pragma once
#include <string>
#include <vector>

#include "results/matrix/matrix.h"

namespace korvu {

// A value of a matrix expression: a number, or a dense matrix with its
// stripes (raw 83-byte entries; empty means the default names).
struct MVal {
    bool scalar = false;
    bool null = false; // nullmat() of an absent matrix: vanishes in joins
    bool sym = false;  // stored symmetric
    int r = 0, c = 0;
    std::vector<double> v; // by rows
    std::string rs, cs;
    double& at(int i, int j) { return v[static_cast<size_t>(i) * c + j]; }
    double at(int i, int j) const { return v[static_cast<size_t>(i) * c + j]; }
};

// Loads a matrix of a type (with stripes); 0, or 111 (message printed).
int mvload(const char* name, int type, MVal* out, bool report);
// e(b) and e(V) from the current estimation record (_b, VCE): 0 or 111.
int mvloadest(const char* ename, MVal* out);
// Stores a value as the user matrix `name`; 0 or a code (message printed).
int mvstore(const char* name, const MVal& m);
// Full stripes: the stored ones or the defaults.
std::string mvrowstripe(const MVal& m);
std::string mvcolstripe(const MVal& m);
// Evaluates the text [b, e) as a matrix expression; 0 or a code.
int matexpeval(const char* b, const char* e, MVal* out);

} // namespace korvu
