* generate, replace, count, and dropping or keeping observations.
set obs 74
generate x = 1/0
generate double y = _n in 1/2
generate byte b = 300
generate str1 s1 = "abc"
generate str s = "abc"
generate t = s + "d"
describe
replace x = x
replace b = 300 in 1
replace b = 1000 in 2, nopromote
describe b
replace y = y * 2 if y < .
count if y < .
count if .
drop in 3/74
keep if y == 2
list
capture noisily generate x = 1
assert _rc == 110
capture noisily generate z = "a"+1
assert _rc == 109
capture noisily generate byte q = "a"
assert _rc == 109
display "test completed"
