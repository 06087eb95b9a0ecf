* r() by program class, the internal table and its overflow, the class checks
program define rposts, rclass
    return scalar a = 2 + 3
    return local s "hello there"
end
program define rnothing, rclass
    local z = 1
end
program define plain
    local z = 1
end
rposts
if !(r(a) == 5) exit 9
if !("`r(s)'" == "hello there") exit 9
if !("`r(scalars)'" == "a") exit 9
if !("`: r(macros)'" == "s") exit 9
* a program that is not r-class leaves r() alone
plain
if !(r(a) == 5) exit 9
* an r-class program that posts nothing leaves r() empty
rnothing
if !(r(a) == .) exit 9
if !("`r(s)'" == "") exit 9
if !("`r(scalars)'" == "") exit 9

* twenty-one scalars: the last one goes beyond the internal table
program define many, rclass
    forvalues i = 1/21 {
        return scalar s`i' = `i' * 10
    }
end
many
if !(r(s1) == 10) exit 9
if !(r(s20) == 200) exit 9
if !(r(s21) == 210) exit 9
if !(wordcount("`r(scalars)'") == 21) exit 9
return list

* return local with empty text stores nothing and erases an earlier value
program define emptylocal, rclass
    return local x "first"
    return local x ""
    return scalar n = 1
end
emptylocal
if !("`r(x)'" == "") exit 9
if !("`: r(macros)'" == "") exit 9
if !(r(n) == 1) exit 9

* return add keeps the results of a command run inside the program
program define passon, rclass
    quietly count
    return add
    return scalar extra = 7
end
drop _all
set obs 4
passon
assert r(N) == 4
assert r(extra) == 7

* the class checks
capture return scalar x = 1
assert _rc == 151
capture return local x y
assert _rc == 151
capture ereturn local x y
assert _rc == 152
capture ereturn scalar x = 1
assert _rc == 152
capture sreturn local x y
assert _rc == 153
capture return nonsense
assert _rc == 198
program define sprog, sclass
    sreturn local word "alpha"
end
sprog
assert "`s(word)'" == "alpha"
sreturn clear
assert "`s(word)'" == ""

* results of built-in commands
count
assert r(N) == 4
quietly describe
assert r(N) == 4 & r(k) == 0
numlist "1/3"
assert "`r(numlist)'" == "1 2 3"

* _return hold and restore
program define two, rclass
    return scalar a = 1
    return local m "kept"
end
two
_return hold keep1
if !(r(a) == .) exit 9
count
_return restore keep1
assert r(a) == 1
assert "`r(m)'" == "kept"
capture _return restore keep1
assert _rc == 111
_return hold keep2
capture _return hold keep2
assert _rc == 110
_return drop _all
capture _return restore keep2
assert _rc == 111

* a held return under a temporary name goes with its program
program define tmpret
    tempname h
    _return hold `h'
    c_local hname `h'
end
tmpret
capture _return restore `hname'
assert _rc == 111

* c()
assert c(pi) == _pi
assert c(N) == 4
assert c(k) == 0
assert c(maxstrvarlen) == 244
assert c(namelen) == 32
assert c(max_matsize) == 11000 & c(min_matsize) == 10
assert c(matsize) == 400
assert "`c(byteorder)'" == "lohi"
assert "`c(dirsep)'" == "/"
assert "`c(born_date)'" == "20 Jul 2007"
assert c(korvu_version) == 9.2
assert "`c(nosuchkey)'" == ""
assert "`c(cmdtitle)'" == "on"
assert c(tol_r) == 1 & c(tol_1) == 1e-9
set tol_1 1e-7
assert c(tol_1) == 1e-7
assert "`c(current_date)'" != ""
capture assert 1
assert c(rc) == 0
capture error 459
assert c(rc) == 459
set rmsg on
assert "`c(rmsg)'" == "on"
set rmsg off
set lumostrict on
assert "`c(lumostrict)'" == "on"
set lumofavor space
assert "`c(lumofavor)'" == "space"
set level 90
assert c(level) == 90
capture set level 5
assert _rc == 198
capture set nosuchthing 3
assert _rc == 198
set seed 12345
assert length("`c(seed)'") == 37
display "test completed"
