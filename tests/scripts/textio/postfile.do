* postfile, post, postclose: the rows posted make the dataset; the data in
* memory stay as they were.
set obs 3
generate x = _n * 10
postfile p str10 name double v int k byte(b1 b2) long l f using res, replace
post p ("one") (1.5) (3) (1) (2) (100000) (0.1)
post p ("two") (x[2] / 4) (100000) (-127) (101) (-5) (1e39)
post p ("a much longer name") (.) (2.7) (.) (.b) (.) (-2.5)
capture post p ("x") (1)
assert _rc == 102
capture post p (1) (1) (1) (1) (1) (1) (1)
assert _rc == 109
capture post nosuch (1)
assert _rc == 111
postclose p
assert _N == 3 & x[3] == 30
capture postclose p
assert _rc == 111
use res, clear
assert _N == 3
local t : type name
assert "`t'" == "str10"
local t : type v
assert "`t'" == "double"
local t : type k
assert "`t'" == "int"
local t : type b2
assert "`t'" == "byte"
local t : type l
assert "`t'" == "long"
assert name == "one" in 1
assert name == "a much lon" in 3
assert v == 1.5 in 1
assert v == 5 in 2
assert v == . in 3
* 100000 does not fit an int; 2.7 is cut to 2
assert k == 3 in 1
assert k == . in 2
assert k == 2 in 3
assert b1 == -127 in 2
assert b2 == . in 2
assert b2 == .b in 3
assert l == 100000 in 1
assert l == -5 in 2
* f is float by default: 0.1 rounded to single precision; 1e39 is beyond it
local t : type f
assert "`t'" == "float"
assert f == float(0.1) in 1
assert f == . in 2
assert f == -2.5 in 3
* an existing file needs replace
capture postfile q a using res
assert _rc == 602
display "test completed"
