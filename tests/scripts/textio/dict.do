* infile and infix through dictionary files; every dictionary beside this
* script was written by hand and the values expected are read off it.
* dict_fixed.dct: two lines an observation, input widths, _skip, _line,
* _column, a free field after fixed ones, labels, data after the brace
infile using dict_fixed.dct, clear
assert _N == 2
local t : type id
assert "`t'" == "str4"
local t : type age
assert "`t'" == "int"
local t : type w
assert "`t'" == "double"
local l : variable label id
assert "`l'" == "identifier"
local l : variable label age
assert "`l'" == "age in years"
assert id == "A001" & age == 34 & w == 12.5 & name == "Bo Li" in 1
* "abc  " in columns 3-7 is not a number
assert id == "B2" & age == 7 & w == . & name == "Ann" in 2
* no widths and no directives: free format from the dictionary's data file
infile using dict_free.dct, clear
assert _N == 5
local l : variable label x
assert "`l'" == "the x"
assert s == "a" & x == 1.5 & t == "x y" in 1
assert s == "2" & x == . & t == "z" in 2
assert x == .a in 3
assert x == -400 & t == "with, comma" in 4
assert s == "e" & x == . & t == "v" in 5
* the data file named on the command takes the place of the dictionary's
infile using dict_free.dct, clear using(two.txt)
* two.txt holds 1 2 / 3 / 4 5 / 6: two observations of three values
assert _N == 2
assert s == "1" & x == 2 & t == "3" in 1
assert s == "4" & x == 5 & t == "6" in 2
* an infix dictionary: the same columns as the command-line reading of fix.txt
infix using dict_infix.dct, clear
assert _N == 3
local t : type a
assert "`t'" == "int"
local l : variable label a
assert "`l'" == "the a"
assert a == 12 & b == "abc" & c == 3.5 in 1
assert a == 123 & b == "de" & c == . in 2
assert a == . & b == "too" & c == . in 3
* two lines an observation, data after the brace
infix using dict_infix2.dct, clear
assert _N == 2
local l : variable label c
assert "`l'" == "third"
assert a == 1 & b == 2 & c == 3 in 1
assert a == 4 & b == 5 & c == 6 in 2
* each fault leaves the data as they were
infile using dsmall.dct, clear
assert _N == 2 & x[1] == 1 & x[2] == 2
capture infile using dsmall.dct
assert _rc == 18
capture infile using nosuch.dct, clear
assert _rc == 601
capture infile using dsmall.dct, clear using(nosuch.txt)
assert _rc == 601
capture infile using dsmall.dct, clear wide
assert _rc == 198
foreach f in head open fmt kind kind2 line dir extra infix {
    capture infile using dbad_`f'.dct, clear
    assert _rc == 198
    assert _N == 2 & x[1] == 1 & x[2] == 2
}
* an infile dictionary given to infix, and the other way round
capture infix using dsmall.dct, clear
assert _rc == 198
capture infile using dict_infix.dct, clear
assert _rc == 198
capture infix using dbad_infix.dct, clear
assert _rc == 198
capture infile using dbad_empty.dct, clear
assert _rc == 102
capture infile using dbad_dup.dct, clear
assert _rc == 110
assert _N == 2 & x[1] == 1 & x[2] == 2
* outfile with a dictionary: the lines written, then read back
drop _all
input double x str8 s byte g
1.5 "a b" 1
-2 "" 2
. "q" .
end
label variable x "the x"
label variable s `"say "hi""'
label define gl 1 "one" 2 "two"
label values g gl
outfile using od, dictionary replace
file open f using od.raw, read
file read f line
assert `"`line'"' == "dictionary {"
file read f line
assert `"`line'"' == `"    double x "the x""'
file read f line
assert `"`line'"' == `"    str8 s `"say "hi""'"'
file read f line
assert `"`line'"' == "    byte g"
file read f line
assert `"`line'"' == "}"
file read f line
assert `"`line'"' == `"1.5 "a b" 1"'
file close f
infile using od.raw, clear
assert _N == 3
local t : type s
assert "`t'" == "str8"
local t : type g
assert "`t'" == "byte"
local l : variable label s
assert `"`l'"' == `"say "hi""'
assert x == 1.5 & s == "a b" & g == 1 in 1
assert x == -2 & s == "" & g == 2 in 2
assert x == . & s == "q" & g == . in 3
* comma-separated
outfile x g using od2, dictionary comma replace
infile using od2.raw, clear
assert _N == 3
assert x == -2 & g == 2 in 2
display "test completed"
