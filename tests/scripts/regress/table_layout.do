* The ANOVA header and the coefficient table: a dropped variable, robust and
* cluster headers, beta, eform, another level, redisplay, ereturn display,
* by groups, and a t statistic beyond 9999 shown as a dot.
drop _all
input y x1 x2 g
 3  1  4 1
 5  2  3 1
 4  3  5 1
 8  4  2 1
 9  5  6 2
11  6  1 2
10  7  7 2
14  8  3 2
end
generate x3 = x1 + x2
regress y x1 x2 x3
regress, level(90)
regress, beta
regress, eform(exp(b)) noheader
regress y x1 x2, robust
regress y x1 x2, cluster(g)
ereturn display, level(99)
sort g
by g: regress y x1
* a near-exact fit: the slope's t beyond 9999
generate double z = 2 + 3 * x1 + 1e-4 * mod(_n, 2)
regress z x1
* the level with a comma for the decimal point, and a table left open
set dp comma
regress y x1, level(99.5) plus noheader
set dp period
* instruments: the title and the lists under the table; worked by hand
* (x1 instrumented by x2): b = cov(x2,y)/cov(x2,x1) = -16/5, _cons = 112/5,
* residual sum of squares 23172/25 = 926.88 above the total 100, so the model
* sum is negative and R-squared and F missing; se(x1) = 26.7151193147251356
regress y x1 (x2)
assert reldif(_b[x1], -3.2) < 1e-13 & reldif(_b[_cons], 22.4) < 1e-13
assert reldif(e(rss), 926.88) < 1e-13 & reldif(e(mss), -826.88) < 1e-12
assert reldif(_se[x1], 26.7151193147251356) < 1e-12
assert reldif(_se[_cons], 120.298322515320221) < 1e-12
assert e(r2) == . & e(F) == .
* without a constant: b = z'y/z'x = 120/71, residual sum 58692/5041, by hand
quietly regress y x1 (x2), noconstant
assert reldif(_b[x1], 120/71) < 1e-13 & reldif(e(rss), 58692/5041) < 1e-12
assert reldif(_se[x1], .110863063542763364774755683695) < 1e-12
assert reldif(e(mss), 3026400/5041) < 1e-12
quietly regress y x1 (x2)
* redisplayed, with the lists again
regress, noheader
assert "`e(instd)'" == "x1" & "`e(insts)'" == "x2"
display "test completed"
