* Reading delimited text: quoting, line ends, names, types, ranges and the
* awkward files. Expected values are read off the fixture files by hand.

* quoted fields with delimiters, doubled quotes and a CRLF inside; CRLF line
* ends, a byte-order mark, a blank line, no final line feed
import delimited fx_quotes.csv, clear
assert _N == 4
assert id[1] == 1 & id[2] == 2 & id[3] == 3 & id[4] == 4
assert name[1] == "Smith, J"
assert note[1] == `"said "hi""'
assert strlen(note[2]) == 10 & substr(note[2], 1, 3) == "two" & substr(note[2], 6, 5) == "lines"
assert name[3] == ""
assert note[4] == "no final line feed"
local t : type name
assert "`t'" == "str8"
local t : type id
assert "`t'" == "byte"

* header text made into valid, unique names; the text kept as the label
import delimited fx_header.csv, clear
confirm variable first_name first_name_2 v2nd x_y v5 _n_ byte_ a_very_long_header_that_goes_wel
local l : variable label first_name_2
assert "`l'" == "first name"
local l : variable label v2nd
assert "`l'" == "2nd"
local l : variable label x_y
assert "`l'" == "x-y"
local l : variable label v5
assert "`l'" == ""
assert v2nd == 3 & byte_ == 7 & a_very_long_header_that_goes_wel == 8

* a column that turns from numbers to text keeps every value as text
import delimited fx_switch.csv, clear
local t : type b
assert "`t'" == "str3"
assert b[1] == "10" & b[3] == "abc" & b[4] == "" & b[5] == "NA"
import delimited fx_switch.csv, clear numericcols(2)
local t : type b
assert "`t'" == "byte"
assert b[1] == 10 & b[2] == 20 & b[3] == . & b[4] == . & b[5] == .
import delimited fx_switch.csv, clear stringcols(1)
local t : type a
assert "`t'" == "str1"
assert a[5] == "5"

* the smallest type that holds every value exactly
import delimited fx_types.csv, clear
foreach v in b1 b2 {
    local t : type `v'
    assert "`t'" == "byte"
}
foreach v in i1 i2 {
    local t : type `v'
    assert "`t'" == "int"
}
foreach v in l1 l2 {
    local t : type `v'
    assert "`t'" == "long"
}
local t : type f1
assert "`t'" == "float"
foreach v in d1 d2 {
    local t : type `v'
    assert "`t'" == "double"
}
assert i1[2] == 101 & l1[1] == -32768 & l2[1] == 2147483620 & l2[2] == -2147483647
assert d1[1] == 0.1 & d1[2] == 1e300 & d2[1] == 2147483621
assert f1[1] == 0.5 & f1[2] == -1.25
assert m[1] == .a & m[2] == .
import delimited fx_types.csv, clear asdouble
local t : type f1
assert "`t'" == "double"

* a 100,000-character field is cut to 244 with a note
import delimited fx_long.csv, clear
local t : type txt
assert "`t'" == "str244"
assert strlen(txt[1]) == 244 & substr(txt[1], 1, 4) == "abab" & txt[2] == "short"

* Latin-1 text, a semicolon delimiter
import delimited fx_latin1.txt, clear delimiters(";") encoding(latin1)
assert name[1] == "caf" + char(195) + char(169)
assert value[1] == "1,5" & value[2] == "2"

* the row holding the names, a range of rows and of columns, tabs
import delimited fx_rows.tsv, clear varnames(3) rowrange(:5) delimiters(tab)
assert _N == 2
assert x[1] == 1 & x[2] == 4 & z[2] == 6
import delimited fx_rows.tsv, clear varnames(3) colrange(2:3)
assert _N == 4
confirm variable y z
capture confirm variable x
assert _rc == 111
assert y[4] == 11 & z[4] == 12
import delimited fx_rows.tsv, clear varnames(nonames) rowrange(4) case(upper)
assert _N == 4 & V1[1] == 1 & V3[4] == 12

* a header alone gives variables and no observations
import delimited fx_headonly.csv, clear
if !(_N == 0) exit 9
confirm variable a b

* failures name the line and leave the data as they were
import delimited fx_switch.csv, clear
capture import delimited fx_ragged.csv, clear
assert _rc == 198
capture import delimited fx_unclosed.csv, clear
assert _rc == 198
capture import delimited fx_after.csv, clear
assert _rc == 198
capture import delimited fx_empty.csv, clear
assert _rc == 2000
capture import delimited no_such_file.csv, clear
assert _rc == 601
capture import delimited fx_types.csv
assert _rc == 4
assert _N == 5 & b[3] == "abc" & a[5] == 5
capture import excel fx_types.csv, clear
assert _rc == 199
display "test completed"
