// Shared pieces of the machine's operators: the pinned constants and the
// helpers that pop operands and push results.
#pragma once
#include "lumo/vm/vm.h"

namespace korvu {

// Pinned 1 x 1 reals: 0, 1 and missing, results of comparisons and of the
// literal instructions; never released, never written.
extern MObj* const m_kfalse;
extern MObj* const m_ktrue;
extern MObj* const m_kmiss;

// Pops the two operands and pushes r (which may be one of them).
inline void ppp2(MObj* r) {
    r->count++;
    m_pop();
    m_pop();
    *++m_stak = r;
}
// Replaces the one operand by r.
inline void ppp1(MObj* r) {
    r->count++;
    m_pop();
    *++m_stak = r;
}

} // namespace korvu
