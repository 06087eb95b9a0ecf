* String scalars: made by a string expression, read back in expressions,
* listed in quotes, and kept apart from the numeric ones
scalar s = "hello"
scalar t = s + ", world"
assert t == "hello, world"
assert scalar(s) == "hello"
assert length(t) == 12
display t
local m = t
assert "`m'" == "hello, world"
* eight characters with the NUL make eight bytes: still a string, not a number
scalar u = "1234567"
assert u == "1234567"
capture assert u == 1234567
assert _rc == 109
* a string scalar in a numeric place is a type mismatch
capture display s + 1
assert _rc == 109
* numbers and strings replace each other under one name
scalar n = 2.5
assert n * 2 == 5
scalar n = "two and a half"
assert n == "two and a half"
scalar n = 7
assert n == 7
* the lists of names
scalar drop _all
scalar a1 = 1
scalar a2 = "x"
scalar b1 = "y"
local all : all scalars
assert "`all'" == "a1 a2 b1"
local num : all numeric scalars
assert "`num'" == "a1"
local str : all string scalars "a*"
assert "`str'" == "a2"
scalar list
scalar list a2
* a matrix takes the name over, and a scalar takes it back
matrix a2 = (1, 2)
capture assert a2 == "x"
assert _rc != 0
scalar a2 = "back"
capture matrix list a2
assert _rc == 111
assert a2 == "back"
display "test completed"
