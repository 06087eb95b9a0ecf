* Bad input to the accumulators and to regress: a message and a code, the
* data unchanged, never a crash.
drop _all
set obs 5
generate x = _n
generate y = mod(_n, 3)
generate str4 s = "a"
generate w = -1
capture regress y s
assert _rc == 109
capture matrix accum A = s x
assert _rc == 109
* too few observations
capture regress y x in 1
assert _rc == 2000
capture regress y x if x > 10
assert _rc == 2000
capture matrix accum A = x if x > 10, noconstant
assert _rc == 2000
capture matrix accum A = x in 1, noconstant
assert _rc == 2000
* importance weights need only a positive total
matrix accum A = x [iweight=0.5] in 1, noconstant
assert r(N) == 0.5
* no variables and no constant
capture matrix accum A = , noconstant
assert _rc != 0
capture regress y, noconstant
assert _rc == 102
* more variables than matsize allows
set matsize 10
forvalues i = 1/9 {
    generate v`i' = _n * `i'
}
capture regress y x v1-v9
assert _rc == 908
set matsize 400
* option conflicts and weights
capture regress y x, cluster(x) beta
assert _rc == 184
capture regress y x [iweight=x], robust
assert _rc == 101
capture regress y x [fweight=w]
assert _rc == 402
capture regress y x, dof(0)
assert _rc == 198
capture regress y x, nosuchoption
assert _rc == 198
* redisplay without estimates
capture regress
assert _rc == 301
capture ereturn display
assert _rc == 301
* the data are as they were
assert c(N) == 5 & c(k) == 13
display "test completed"
