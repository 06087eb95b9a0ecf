* What a by-run shows: headers for the commands that show them, and one
* message for the whole run from generate, replace, drop and keep.
input g x
2 1
1 .
2 3
1 4
3 .a
end
bysort g (x): list
by g: gen y = x * 10 if x < 4
assert y == cond(x < 4, x * 10, .)
by g: replace y = 0 if y == .
assert y == cond(x < 4, x * 10, 0)
by g: drop if _n == 2
* the second of each group of two goes: x is 4, 1 and .a in what is left
assert _N == 3 & x[1] == 4 & x[2] == 1 & x[3] == .a & y[3] == 0
by g: count
capture noisily by g, rc0: count if "s"
assert _rc == 0
* without rc0 the first failing group ends the run with its code
capture noisily by g: count if "s"
assert _rc == 109
display "test completed"
