* negative whole values take labels like any other value in the range of a
* long (-2147483647 to 2147483620), and the extended missing values too
label define answer -1 "refused" -2 "don't know" 1 "yes" 0 "no" .a "skipped"
label define answer -2147483647 "lowest", add
label list answer
set obs 4
generate byte q = 1 - _n
replace q = .a in 4
label values q answer
list
capture noisily label define bad -1.5 "half"
assert _rc == 198
capture noisily label define bad -2147483648 "below"
assert _rc == 198
* the top of the range of a long, and the plain missing value
capture noisily label define bad 2147483621 "above"
assert _rc == 198
capture noisily label define bad . "dot"
assert _rc == 198
label define top 2147483620 "top" .z "last"
label list top
display "test completed"
