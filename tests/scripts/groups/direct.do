* Group sums and counts by one key of whole numbers (read straight from the
* key's column), every expected value worked by hand.
drop _all
set obs 3000
generate long n = _n
generate long g = mod(_n, 3)
generate double y = _n
* groups 1, 2, 0 hold n = 1,4,..,2998; 2,5,..,2999; 3,6,..,3000
xgenerate double m = mean(y), by(g)
assert m == 1499.5 if g == 1
assert m == 1500.5 if g == 2
assert m == 1501.5 if g == 0
xgenerate double t = total(y), by(g)
assert t == 1000 * 1499.5 if g == 1
assert t == 1000 * 1501.5 if g == 0
xgenerate c = count(y), by(g)
assert c == 1000
* with if: n = 1,4,..,28 in group 1 (mean 14.5), 2,5,..,29 in group 2
xgenerate double mi = mean(y) if n <= 30, by(g)
assert mi == 14.5 if g == 1 & n <= 30
assert mi == 15.5 if g == 2 & n <= 30
assert mi == 16.5 if g == 0 & n <= 30
assert missing(mi) if n > 30
count if missing(mi)
assert r(N) == 2970
* missing values of y are left out of the mean and the count
replace y = . if mod(n, 2) == 0
xgenerate double m2 = mean(y), by(g)
xgenerate c2 = count(y), by(g)
* group 1, odd n: 1,7,13,..,2995 (500 values, mean 1498)
assert m2 == 1498 & c2 == 500 if g == 1
* group 0, odd n: 3,9,..,2997 (mean 1500)
assert m2 == 1500 & c2 == 500 if g == 0
* in(): outside the range missing
xgenerate double m3 = mean(n) in 1/6, by(g)
assert m3 == 2.5 if g == 1 & n <= 6
assert m3 == 4.5 if g == 0 & n <= 6
assert missing(m3) if n > 6
* a float result is stored rounded
xgenerate mf = mean(n), by(g)
assert mf == float(1499.5) if g == 1

* records widened for the new variable (the columns move) after the key
* was read: n = 1, 8, .., 4999 in group 1 (mean 2500), 7, .., 4998 in 0
drop _all
set obs 5000
generate double y = _n
generate long g = mod(_n, 7)
_repart width 12
xgenerate double m = mean(y), by(g)
assert m == 2500 if g == 1
assert m == 2502.5 if g == 0
_repart width 20
xgenerate float m2 = total(y) if g == 0, by(g)
assert m2 == float(714 * 2502.5) if g == 0
assert missing(m2) if g != 0

* negative keys of the small types, a group without non-missing values
drop _all
set obs 6
generate byte b = cond(_n <= 2, -5, cond(_n <= 4, 7, 100))
generate int k = -_n * 1000
generate double y = cond(_n == 5 | _n == 6, ., _n * 0.5)
xgenerate double mb = mean(y), by(b)
assert mb == 0.75 in 1/2
assert mb == 1.75 in 3/4
assert missing(mb) in 5/6
xgenerate double tb = total(y), by(b)
assert tb == 0 in 5/6
xgenerate cb = count(y), by(b)
assert cb == 0 in 5/6
xgenerate double mk = mean(y), by(k)
assert mk == y in 1/4

* a compensated sum: 1e16 + 1 - 1e16 is exactly 1 in each group
drop _all
set obs 12
generate long g = mod(_n - 1, 4)
generate long r = floor((_n - 1) / 4)
generate double y = cond(r == 0, 1e16, cond(r == 1, 1, -1e16))
xgenerate double t = total(y), by(g)
assert t == 1
collapse (sum) y (mean) my = y (count) cy = y, by(g)
assert _N == 4 & g[1] == 0 & g[4] == 3
assert y == 1 & reldif(my, 1/3) < 1e-15 & cy == 3

* collapse: groups in key order, weights, if, missing keys in their own group
drop _all
set obs 10
generate long g = cond(_n <= 4, 20, cond(_n <= 8, -3, .))
generate double y = _n
generate w = cond(_n == 1, 3, 1)
preserve
collapse (mean) y (sum) s = y (count) c = y, by(g)
assert _N == 3
assert g[1] == -3 & y[1] == 6.5 & s[1] == 26 & c[1] == 4
assert g[2] == 20 & y[2] == 2.5 & s[2] == 10 & c[2] == 4
assert missing(g[3]) & y[3] == 9.5 & c[3] == 2
restore
preserve
* frequency weights: group 20 is 1,1,1,2,3,4 (mean 2, 6 observations)
collapse (mean) y (count) c = y (rawsum) r = y [fw = w] if g < ., by(g)
assert _N == 2
assert g[2] == 20 & y[2] == 2 & c[2] == 6 & r[2] == 10
assert g[1] == -3 & y[1] == 6.5 & c[1] == 4
restore

* tabulate of a whole-number variable: counts, missing values on request
drop _all
set obs 100
generate long g = cond(_n <= 10, ., mod(_n, 4) * 10 - 10)
tabulate g
assert r(N) == 90 & r(r) == 4
tabulate g, missing matcell(F)
assert r(N) == 100 & r(r) == 5
assert F[1,1] == 23 & F[2,1] == 22 & F[3,1] == 22 & F[4,1] == 23 & F[5,1] == 10
tabulate g if g > 0, matcell(F)
assert r(N) == 45 & F[1,1] == 22 & F[2,1] == 23
display "test completed"
