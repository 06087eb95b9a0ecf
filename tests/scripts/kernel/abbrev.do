* Command words resolve by table order and least abbreviation, case counts.
* the figures below are for a data area of 10 MB, whatever the default
quietly set memory 10m
capture noisily exp
capture noisily cont
capture noisily Display "upper case is no command"
di "di is display"
capture noisily s
capture noisily displayxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx
q
qui display "quietly: not shown"
qu
do _abbrevex
display "test completed"
