* Instrumental variables (two-stage least squares) against R by hand
* (tests/reference/regress_iv.R): x1 instrumented by z1 and z2, x2 exogenous.
drop _all
set obs 30
generate double z1 = mod(_n * 7, 11)
generate double z2 = mod(_n * 5, 13)
generate double x1 = z1 + 0.5 * z2 + mod(_n * 3, 7) / 4
generate double x2 = _n
generate double y = 1 + 2 * x1 - x2 + mod(_n * 13, 17) / 3
regress y x1 x2 (z1 z2 x2)
assert abs((_b[x1] - 1.9515727253955346) / 1.9515727253955346) < 1e-13
assert abs((_se[x1] - 0.081351779151368639) / 0.081351779151368639) < 1e-13
assert abs((_b[x2] - -0.99955745400283946) / -0.99955745400283946) < 1e-13
assert abs((_se[x2] - 0.036316135610130695) / 0.036316135610130695) < 1e-13
assert abs((_b[_cons] - 4.1784881547141985) / 4.1784881547141985) < 1e-13
assert abs((_se[_cons] - 1.0151271158682422) / 1.0151271158682422) < 1e-13
assert abs((e(rss) - 78.941145371089263) / 78.941145371089263) < 1e-13
assert "`e(model)'" == "iv" & "`e(predict)'" == "regriv_p" & "`e(insts)'" == "z1 z2 x2"
assert e(N) == 30 & e(df_m) == 2 & e(df_r) == 27
* fitted values from the structural equation
predict double fit
assert reldif(fit, _b[_cons] + _b[x1] * x1 + _b[x2] * x2) < 1e-14
capture regress y x1 (z1
assert _rc == 198
display "test completed"
