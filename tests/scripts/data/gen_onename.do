* generate takes exactly one new name: two are too many (103), none too few (102)
set obs 2
capture generate x y = 1
assert _rc == 103
capture generate double x y z = 1
assert _rc == 103
capture generate = 1
assert _rc == 102
* nothing was made: x is still free
generate x = 1 if _n == 1
generate y=2
assert x == 1 in 1
assert x == . in 2
assert y == 2
display "test completed"
