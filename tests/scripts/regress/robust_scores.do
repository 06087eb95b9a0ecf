* _robust and _huber over posted estimates and score variables, against the
* sandwich formulas worked in R (tests/reference/robust_ref.R).
drop _all
set obs 30
generate double x1 = _n
generate double x2 = mod(_n * 7, 11)
generate double y = 1 + 0.5 * x1 - 2 * x2 + mod(_n * 13, 17) / 3
generate w = mod(_n, 4) + 1
generate g = mod(_n, 6)
generate st = mod(_n, 3)
generate double fpc = cond(st == 0, 100, cond(st == 1, 50, 0.25))
program define chk
    args se1 se2 se3
    assert abs((_se[x1] - `se1') / `se1') < 1e-11
    assert abs((_se[x2] - `se2') / `se2') < 1e-11
    assert abs((_se[_cons] - `se3') / `se3') < 1e-11
end
program define refit
    quietly regress y x1 x2
    capture drop r s
    quietly predict double r, residuals
    * e(V) is the mean square times the inverse: scores divided by it
    generate double s = r / e(rmse)^2
end
* the plain sandwich: minus(3) is the usual small-sample form of regress, robust
refit
_robust s, minus(3)
chk 0.034474138633476953 0.093588731258588256 0.80694417130549001
assert "`e(vcetype)'" == "Robust"
assert r(N_strata) == 1 & r(N) == 30
refit
_robust s
chk 0.033264140541017874 0.0903038867117084 0.77862146487382133
* clusters
refit
_robust s, cluster(g) minus(3)
chk 0.040707700062961039 0.098018421131575217 1.0077823098227272
assert r(N_clust) == 6 & e(N_clust) == 6 & "`e(clustvar)'" == "g"
* strata, observations as the sampling units
refit
_robust s, strata(st)
chk 0.034392783821311536 0.091406544507373247 0.79299920112044109
assert r(N_strata) == 3
assert "`e(clustvar)'" == ""
* strata with a finite-population correction (sizes and a rate)
refit
_robust s, strata(st) fpc(fpc)
chk 0.03091063779978737 0.081546357713057946 0.69670193660866597
* strata and clusters nested in them
refit
_robust s, strata(st) cluster(g) minus(3)
chk 0.052035587858692736 0.11004684071041908 1.2153329041593308
assert r(N_clust) == 6 & r(N_strata) == 3
* the older word gives the same
refit
_huber s, cluster(g) minus(3)
chk 0.040707700062961039 0.098018421131575217 1.0077823098227272
refit
huber s, cluster(g) minus(3)
chk 0.040707700062961039 0.098018421131575217 1.0077823098227272
* sampling weights: the weighted fit and w e x as the score
quietly regress y x1 x2 [aweight=w]
capture drop r s
quietly predict double r, residuals
* aweights scale the fit's V (the sum of w is 75); W is the plain inverse, r the score
matrix W = e(V) / e(rmse)^2 * 30 / 75
_robust r [pweight=w], v(W) minus(3)
assert abs((sqrt(W[1,1]) - 0.030909399534237415) / 0.030909399534237415) < 1e-11
assert abs((sqrt(W[2,2]) - 0.084095378285264658) / 0.084095378285264658) < 1e-11
assert abs((sqrt(W[3,3]) - 0.70459579871863598) / 0.70459579871863598) < 1e-11
* bad input
refit
capture _robust s, minus(-1)
assert _rc == 198
capture _robust s r
assert _rc == 198
matrix Z = (1, 2 \ 3, 4)
capture _robust s, v(Z)
assert _rc == 505
capture _robust s, strata(x1)
assert _rc == 460
* regress's own score variable: _robust over the model-based variance
* gives the robust standard errors worked in R, as regress, robust does
quietly regress y x1 x2, score(sc)
assert "`e(scorevars)'" == "sc"
_robust sc, minus(3)
chk 0.034474138633476953 0.093588731258588256 0.80694417130549001
quietly regress y x1 x2, robust score(sc2)
chk 0.034474138633476953 0.093588731258588256 0.80694417130549001
assert "`e(scorevars)'" == "sc2" & sc2 == sc
* outside the sample the score is missing; a name in use is refused first
quietly regress y x1 x2 if _n > 5, score(sc3)
assert sc3 == . if _n <= 5
assert sc3 != . if _n > 5
capture regress y x1 x2, score(sc3)
assert _rc == 110
capture regress y x1 x2, score(a b)
assert _rc == 103
display "test completed"
