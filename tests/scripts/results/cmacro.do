* The extended macro functions that read the stores: `: c(key)', `: r(name)',
* `: e(name)', `: s(name)' and the lists of names
local d : c(born_date)
assert "`d'" == "20 Jul 2007"
local s : c(dirsep)
assert "`s'" == "/"
local n : c(namelen)
assert `n' == 32
local m : c(maxbyte)
assert `m' == 100
local mm : c(max_matsize)
assert `mm' == 11000
local p : c(pi)
assert reldif(`p', 3.14159265358979) < 1e-14
* numbers follow the %18.0g form, as in `c()' expansion
local t : c(tol_1)
assert "`t'" == "1.00000000e-09"
* the date of today, in the same form as c(current_date) in an expression
local today : c(current_date)
assert "`today'" == c(current_date)
* an unknown key gives empty text, as `c(nosuchkey)' does
local u : c(nosuchkey)
assert "`u'" == ""
* bad forms
capture local x : c(pi
assert _rc == 198
capture local x : c(pi) extra
assert _rc == 198
* one r() result, and the list of names
count
local z : r(N)
assert `z' == 0
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
