* The extended macro functions that read the stores: `: c(key)', `: r(name)',
* `: e(name)', `: s(name)' and the lists of names
local d : c(born_date)
if !("`d'" == "20 Jul 2007") exit 9
local s : c(dirsep)
if !("`s'" == "/") exit 9
local n : c(namelen)
if !(`n' == 32) exit 9
local m : c(maxbyte)
if !(`m' == 100) exit 9
local mm : c(max_matsize)
if !(`mm' == 11000) exit 9
local p : c(pi)
if !(reldif(`p', 3.14159265358979) < 1e-14) exit 9
* numbers follow the %18.0g form, as in `c()' expansion
local t : c(tol_1)
if !("`t'" == strtrim(string(1e-9, "%18.0g"))) exit 9
if !("`t'" == "1e-09") exit 9
* the date of today, in the same form as c(current_date) in an expression
local today : c(current_date)
if !("`today'" == c(current_date)) exit 9
* an unknown key gives empty text, as `c(nosuchkey)' does
local u : c(nosuchkey)
if !("`u'" == "") exit 9
* bad forms
capture local x : c(pi
if !(_rc == 198) exit 9
capture local x : c(pi) extra
if !(_rc == 198) exit 9
* one r() result, and the list of names
count
local z : r(N)
if !(`z' == 0) exit 9
set obs 3
count
local z : r(N)
assert `z' == 3
local names : r(scalars)
assert "`names'" == "N"
program define post2, rclass
    return scalar a = 1.25
    return local who "two words"
end
post2
local a : r(a)
assert `a' == 1.25
local w : r(who)
assert "`w'" == "two words"
local none : r(nothing)
assert "`none'" == ""
display "test completed"
