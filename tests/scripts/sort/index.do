* An index variable records an order, and sort index() puts it back.
set obs 50
gen id = _n
gen long idx = _n
gen k = mod(_n*17, 7)
sort k
assert id[1] != 1 | id[2] != 2
sort id, index(idx)
assert id == _n
local srt : sortedby
assert "`srt'" == "id"
* a program declared sortpreserve leaves the order as it found it
program define scramble, sortpreserve
    sort k
    assert "`_sortindex'" != ""
end
sort id
scramble
assert id == _n
local srt : sortedby
assert "`srt'" == "id"
describe, short
display "test completed"
