// Families of built-ins added after the first set: simulation (ghalton,
// _ghk), the sandwich variance (_robust, _svy), observation marking, label
// editing and time-series variables (kv_select, kv_vlmodify, kv_tsrevar),
// and the complex eigensystem behind _eigen_la.
#pragma once
#include "lumo/builtins/bi.h"

namespace korvu {

void bi_link_sim(MBiFn* t);
void bi_link_sandwich(MBiFn* t);
void bi_link_dsmore(MBiFn* t);

// The eigensystem of the complex square a for _eigen_la(todo, A, X, L,
// rcond, nobalance), whose output arguments are x, l and rc; pushes the
// result or sets the code.
void bi_zeigen_la(int n, int todo, MObj* a, MObj* x, MObj* l, MObj* rc, bool nobalance);

} // namespace korvu
