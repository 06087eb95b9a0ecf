* label dir lists the value labels and posts their names in r(names)
* assert checks each observation: one is needed
set obs 1
label define beta 1 "one"
label define alpha 2 "two"
label dir
local n `r(names)'
assert "`n'" == "alpha beta" | "`n'" == "beta alpha"
assert wordcount("`r(names)'") == 2
label drop _all
label dir
assert "`r(names)'" == ""
display "test completed"
