* Command words resolve by table order and least abbreviation, case counts.
* the figures below are for a data area of 10 MB, whatever the default
quietly set memory 10m
capture noisily exp
if _rc != 199 exit 9
capture noisily cont
if _rc != 199 exit 9
capture noisily Display "upper case is no command"
if _rc != 199 exit 9
di "di is display"
capture noisily s
if _rc != 199 exit 9
capture noisily displayxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
if _rc != 199 exit 9
q
qui display "quietly: not shown"
qu
* wh and whi are while, whic is which
local n 0
wh `n' < 2 {
    local ++n
}
if `n' != 2 exit 9
capture noisily whi
if _rc != 100 exit 9
whic _abbrevex.do
do _abbrevex
display "test completed"
