* syntax newvarlist and newvarname add the new variables, numbers missing
* and strings empty, and the program keeps them; an existing name fails
* with 110 and adds nothing.
set obs 3
generate keep = _n
program define mk
    syntax newvarlist
    display "`varlist' / `typlist'"
end
program define mks
    syntax newvarname(string)
end
mk a1 double a2
mks s1
confirm numeric variable a1 a2
confirm string variable s1
local t1 : type a1
local t2 : type a2
local t3 : type s1
if "`t1' `t2' `t3'" != "float double str1" {
    display as error "types: `t1' `t2' `t3'"
    exit 9
}
assert a1 == . & a2 == . & s1 == ""
assert keep == _n
capture noisily mk b1 keep
if _rc != 110 {
    display as error "existing name gave " _rc
    exit 9
}
capture confirm variable b1
if _rc == 0 {
    display as error "b1 was kept after the failure"
    exit 9
}
display "test completed"
