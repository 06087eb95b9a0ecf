* outfile: the lines written are read back with file and compared with the
* text expected, worked out by hand; then read in again with infile.
drop _all
input double x str8 s byte g
1.5 "a b" 1
-2 "" 2
. "q" .
end
label define gl 1 "one" 2 "two"
label values g gl
outfile using o1, replace
file open f using o1.raw, read
file read f line
assert `"`line'"' == `"1.5 "a b" "one""'
file read f line
assert `"`line'"' == `"-2 "" "two""'
file read f line
assert `"`line'"' == `". "q" ."'
file read f line
assert r(eof) == 1
file close f
outfile x g using o2.csv, comma nolabel replace
file open f using o2.csv, read
file read f line
assert "`line'" == "1.5,1"
file read f line
assert "`line'" == "-2,2"
file read f line
assert "`line'" == ".,."
file close f
outfile s x using o3 if g == 2, noquote replace
file open f using o3.raw, read
file read f line
assert "`line'" == " -2"
file read f line
assert r(eof) == 1
file close f
* an existing file needs replace
capture outfile using o1
assert _rc == 602
* round trip: written, then read with infile
outfile x s g using o4, nolabel replace
infile double x str8 s byte g using o4.raw, clear
assert _N == 3
assert x == 1.5 & s == "a b" & g == 1 in 1
assert x == -2 & s == "" & g == 2 in 2
assert x == . & s == "q" & g == . in 3
* wide rows wrap at 80 characters unless wide
drop _all
set obs 1
forvalues i = 1/30 {
    generate double v`i' = 1000 + `i'
}
outfile using o5, replace
outfile using o6, replace wide
file open f using o5.raw, read
file read f line
* 16 values of 4 digits and 15 blanks fit, the 17th would pass 80
assert length("`line'") == 79
file close f
file open f using o6.raw, read
file read f line
assert length("`line'") == 30 * 5 - 1
file close f
display "test completed"
