* set obs with more observations than can ever be numbered is a shortage of
* room (901) with its advice; a count not a whole number is syntax (198)
capture noisily set obs 2147483647
display _rc
capture noisily set obs 1e12
display _rc
capture noisily set obs 1.5
display _rc
capture noisily set obs -1
display _rc
set obs 3
assert _N == 3
display "test completed"
