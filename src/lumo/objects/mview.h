// Views: matrices whose elements are cells of the dataset. A view holds
// only index lists, 32-bit words at its data:
//   kind 1: the cols variable numbers, then the first observation; the rows
//           are that many observations in a run;
//   kind 2: the rows observation numbers, then the cols variable numbers.
// Reads decode the cell (v_el), writes encode it (v_store); the dataset is
// the only copy. A real view reads numeric variables, a string view (eltype
// string) string variables.
#pragma once
#include <cstdint>

#include "lumo/objects/mobj.h"

namespace korvu {

// Objects that are views at present; the machine looks for views on its
// stack only while there are some.
extern int32_t m_nviews;

inline const int32_t* v_idx(const MObj* o) {
    return static_cast<const int32_t*>(o->data);
}
// Variable of column j and observation of row i (0-based in, 1-based out).
inline int v_var(const MObj* o, int64_t j) {
    return o->view == 1 ? v_idx(o)[j] : v_idx(o)[o->rows + j];
}
inline int v_obs(const MObj* o, int64_t i) {
    return o->view == 1 ? v_idx(o)[o->cols] + static_cast<int>(i) : v_idx(o)[i];
}

// Makes o a view in place (its elements released): kind 1 or 2 with room for
// its index lists, which the caller fills. 3900 on failure.
int m_mkview(MObj* o, int eltype, int kind, int rows, int cols);
// Element (i, j), 0-based: a real, or a new string cell.
double v_el(const MObj* o, int64_t i, int64_t j);
SCell* v_sel(const MObj* o, int64_t i, int64_t j);
// Writes one element through to the dataset.
void v_store(const MObj* o, int64_t i, int64_t j, double x);
void v_sstore(const MObj* o, int64_t i, int64_t j, const SCell* s);
// Fills the plain matrix t (already of o's shape and eltype, elements empty)
// from the view o.
void v_readall(MObj* t, const MObj* o);
// A plain temporary holding the view's values; null after the 3900 message.
MObj* m_unview(const MObj* o);
// Every index of the view still names a cell of the dataset.
bool v_valid(const MObj* o);

} // namespace korvu
