* Bad input to tabulate and correlate: a clear message and return code, and
* the data left as they were.
set obs 10
gen x = mod(_n, 3)
gen y = _n
gen str5 s = "a"
gen x1 = 1
capture noisily tabulate x y s
error _rc != 103
capture noisily tabulate
error _rc != 100
capture noisily tabulate x, generate(x)
error _rc != 110
error c(k) != 4
capture noisily tabulate x, chi2
error _rc != 198
capture noisily tabulate x y, summarize(y)
error _rc != 198
capture noisily tabulate x, summarize(s)
error _rc != 109
capture noisily tabulate x [fweight = -1]
error _rc == 0
capture noisily tabulate x [pweight = y]
error _rc != 101
capture noisily correlate x s
error _rc != 109
capture noisily correlate x y if y > 100
error _rc != 2000
capture noisily correlate x y, sig
error _rc != 198
capture noisily correlate x y, pairwise star(2)
error _rc != 0
capture noisily correlate x y, pairwise means
error _rc != 198
sort x
capture noisily by x: tabulate y, generate(iy)
error _rc != 190
error c(k) != 4
capture noisily tabulate nosuch
error _rc != 111
* an empty selection is a table of nothing, not an error
tabulate x if y > 100
error r(N) != 0
error c(k) != 4
display "test completed"
