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
by g: replace y = 0 if y == .
by g: drop if _n == 2
by g: count
capture noisily by g, rc0: count if "s"
display "test completed"
