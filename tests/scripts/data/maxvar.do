* set maxvar from a script: the limits follow it (macrolen is 33 * maxvar +
* 200, conslen 33 * maxvar + 216), and macros, scalars and value labels made
* before it survive the rebuilding of memory
drop _all
global keep "kept across"
scalar sk = 12.5
label define yn 0 "no" 1 "yes"
if !(c(maxvar) == 5000 & c(macrolen) == 165200) exit 9
quietly set maxvar 10000
if !(c(maxvar) == 10000 & c(macrolen) == 330200) exit 9
if !("$keep" == "kept across") exit 9
if !(sk == 12.5) exit 9
local l : label yn 1
if !("`l'" == "yes") exit 9
* out of 2048..32767, and with data in memory, nothing changes
capture set maxvar 2047
if !(_rc == 198) exit 9
capture set maxvar 32768
if !(_rc == 198) exit 9
set obs 1
generate x = 1
capture set maxvar 6000
assert _rc == 4
assert c(maxvar) == 10000
assert x == 1
* down to the least and back
drop _all
quietly set maxvar 2048
if !(c(maxvar) == 2048 & c(macrolen) == 33 * 2048 + 200) exit 9
if !("$keep" == "kept across") exit 9
quietly set maxvar 5000
if !(c(maxvar) == 5000) exit 9
display "test completed"
