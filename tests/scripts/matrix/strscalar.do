* String scalars: made by a string expression, read back in expressions,
* listed in quotes, and kept apart from the numeric ones
scalar s = "hello"
scalar t = s + ", world"
if !(t == "hello, world") exit 9
if !(scalar(s) == "hello") exit 9
if !(length(t) == 12) exit 9
display t
local m = t
if !("`m'" == "hello, world") exit 9
* eight characters with the NUL make eight bytes: still a string, not a number
scalar u = "1234567"
if !(u == "1234567") exit 9
capture assert u == 1234567
if !(_rc == 109) exit 9
* a string scalar in a numeric place is a type mismatch
capture display s + 1
if !(_rc == 109) exit 9
* numbers and strings replace each other under one name
scalar n = 2.5
if !(n * 2 == 5) exit 9
scalar n = "two and a half"
if !(n == "two and a half") exit 9
scalar n = 7
if !(n == 7) exit 9
* the lists of names
scalar drop _all
scalar a1 = 1
scalar a2 = "x"
scalar b1 = "y"
local all : all scalars
if !("`all'" == "a1 a2 b1") exit 9
local num : all numeric scalars
if !("`num'" == "a1") exit 9
local str : all string scalars "a*"
if !("`str'" == "a2") exit 9
scalar list
scalar list a2
* a matrix takes the name over, and a scalar takes it back
matrix a2 = (1, 2)
capture assert a2 == "x"
if !(_rc != 0) exit 9
scalar a2 = "back"
capture matrix list a2
if !(_rc == 111) exit 9
if !(a2 == "back") exit 9
display "test completed"
