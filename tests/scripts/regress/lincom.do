* lincom against R: with m <- lm(y ~ x1 + x2) on the data below, c the
* combination, est = sum(c * coef(m)), se = sqrt(c' vcov(m) c),
* p = 2 * pt(-abs(est / se), 27), limits est -+ qt(1 - a/2, 27) * se.
drop _all
set obs 30
generate double x1 = _n
generate double x2 = mod(_n * 7, 11)
generate double y = 1 + 0.5 * x1 - 2 * x2 + mod(_n * 13, 17) / 3
capture lincom x1
assert _rc == 301
quietly regress y x1 x2
lincom x1 + 2*x2
assert reldif(r(estimate), -3.7269439047810464) < 1e-12
assert reldif(r(se), 0.20266297196505298) < 1e-12
assert reldif(r(p), 8.4563552595621985e-17) < 1e-8
assert r(df) == 27
* a number in the expression moves the estimate, not the standard error
lincom 3*x1 - x2 + _cons - 1, level(90)
assert reldif(r(estimate), 6.9551256857447017) < 1e-12
assert reldif(r(se), 0.83566401387888856) < 1e-12
assert reldif(r(lb), 5.5317488263990153) < 1e-12
assert reldif(r(ub), 8.3785025450903881) < 1e-12
* the same combination written another way
lincom (6*x1 - 2*x2 + 2*_cons) / 2 - 1
assert reldif(r(estimate), 6.9551256857447017) < 1e-12
assert reldif(r(se), 0.83566401387888856) < 1e-12
* bad input
capture lincom x1*x2
assert _rc == 198
capture lincom x1 + nosuch
assert _rc == 111
* eform: exp of the estimate and of the limits, the same saved results
* (exp(-3.7269439047810464) = .024063..., checked by hand)
lincom x1 + 2*x2, eform
assert reldif(r(estimate), -3.7269439047810464) < 1e-12
* a coefficient named with its equation
matrix b = e(b)
matrix V = e(V)
matrix coleq b = y y y
matrix coleq V = y y y
matrix roweq V = y y y
program define postit, eclass
    ereturn post b V
    ereturn local cmd "postit"
end
postit
lincom y:x1 + 2*y:x2
assert reldif(r(estimate), -3.7269439047810464) < 1e-12
assert reldif(r(se), 0.20266297196505298) < 1e-12
capture lincom z:x1
assert _rc == 111
display "test completed"
