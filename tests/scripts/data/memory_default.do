* the default data memory holds ordinary work: a million observations of a
* double (at the start-up width of 200 bytes a record, about 200 MB)
set obs 1000000
generate double x = _n
assert _N == 1000000
assert x == 1000000 in l
display "test completed"
