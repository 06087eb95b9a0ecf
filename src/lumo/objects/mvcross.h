// Cross products read straight from views of the dataset, a block of rows at
// a time: the columns of a block are taken where they lie in the column
// storage when they are doubles one after another (no copy), gathered into a
// small buffer otherwise, and each block goes into the accumulated product
// through dsyrk or dgemm. The blocks are fixed, so a result is the same bit
// for bit from run to run.
#pragma once
#include <cstdint>

#include "lumo/objects/mobj.h"

namespace korvu {

// Rows per block.
inline constexpr int64_t MV_BLOCKROWS = 4096;

// o is a real view whose every index names a cell of the dataset.
bool v_crossable(const MObj* o);

// r (p x q, row-major) = X'diag(w)Z over the rows where no element of X, w
// or Z is missing; x and z crossable views of the same number of rows; w
// null, a 1 x 1 matrix weighting every row alike, or a column of those rows
// (a plain real matrix or a crossable view). 0, or 1 on a break.
int v_cross(const MObj* x, const MObj* w, const MObj* z, double* r);

// r (p x p, row-major) = X'X as the matrix product gives it, x a crossable
// view: missing values enter nowhere, and every element in the row or column
// of a column of X holding a missing value is missing; results that are not
// finite are missing. 0, or 1 on a break.
int v_tcross(const MObj* x, double* r);

} // namespace korvu
