* The leverage, standardized residuals and Cook's distance of a fit under
* analytic weights, against R's hatvalues, rstandard and cooks.distance of
* lm(y ~ x + z, weights = w) on the same data; the weight scale does not
* matter, so weights ten times as large give the same values, and frequency
* weights leave the per-observation leverage unweighted.
drop _all
input y x z w
2 1 3 1
4 2 1 2
5 3 4 1
4 4 1 3
5 5 5 2
7 6 9 1
6 7 2 4
9 8 6 2
end
input double rh double rr double rc
.30372841621207353 -.81768135553343180 .097219568724051575
.38526216130922869 1.48857842198605494 .462901507012541125
.15265317163337994 .58914009111087506 .020843014187934463
.35527027636265263 -.38794279633452344 .027643645196668263
.21504891573869528 -1.05220153926623361 .101104683589824149
.47404309995040783 -.45477890619184708 .062136536698265805
.68635318515846899 -.95170868156786814 .660683680103435478
.42764077363509329 1.62922381379271397 .661074891842632462
end
regress y x z [aweight = w]
assert "`e(wtype)'" == "aweight" & "`e(wexp)'" == "= w"
predict double h, leverage
predict double rs, rstandard
predict double cd, cooksd
assert reldif(h, rh) < 1e-12
assert reldif(rs, rr) < 1e-12
assert reldif(cd, rc) < 1e-12
generate double w10 = 10 * w
regress y x z [aw = w10]
predict double h10, hat
assert reldif(h10, rh) < 1e-12
* under frequency weights the leverage of one copy is x'(X'WX)^-1 x
regress y x z [fweight = w]
predict double hf, hat
matrix accum XX = x z [fweight = w]
matrix XXi = syminv(XX)
generate double href = XXi[1,1]*x^2 + XXi[2,2]*z^2 + XXi[3,3] + 2*XXi[1,2]*x*z ///
    + 2*XXi[1,3]*x + 2*XXi[2,3]*z
assert reldif(hf, href) < 1e-12
display "test completed"
