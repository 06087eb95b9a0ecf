* matrix accum, vecaccum, opaccum, _rmcoll and small fits against sums worked
* by hand: x = 1..5, y = 2 4 5 4 5, w = 1 2 1 2 1.
* Unweighted: sum x 15, sum y 20, sum x^2 55, sum xy 66, sum y^2 86; about
* the means Sxx 10, Sxy 6, Syy 6. With w: sum w 7, sum wx 21, sum wy 28,
* sum wx^2 75, sum wxy 90, sum wy^2 118.
drop _all
input y x w g e
2 1 1 1 1
4 2 2 1 -1
5 3 1 2 2
4 4 2 2 0
5 5 1 2 1
end
matrix accum A = y x
assert r(N) == 5
assert A[1,1] == 86 & A[2,1] == 66 & A[2,2] == 55 & A[3,1] == 20 & A[3,2] == 15 & A[3,3] == 5
assert A[1,2] == 66 & A[1,3] == 20
assert "`: colnames A'" == "y x _cons"
matrix accum A = y x, noconstant
assert rowsof(A) == 2 & A[1,1] == 86 & A[2,1] == 66 & A[2,2] == 55
matrix accum A = y x, deviations means(m)
assert A[1,1] == 6 & A[2,1] == 6 & A[2,2] == 10 & A[3,3] == 5
assert m[1,1] == 4 & m[1,2] == 3 & "`: rownames m'" == "_cons"
matrix accum A = y x [fweight=w]
assert r(N) == 7 & A[1,1] == 118 & A[2,1] == 90 & A[2,2] == 75 & A[3,1] == 28 & A[3,2] == 21
matrix accum A = y x [iweight=w]
assert r(N) == 7 & A[1,1] == 118 & A[3,3] == 7
* analytic weights scaled to sum to the count: each sum times 5/7
matrix accum A = y x [aweight=w]
assert r(N) == 5 & A[3,3] == 5
assert reldif(A[1,1], 118 * 5 / 7) < 1e-15 & reldif(A[2,1], 90 * 5 / 7) < 1e-15
assert reldif(A[3,1], 28 * 5 / 7) < 1e-15
matrix vecaccum v = y x
assert v[1,1] == 66 & v[1,2] == 20 & colsof(v) == 2 & "`: rownames v'" == "y"
matrix vecaccum v = y x [fweight=w], noconstant
assert v[1,1] == 90 & colsof(v) == 1
* opaccum: group 1 has X'e = (1*1 + 2*-1, 1 - 1) = (-1, 0), group 2
* (3*2 + 4*0 + 5*1, 2 + 0 + 1) = (11, 3): the sum of outer products
matrix opaccum O = x, group(g) opvar(e)
assert O[1,1] == 122 & O[2,1] == 33 & O[2,2] == 9
* the fit: b = 6/10, constant 4 - 3*0.6, RSS 6 - 36/10 = 2.4, MSE 0.8
regress y x
assert reldif(_b[x], 0.6) < 1e-15 & reldif(_b[_cons], 2.2) < 1e-15
assert reldif(_se[x], sqrt(0.8 / 10)) < 1e-14
assert reldif(_se[_cons], sqrt(0.8 * (1 / 5 + 9 / 10))) < 1e-14
assert reldif(e(rss), 2.4) < 1e-14 & reldif(e(mss), 3.6) < 1e-14 & reldif(e(r2), 0.6) < 1e-14
assert reldif(e(F), 4.5) < 1e-14 & e(df_m) == 1 & e(df_r) == 3 & e(N) == 5
assert reldif(e(r2_a), 1 - 0.4 * 4 / 3) < 1e-14 & reldif(e(rmse), sqrt(0.8)) < 1e-14
assert reldif(e(ll), -2.5 * (ln(2 * _pi) + ln(2.4 / 5) + 1)) < 1e-14
assert reldif(e(ll_0), -2.5 * (ln(2 * _pi) + ln(6 / 5) + 1)) < 1e-14
assert "`e(model)'" == "ols" & "`e(predict)'" == "regres_p" & "`e(estat_cmd)'" == "regress_estat"
assert "`e(cmd)'" == "regress" & "`e(depvar)'" == "y"
* no constant: b = sum xy / sum x^2 = 66/55, RSS = 86 - 66^2/55 = 6.8,
* R-squared about zero: 1 - 6.8/86
regress y x, noconstant
assert reldif(_b[x], 66 / 55) < 1e-15 & reldif(e(rss), 6.8) < 1e-13
assert reldif(e(r2), 1 - 6.8 / 86) < 1e-14 & e(df_m) == 1 & e(df_r) == 4
assert reldif(_se[x], sqrt(6.8 / 4 / 55)) < 1e-14
* hascons: the user's own constant; the same fit as with ours
generate one = 1
regress y x one, hascons
assert reldif(_b[x], 0.6) < 1e-14 & reldif(_b[one], 2.2) < 1e-14 & e(df_m) == 1
assert reldif(e(rss), 2.4) < 1e-12 & reldif(e(mss), 3.6) < 1e-12
* the constant only: its mean and the standard error of the mean, F zero
regress y
assert _b[_cons] == 4 & reldif(_se[_cons], sqrt(6 / 4 / 5)) < 1e-15
assert e(df_m) == 0 & e(F) == 0 & e(mss) == 0 & e(rss) == 6
* a perfect fit: R-squared exactly 1, RSS and MSE 0, F missing
generate z = 3 - 2 * x
regress z x
assert e(r2) == 1 & e(rss) == 0 & e(rmse) == 0 & e(F) == .
assert _b[x] == -2 & _b[_cons] == 3 & _se[x] == 0
* collinear columns: the later one is dropped, and the constant never is
generate x2 = 2 * x
generate x3 = x + w
generate x4 = x3 - w + x2
_rmcoll x w x3
assert "`r(varlist)'" == "x w"
_rmcoll x x2 w x3 x4
assert "`r(varlist)'" == "x w"
_rmcoll x one
assert "`r(varlist)'" == "x"
_rmcoll x one, noconstant
assert "`r(varlist)'" == "x one"
_rmcoll x x2, collinear
assert "`r(varlist)'" == "x x2"
regress y x w x3
assert _b[x3] == 0 & _se[x3] == 0 & e(df_m) == 2 & e(df_r) == 2
display "test completed"
