* Command words resolve by table order and least abbreviation, case counts.
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
