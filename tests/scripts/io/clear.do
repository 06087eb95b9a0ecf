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
if !("`.cobj'" == "7") exit 9
    display "here"
end
clear
if !(_N == 0) exit 9
capture confirm variable x
if !(_rc != 0) exit 9
capture label list yn
if !(_rc != 0) exit 9
matrix list A
if !(s1 == 5) exit 9
tmpprog
if !("`.cobj'" == "7") exit 9
* the changed flag is gone: use-like commands need no clear now
example longley
assert _N == 16
assert employed[1] == 60323 & gnp[16] == 554894 & year[16] == 1962
clear all
capture matrix list A
if !(_rc == 111) exit 9
capture assert s1 == 5
if !(_rc != 0) exit 9
if "`.cobj'" != "" exit 9
* clear takes no other word
capture clear everything
if !(_rc == 198) exit 9
display "test completed"
