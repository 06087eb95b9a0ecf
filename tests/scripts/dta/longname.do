* File names longer than the old 500-byte buffers are taken whole, and one too
* long for any buffer is refused with its own message, never cut
drop _all
set obs 2
generate x = _n * 10
local d "ddddddddddddddddddddddddd"
forvalues i = 1/3 {
    local d "`d'`d'"
}
local n : length local d
assert `n' == 200
mkdir `d'
mkdir `d'/`d'
mkdir `d'/`d'/`d'
local f "`d'/`d'/`d'/data_with_a_long_path.dta"
local n : length local f
assert `n' > 600
save "`f'"
confirm file "`f'"
drop _all
use "`f'"
assert x == _n * 10 & _N == 2
* 6400 characters: too long for any file name
local g "gggggggggggggggggggggggggggggggggggggggggggggggggg"
forvalues i = 1/7 {
    local g "`g'`g'"
}
local n : length local g
assert `n' == 6400
capture noisily save "`g'.dta"
assert _rc == 198
capture noisily use "`g'"
assert _rc == 198
capture noisily do "`g'"
assert _rc == 198
assert x == _n * 10 & _N == 2
display "test completed"
