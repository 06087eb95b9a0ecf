* The summary table of matrix accum. Reference values from R:
*   i <- 1:30; x1 <- i; x2 <- (i*7) %% 11 + 0.1; w <- (i %% 4) + 1
*   unweighted: mean(x), sd(x): 15.5 8.803408, 5.2 3.1878
*   aweights (scaled to sum to 30): 15.4133 8.8030, 5.0333 3.2772
*   fweights: m = sum(w x)/sum(w), sqrt(sum(w (x-m)^2)/(sum(w)-1)):
*     15.41333 8.713291, 5.033333 3.243844
drop _all
set obs 30
generate double x1 = _n
generate double averylongvariablename = mod(_n * 7, 11) + 0.1
generate w = mod(_n, 4) + 1
matrix accum A = x1 averylongvariablename, summary
assert r(N) == 30
matrix accum A = x1 averylongvariablename [aweight=w], su dev format(%10.4f)
matrix accum A = x1 averylongvariablename [fweight=w], su nocons
assert r(N) == 75
quietly matrix accum A = x1, summary
capture matrix accum A = x1, su format(%s)
assert _rc == 120
display "test completed"
