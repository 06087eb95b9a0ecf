// summarize: counts, means, standard deviations and extremes of variables,
// and with `detail` the percentiles and moments of each.
#pragma once
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace korvu {

int summariz(int);

// accumerr: adds x to the compensated sum (sum, err).
inline void accumerr(double* sum, double* err, double x) {
    double s = *sum;
    double t = s + x;
    // the low-order part lost by the addition, from the larger operand
    double lost = (std::fabs(s) >= std::fabs(x)) ? (s - t) + x : (x - t) + s;
    *sum = t;
    *err += lost;
}

// Percentile p (0 < p < 100) of n sorted-or-not values v (reordered):
// unweighted, the mean of the two neighbouring order statistics where n*p/100
// is whole, the next one otherwise. Selection, not a full sort.
double pctile_unweighted(double* v, size_t n, double p);
// Several at once, p ascending or not; each selection works above the last.
void pctiles_unweighted(double* v, size_t n, const double* p, int np, double* out);
// The same with weights w: the first value whose cumulative weight reaches
// n*p/100 of the total, averaged with the next value when it meets it exactly.
double pctile_weighted(const double* x, const double* w, size_t n, double p);
// A rule of the summary table: inner ({c +}) or closing ({c BT}).
void rule(bool weightcol, bool end);

} // namespace korvu
