* The words of generate and replace: singular and plural, in and if,
* nothing at quietly level, real changes only, promotion of storage types.
set obs 5
generate a = 1 in 1/4
generate b = 1 if _n != 3
generate c = 1 if _n > 10
quietly generate d = .
generate e = _n
generate byte f = _n * 100
assert a == cond(_n < 5, 1, .) & b == cond(_n != 3, 1, .) & c == . & d == .
* a byte holds 100 at most: the larger products are stored as missing
assert e == _n & f == cond(_n == 1, 100, .)
* floats: the double result is compared with the cell, so a change below
* float precision still counts, though the cell keeps its value
generate float g = 1
replace g = g + 1e-9
replace g = g + 1e-6
assert g == float(1 + 1e-6)
* byte to int, byte to float, and without promotion
generate byte h = 1
replace h = 200 in 1
describe h
generate byte k = 1
replace k = 1.5 in 2
describe k
generate byte m = 1
replace m = 1000 in 1, nopromote
replace m = 2.5 in 2, nopromote
replace m = . in 3
list h k m
display "test completed"
