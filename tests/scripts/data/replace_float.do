* replace counts a change wherever the double result differs from the cell,
* bit for bit, before the storage type rounds it. 0.1 has no exact float, so
* a float cell holding float(0.1) still differs from the double 0.1: three
* changes each time; 0.5 is exact in a float: three changes, then none.
set obs 3
generate float f = 0.1
replace f = 0.1
replace f = 0.1
replace f = f
replace f = float(0.1)
replace f = 0.5
replace f = 0.5
assert f == 0.5
generate byte b = 1
replace b = 1.5
* the byte is promoted to hold 1.5
confirm numeric variable b
assert b == 1.5
replace b = 1
display "test completed"
