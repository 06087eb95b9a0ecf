// Distribution functions: the numbers behind the expression language's
// probability functions and every p-value and confidence limit an estimator
// prints. All take and return doubles and never fail: a value that cannot be
// computed (a missing argument, one out of the domain, a break inside an
// iteration) is the missing value. Nothing here allocates.
#pragma once

namespace korvu {

extern int sgngam; // sign of gamma(x) left by the last stlgma(x)

double stlgma(double x); // log |gamma(x)|
double digamma(double x);
double trigamma(double x);

double gammap(double a, double x); // regularised lower incomplete gamma
// Partial derivatives of gammap; `mode` selects which: 1 d/dx, 2 d/da,
// 3 d2/da2, 4 d2/dadx, 5 the plain value, 6 d2/dx2.
double gammap_mode(double a, double x, int mode);
double gammap_dx(double a, double x);
double gammap_da(double a, double x);
double gammap_dada(double a, double x);
double gammap_dadx(double a, double x);
double gammap_dxdx(double a, double x);
double invgammap(double a, double p);

double chi2cumm(double df, double x);
double chi2tail(double df, double x);
double invchi2cumm(double df, double p);
double invchi2tail(double df, double p);

double ibeta(double a, double b, double x); // regularised incomplete beta
double invibeta(double a, double b, double p);

double ttail(double n, double t);
double invttail(double n, double p);
double ftail(double n1, double n2, double f);
double fcumm(double n1, double n2, double f);
double invftail(double n1, double n2, double p);
double invfcumm(double n1, double n2, double p);

double biprob(double n, double k, double p); // P(k or more successes in n trials)
double invbiprob(double n, double k, double p);

double stnormal(double z);   // standard normal distribution function
double stlnnormal(double z); // its log, without underflow for large negative z
double inormal(double p);    // inverse standard normal
double normalden(double z);
double lnnormalden(double z);

// Densities of t, F, beta and gamma (shape a, scale b, location g).
double tden(double n, double t);
double fden(double n1, double n2, double f);
double betaden(double a, double b, double x);
double gammaden(double a, double b, double g, double x);

// Non-central chi-squared, beta and F (nc the non-centrality), and the
// bivariate normal distribution function.
double nchi2(double df, double nc, double x);
double invnchi2(double df, double nc, double p);
double npnchi2(double df, double x, double p); // the nc at which nchi2 is p
double nibeta(double a, double b, double nc, double x);
double invnibeta(double a, double b, double nc, double p);
double nbetaden(double a, double b, double nc, double x);
double nFden(double n1, double n2, double nc, double f);
double nFtail(double n1, double n2, double nc, double f);
double invnFtail(double n1, double n2, double nc, double p);
double binormal(double h, double k, double r);

} // namespace korvu
