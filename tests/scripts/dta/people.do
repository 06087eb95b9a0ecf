* Labels, characteristics and a rename survive a save and a use.
set obs 3
input str5 name byte age
"ann" 30
"bob" .a
"cy" 2
end
label define ag 30 "thirty" .a "unknown"
label values age ag
label variable age "age in years"
label data "people"
char age[note] "a characteristic"
describe
list
rename age years
describe
save people, replace
* changed data are not thrown away by use without clear
replace years = 31 in 1
capture noisily use people
assert _rc == 4
assert years[1] == 31 & _N == 3
drop _all
use people
list
char list
describe
display "test completed"
