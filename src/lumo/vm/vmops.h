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

// Complex operators (either operand complex): kind 0 add, 1 subtract,
// 2 multiply, 3 divide, element by element.
// The result's shape of an element-wise operator: equal shapes, or one
// operand 1 x 1; colon operators also stretch an r x 1 or 1 x c operand.
bool m_shape(const MObj* a, const MObj* b, bool colon, int* R, int* C);
void m_cxbin(int kind, bool colon);
void m_cxmult();
void m_cxkron(); // the Kronecker product

void m_cxneg();
void m_cxtrans();
bool m_cxequal(const MObj* a, const MObj* b);
// The real operand at stack depth k (0 the top) becomes complex.
bool m_cxpromote(int k);

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
