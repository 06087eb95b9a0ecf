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
drop _all
use people
list
char list
describe
display "test completed"
