// The pieces of the distribution functions that the non-central family
// builds on: the regularised incomplete gamma and beta functions with their
// complements, and the shared inverter.
#pragma once

namespace korvu {

// P(a, x), or Q(a, x) with upper set.
double gamboth(double a, double x, bool upper);
// I_x(a, b), with the complement xc = 1 - x known exactly.
double ibeta2(double a, double b, double x, double xc);

// A monotone function of x with its parameters, decreasing when tail is set.
struct Fwd {
    double (*f)(const double* par, double x);
    const double* par;
    bool tail;
};

// The x in [lo, hi] at which F is p: the bracket doubled upward first when
// asked, then halvings until |F - p| <= tol and x moves by no more than rel of
// itself. Missing on a break or when F is missing.
double bisect(const Fwd& F, double p, double lo, double hi, bool bracket, double tol, double rel);

} // namespace korvu
