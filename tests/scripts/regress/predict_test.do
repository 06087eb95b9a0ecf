* predict and test after regress, against values worked by hand for
* x = 1..5, y = 2 4 5 4 5 (b = 0.6, constant 2.2, s^2 = 0.8, Sxx = 10):
* leverage h = 1/5 + (x - 3)^2/10, stdp = sqrt(s^2 h), stdf = sqrt(s^2 (1 + h)),
* rstandard = e / sqrt(s^2 (1 - h)), cooksd = e^2 h / (2 s^2 (1 - h)^2).
drop _all
input y x
2 1
4 2
5 3
4 4
5 5
. 6
end
capture predict p0
assert _rc == 301
regress y x
predict yhat
predict double r, residuals
predict double sp, stdp
predict double sf, stdf
predict double h, hat
predict double lv, leverage
predict double rs, rstandard
predict double cd, cooksd
generate double e = y - (2.2 + 0.6 * x)
generate double hh = 1/5 + (x - 3)^2 / 10
assert reldif(yhat, float(2.2 + 0.6 * x)) < 1e-7
assert abs(r - e) < 1e-14 if _n <= 5
assert r == . & h == . & rs == . & cd == . in 6
assert reldif(sp, sqrt(0.8 * hh)) < 1e-14
assert reldif(sf, sqrt(0.8 * (1 + hh))) < 1e-14
assert reldif(h, hh) < 1e-14 if _n <= 5
assert lv == h
assert reldif(rs, e / sqrt(0.8 * (1 - hh))) < 1e-13 if _n <= 5
assert reldif(cd, e^2 * hh / (2 * 0.8 * (1 - hh)^2)) < 1e-13 if _n <= 5
capture predict yhat
assert _rc == 110
capture predict z, xb stdp
assert _rc == 198
* test: t squared for one coefficient; for x = _cons the contrast
* (0.6 - 2.2)^2 / (Var b + Var c - 2 Cov), Var b = .08, Var c = .8 * 1.1,
* Cov = -.8 * 3 / 10
test x
assert reldif(r(F), 4.5) < 1e-14 & r(df) == 1 & r(df_r) == 3
test x = _cons
assert reldif(r(F), 1.6^2 / (0.08 + 0.88 + 2 * 0.24)) < 1e-14
test x _cons
assert r(df) == 2
capture test nosuch
assert _rc == 111
display "test completed"
