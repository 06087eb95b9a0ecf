* clear drops the data, value labels and the changed flag and keeps the
* rest; clear all also drops matrices, scalars, results and programs.
set obs 3
generate x = _n
label define yn 0 "no" 1 "yes"
label values x yn
matrix A = (1, 2)
scalar s1 = 5
.cobj = 7
program define tmpprog
assert "`.cobj'" == "7"
    display "here"
end
clear
assert _N == 0
capture confirm variable x
assert _rc != 0
capture label list yn
assert _rc != 0
matrix list A
assert s1 == 5
tmpprog
assert "`.cobj'" == "7"
* the changed flag is gone: use-like commands need no clear now
example longley
assert _N == 16
assert employed[1] == 60323 & gnp[16] == 554894 & year[16] == 1962
clear all
capture matrix list A
assert _rc == 111
capture assert s1 == 5
assert _rc != 0
assert "`.cobj'" == ""
* clear takes no other word
capture clear everything
assert _rc == 198
display "test completed"
