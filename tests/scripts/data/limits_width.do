* The widest record is 12 * 2048 = 24576 bytes. The record grows by half
* of what is left each time a variable does not fit (rounded up to even), or
* by just what it needs when that is more: 200, 12388, 18482, 21530, 23054,
* 23816, 24196, then 24440 for the hundredth str244 (half of 380 is less than
* 244). A str31 and a double fit in 24440 (used 24439). Each byte after that
* grows it by halves: 24508, 24542, 24560, 24568, 24572, 24574, 24576. A user
* may fill 24575 bytes, one being held back for the system.
quietly set memory 64m
quietly set maxvar 2048
set obs 10
forvalues k = 1/100 {
    quietly generate str244 s`k' = "cell `k'" + string(_n)
}
quietly memory
assert r(width) == 24400 & r(w_cur) == 24440
* a str163 asks for more than half of what is left: the width is short
capture noisily generate str163 t = "x"
assert _rc == 1010
quietly generate str31 t = "tail" + string(_n)
generate double d = _n
quietly memory
assert r(width) == 24439 & r(w_cur) == 24440
forvalues k = 1/136 {
    quietly generate byte b`k' = mod(_n + `k', 90)
}
* 100 * 244 + 31 + 8 + 136 = 24575 bytes: no room for one more byte
capture noisily generate byte b137 = 1
assert _rc == 1010
quietly memory
assert r(width) == 24575
assert r(w_cur) == 24576
assert r(k) == 238
* a promotion from byte to int takes the last byte
replace b1 = 1000 in 3
assert b1[3] == 1000 & b1[2] == 3
quietly memory
assert r(width) == 24576
* a second one finds no room, and leaves the variable as it was
capture noisily replace b2 = 1000 in 3
assert _rc == 1010
assert b2[3] == 5
quietly memory
assert r(width) == 24576
* compress makes d a byte: 7 bytes come free, and 6 bytes go to new variables
compress d
quietly memory
assert r(width) == 24569
forvalues k = 137/142 {
    quietly generate byte b`k' = `k' - 100
}
capture noisily generate byte b143 = 143
assert _rc == 1010
* the data came through every reshape of the record intact
assert s1 == "cell 1" + string(_n)
assert s100 == "cell 100" + string(_n)
assert t == "tail" + string(_n)
assert d == _n
assert b136 == mod(_n + 136, 90)
assert b142 == 42
assert b1 == cond(_n == 3, 1000, _n + 1)
drop _all
* the variable count: 2047 for a user
set obs 2
forvalues k = 1/2047 {
    quietly generate byte v`k' = mod(`k', 100)
}
capture noisily generate byte v2048 = 0
assert _rc == 900
assert v2047 == 47 & v1 == 1
drop _all
* set maxvar needs an empty dataset and a number in its range
capture noisily set maxvar 2047
local rc = _rc
set obs 1
generate x = 1
assert `rc' == 198
capture noisily set maxvar 3000
assert _rc == 4
display "test completed"
