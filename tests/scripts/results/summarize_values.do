* summarize against values worked out by hand and with exact arithmetic
* no variables: nothing to show and nothing posted
summarize
if !("`r(N)'" == "") exit 9
set obs 1
generate x = 42
summarize x
assert r(N) == 1 & r(mean) == 42 & r(min) == 42 & r(max) == 42
assert r(Var) == . & r(sd) == .
replace x = .
summarize x
assert r(N) == 0 & r(mean) == . & r(sum) == 0 & r(sum_w) == 0

* three values near 1e7 differing in the last digits: the mean and the
* standard deviation to the last bit (exact rational arithmetic gives
* 10000000.2 and 0.10000000055879354 for these doubles)
set obs 3
generate double y = .
replace y = 10000000.1 in 1
replace y = 10000000.2 in 2
replace y = 10000000.3 in 3
summarize y
assert r(mean) == 10000000.2
assert r(sd) == 0.10000000055879354
assert r(N) == 3

* x = 1..10 with weights 2 3 1 2 3 1 2 3 1 2 (sum 20, sum of w*x 107,
* sum of w*(x - 5.35)^2 = 164.55)
drop _all
set obs 10
generate x = _n
generate w = mod(_n, 3) + 1
summarize x
assert r(N) == 10 & r(mean) == 5.5 & r(sum) == 55
assert reldif(r(Var), 55/6) < 1e-15
summarize x [aweight=w]
assert r(N) == 10 & r(sum_w) == 20 & reldif(r(mean), 5.35) < 1e-15
assert reldif(r(Var), 164.55 / 20 * 10 / 9) < 1e-14
summarize x [fweight=w]
assert r(N) == 20 & r(sum_w) == 20
assert reldif(r(Var), 164.55 / 19) < 1e-14
summarize x [iweight=w]
assert r(N) == 10 & reldif(r(Var), 164.55 / 19) < 1e-14
capture summarize x [pweight=w]
assert _rc == 101
replace w = -1 in 1
capture summarize x [fweight=w]
assert _rc == 402
summarize x [iweight=w]
assert r(N) == 10
* results are those of the last variable; meanonly posts six
summarize w x
assert r(mean) == 5.5
summarize x, meanonly
assert r(N) == 10 & r(mean) == 5.5 & r(min) == 1 & r(max) == 10
assert "`r(scalars)'" == "N sum_w sum mean min max"
quietly by w, sort: summarize x
assert r(N) == 3 & r(mean) == 5

* detail: 18 values with ties and two missing; the percentiles by hand
* (sorted 1 1 2 2 3 3 3 3 4 5 5 5 6 7 8 9 9 9) and by another package's
* quantile of type 2: 1 1 1 3 4.5 7 9 9 9
drop _all
input x w
3 2
1 1
4 1
1 3
5 1
9 1
2 2
6 1
5 1
3 1
5 1
. 1
8 2
9 1
7 1
9 1
. 1
3 2
2 1
3 1
end
summarize x, detail
assert r(N) == 18
assert r(p1) == 1 & r(p5) == 1 & r(p10) == 1 & r(p25) == 3 & r(p50) == 4.5
assert r(p75) == 7 & r(p90) == 9 & r(p95) == 9 & r(p99) == 9
assert r(smallest1) == 1 & r(smallest2) == 1 & r(smallest3) == 2 & r(smallest4) == 2
assert r(largest1) == 9 & r(largest2) == 9 & r(largest3) == 9 & r(largest4) == 8
* moments by exact arithmetic: mean 85/18, variance 7.506535947712418,
* skewness 0.3523714214031731, kurtosis 1.8556931690916716
assert reldif(r(mean), 85/18) < 1e-15
assert reldif(r(Var), 7.506535947712418) < 1e-14
assert reldif(r(skewness), 0.3523714214031731) < 1e-13
assert reldif(r(kurtosis), 1.8556931690916716) < 1e-13
* frequency weights: the same as the expanded 24 values; the other
* package gives 1 1 1 2 3 6.5 9 9 9
summarize x [fweight=w], detail
assert r(N) == 24
assert r(p1) == 1 & r(p5) == 1 & r(p10) == 1 & r(p25) == 2 & r(p50) == 3
assert r(p75) == 6.5 & r(p90) == 9 & r(p95) == 9 & r(p99) == 9
* analytic weights scaled by a constant give the same percentiles
generate double w2 = w / 4
summarize x [aweight=w2], detail
assert r(p25) == 2 & r(p50) == 3 & r(p75) == 6.5
* twenty-seven results: beyond the internal table of twenty
assert wordcount("`r(scalars)'") == 27
assert word("`r(scalars)'", 21) == "smallest2"
display "test completed"
