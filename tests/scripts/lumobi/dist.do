* Distribution and elementary functions against mpmath at 40 digits: the
* normal through erf, the gamma and beta families through the regularised
* incomplete functions; inverses against their forward functions; the
* missing-value and colon rules worked by hand.
lumo
function check(real matrix got, real matrix want, string scalar what)
{
    real matrix d
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": shape")
    d = abs(got - want) :/ (abs(want) :+ 1e-300)
    if (minmax(d)[2] > 1e-12) _error(3498, what + ": " + strofreal(got, "%21.15g"))
}
check(normal(1.96), 0.9750021048517795, "normal(1.96)")
check(normal(-8), 6.220960574271784e-16, "normal(-8)")
check(invnormal(0.975), 1.9599639845400543, "invnormal(0.975)")
check(normalden(0.5), 0.35206532676429947, "normalden(0.5)")
check(normalden(1, 2, 3), 0.12579440923099772, "normalden(1, 2, 3)")
check(lnnormalden(0.5), -1.0439385332046727, "lnnormalden(0.5)")
check(chi2(3, 2.5), 0.5247089166569794, "chi2(3, 2.5)")
check(chi2tail(3, 2.5), 0.4752910833430206, "chi2tail(3, 2.5)")
check(gammap(2.5, 1.7), 0.36143007689620493, "gammap(2.5, 1.7)")
check(ttail(10, 2.1), 0.03103862210110929, "ttail(10, 2.1)")
check(F(3, 12, 2.2), 0.8591276731651052, "F(3, 12, 2.2)")
check(Ftail(3, 12, 2.2), 0.14087232683489484, "Ftail(3, 12, 2.2)")
check(ibeta(2, 3, 0.4), 0.5248, "ibeta(2, 3, 0.4)")
check(ibeta(0.5, 2.5, 0.3), 0.7968893362799451, "ibeta(0.5, 2.5, 0.3)")
check(betaden(2, 3, 0.4), 1.728, "betaden(2, 3, 0.4)")
check(tden(5, 1.3), 0.15847673572898244, "tden(5, 1.3)")
check(Binomial(10, 3, 0.3), 0.6172172136, "Binomial(10, 3, 0.3)")
check(lngamma(4.5), 2.4537365708424423, "lngamma(4.5)")
check(digamma(2.5), 0.7031566406452432, "digamma(2.5)")
check(trigamma(2.5), 0.49035775610023485, "trigamma(2.5)")
check(lnfactorial(20), 42.335616460753485, "lnfactorial(20)")
check(comb(30, 12), 86493225.0, "comb(30, 12)")
check(factorial(10), 3628800.0, "factorial(10)")
check(atan2(1, -1), 2.356194490192345, "atan2(1, -1)")
check(exp(1), 2.718281828459045, "exp(1)")
// non-central chi-squared as a Poisson mixture, the bivariate normal by
// quadrature of phi(t) Phi((k - rt) / sqrt(1 - r^2)) up to h
check(nchi2(3, 2, 4), 0.4838813583880744, "nchi2(3, 2, 4)")
check(binormal(0.5, -0.3, 0.4), 0.3171269282861651, "binormal")
check(invnchi2(3, 2, nchi2(3, 2, 4)), 4, "invnchi2")
// inverses give back their arguments
check(invchi2tail(3, chi2tail(3, 2.5)), 2.5, "invchi2tail")
check(invchi2(3, chi2(3, 2.5)), 2.5, "invchi2")
check(invttail(10, ttail(10, 2.1)), 2.1, "invttail")
check(invFtail(3, 12, Ftail(3, 12, 2.2)), 2.2, "invFtail")
check(invF(3, 12, F(3, 12, 2.2)), 2.2, "invF")
check(invibeta(2, 3, 0.5248), 0.4, "invibeta")
check(invgammap(2.5, gammap(2.5, 1.7)), 1.7, "invgammap")
// element by element with a scalar stretched; missing in, missing out
x = normal((0, ., 1.96))
if (x[1] != 0.5 | x[2] != .) _error(3498, "normal missing")
check(chi2tail((1, 2, 3), 2.5)[3], 0.4752910833430206, "stretched")
if (chi2tail(-1, 2) != . | invnormal(1) != . | ln(0) != . | sqrt(-1) != .) _error(3498, "domain")
if (mod(-7, 3) != 2 | mod(7, 0) != . | round(2.5) != 3 | round(-2.5) != -3 | trunc(-1.7) != -1) _error(3498, "rounding")
if (round(1234.5678, 0.01) != 1234.57) _error(3498, "round to units")
if (reldif(1, 1) != 0 | reldif(3, 1) != 1 | reldif(., .) != 0) _error(3498, "reldif")
// conformability of the colon rule
if (_korvu("lumo: normalden((1, 2), (1 \ 2), (1, 2, 3))") != 3200) _error(3498, "colon rule")
end
display "test completed"
