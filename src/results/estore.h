// Inner pieces of the e store shared by its commands and tests.
#pragma once
#include "results/matlink.h"

namespace korvu {

inline constexpr const char* ESAMPLE_NAME = "(e)"; // the marker variable

// The marker: drop it; make variable v the marker (renamed, moved to the end);
// make a new, empty byte marker at the end (its number in *out).
void marker_remove();
int marker_adopt(int v);
int marker_new(int* out);

// Symmetric within a relative 1e-10 of each pair.
bool issymmatrix(const DenseMat& V);
// The checks of a variance matrix being posted: a nonsymmetric one becomes
// zero with a warning, pairs are made exactly equal, correlations just beyond
// one are pulled back to one, others give 506. Missing values give 504.
int vcheck(DenseMat& V, const char* label);

} // namespace korvu
