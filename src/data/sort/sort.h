// Sorting: observations are ordered by moving entries of `mapj`; records stay
// where they are. `srtlist` declares the order that `by`, the time-series
// operators and merging trust.
#pragma once
#include <cstdint>

namespace korvu {

// The observation generator behind the pre-shuffle of a sort. Its state is
// the sort seed, which persists across sorts (`set sortseed`).
uint32_t sortseed();
void setsortseed(uint32_t s);
void srndobs(int32_t n1, int32_t n2);
int32_t rndobs();

// Swap observations i and j (1-based): two entries of mapj.
void exch(int32_t i, int32_t j);

// Sorts nobs1..nobs2 by varlist_vr[0..lnvar-1]; stable adds the observation
// number as a last key. Declares the order in srtlist when the range is the
// whole dataset. 0, 1 (break) or a code.
int syssort(int stable);
// Sorts the whole dataset on the given variables (bysort).
int syssort_vars(const int32_t* vars, int n);

// Puts the observations back in the order an index variable records (the
// observation number each one had); varlist_vr[0..lnvar-1] is the order
// being restored.
int sysidxsort(const char* name, int report);
// Adds a long variable holding 1..nobs under a temporary name (into buf, 33
// bytes); its number, or a negated code.
int mkidxvar(char* buf);

void setsrtlist(int n);  // declare the order of varlist_vr[0..n-1]
void chksort();          // varlist_vr's variables changed: cut srtlist at the first
void chksort_var(int v); // variable v changed
void reset_sort(int k);  // cut srtlist at position k

// sortpreserve: remember the order on entry to a program, restore it on exit.
int sort_preserve();
int sort_restore(int flag);

// Ranking one variable through an index variable, the data untouched: the
// index (a long variable) receives observation numbers, selected non-missing
// ones first and in order of the values; returns how many were selected
// (negated code on failure). sel may be null (all selected).
int32_t sortvar(int v, int idx, int32_t n1, int32_t n2, const uint8_t* sel);
// Orders idx[1..n] by v (ties free); nothing when already ordered.
void sortvar0(int v, int idx, int32_t n);
// The same over two keys.
void sortvar1(int v, int w, int idx, int32_t n);

int sortcmd(int);
int set_sortseed();

void link_sorting();

} // namespace korvu
