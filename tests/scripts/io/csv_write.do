* Writing delimited text and reading it back: the values come back identical;
* options for delimiters, names, labels, quoting, formats and replace.
clear
set obs 6
generate byte b = _n - 3
generate int i = 1000 * _n
generate long l = 100000 * _n
generate float f = _n / 3
generate double d = _n / 7 + 1e10
generate str12 s = "t" + string(_n)
replace s = `"a "q", b"' in 2
replace d = . in 3
replace f = .b in 4
label define lb -2 "minus two" 0 "zero"
label values b lb

* outsheet: tab-separated by default, names, strings quoted, codes on request
outsheet using rt1.txt, nolabel
import delimited rt1.txt, clear delimiters(tab)
assert b == _n - 3
assert i == 1000 * _n & l == 100000 * _n
assert f == float(_n / 3) if _n != 4
assert f[4] == .b
assert d == _n / 7 + 1e10 if _n != 3
assert d[3] == .
assert s[2] == `"a "q", b"' & s[1] == "t1" & s[6] == "t6"
local t : type f
assert "`t'" == "float"
local t : type d
assert "`t'" == "double"

* value labels written as their text
clear
set obs 3
generate byte b = _n - 2
label define lb -1 "minus one" 1 "one"
label values b lb
outsheet using rt2.csv, comma
insheet using rt2.csv, clear
assert b[1] == "minus one" & b[2] == "0" & b[3] == "one"
* no names, codes, no quotes: the lines as they stand
clear
set obs 2
generate byte b = _n
label values b lb
generate str2 s = "s" + string(_n)
outsheet using rt5.txt, nonames nolabel noquote
insheet using rt5.txt, clear delimiter("|") nonames
assert v1[1] == "1" + char(9) + "s1" & v1[2] == "2" + char(9) + "s2"

* an existing file is kept without replace
clear
set obs 2
generate x = _n
capture outsheet using rt2.csv, comma
assert _rc == 602
insheet using rt2.csv, clear
assert b[1] == "minus one"

* export: a varlist with if and in, a delimiter, no names, display formats
clear
set obs 5
generate double p = _n / 3
format p %6.3f
generate str3 s = "s" + string(_n)
export delimited s p using rt3.csv if _n != 2 in 1/4, delimiter(";") novarnames datafmt replace
import delimited rt3.csv, clear delimiters(";") varnames(nonames)
assert _N == 3
assert v1[1] == "s1" & v1[2] == "s3" & v1[3] == "s4"
assert v2[1] == 0.333 & v2[2] == 1 & v2[3] == 1.333

* whole numbers in plain digits, the rest in the shortest exact text
clear
set obs 1
generate double a = 100000
generate double b = 1e15
generate double c = -2e20
generate double d = 0.00001
generate double e = -100000
export delimited using rt6.csv, replace
import delimited rt6.csv, clear delimiters("|") stringcols(_all)
assert a_b_c_d_e[1] == "100000,1000000000000000,-2e+20,1e-05,-100000"

* full precision and no quotes
clear
set obs 2
generate double z = 0.1 + _n * 1e-15
generate str5 w = "a b"
export delimited using rt4.csv, noquote replace
import delimited rt4.csv, clear
assert z == 0.1 + _n * 1e-15
assert w == "a b"
* read as whole lines (no pipe in the file): the quotes as written
import delimited rt4.csv, clear delimiters("|") stringcols(_all)
assert z_w[1] == "0.100000000000001,a b"
clear
set obs 2
generate double z = 0.1 + _n * 1e-15
generate str5 w = "a b"
export delimited using rt4.csv, replace
import delimited rt4.csv, clear delimiters("|") stringcols(_all)
assert z_w[1] == "0.100000000000001," + char(34) + "a b" + char(34)
display "test completed"
