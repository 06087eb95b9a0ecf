* e() from ereturn post, held and brought back, with the e(sample) marker
set obs 6
generate x = _n
generate byte touse = x <= 4
program define fakeest, eclass
    ereturn post, esample(touse) obs(4) depname(x) properties(b V)
    ereturn local cmd "fakeest"
    ereturn scalar ll = -12.5
end
fakeest
assert e(N) == 4
assert e(ll) == -12.5
assert "`e(cmd)'" == "fakeest"
assert "`e(depvar)'" == "x"
assert "`e(properties)'" == "b V"
assert "`e(functions)'" == "sample"
count if e(sample)
assert r(N) == 4
* the marker is no ordinary variable
capture confirm variable touse
assert _rc != 0
ereturn list

* hold without copy: e() empties, the marker becomes a variable of its own
_estimates hold first
assert e(N) == .
assert "`e(cmd)'" == ""
count if e(sample)
assert r(N) == 0
count if first == 1
assert r(N) == 4
_estimates dir
assert "`r(names)'" == "first"
_estimates unhold first
assert e(ll) == -12.5
assert "`e(cmd)'" == "fakeest"
count if e(sample)
assert r(N) == 4
capture confirm variable first
assert _rc != 0

* hold with copy keeps e() and copies the marker
_estimates hold second, copy varname(keepme)
assert e(N) == 4
count if keepme
assert r(N) == 4
count if e(sample)
assert r(N) == 4
* a bad name in the list drops nothing
capture _estimates drop second nosuch
assert _rc == 111
_estimates dir
assert "`r(names)'" == "second"
_estimates drop second
_estimates dir
assert "`r(names)'" == ""
capture confirm variable keepme
assert _rc != 0

* unhold brings e(sample) back only if the variable is still byte 0/1
_estimates hold third
replace third = 2 in 1
_estimates unhold third
assert "`e(cmd)'" == "fakeest"
count if e(sample)
assert r(N) == 0
capture confirm variable third
assert _rc == 0

* an automatic restore at the end of the program that held them
drop third
program define holder
    _estimates hold mine, restore
    assert "`e(cmd)'" == ""
    capture _estimates hold again, restore nullok
    assert _rc == 621
end
holder
assert "`e(cmd)'" == "fakeest"
count if e(sample)
assert r(N) == 0
_estimates dir
assert "`r(names)'" == ""
* held under a temporary name: gone when the program ends
program define tmpholder
    tempname h
    _estimates hold `h', copy
    _estimates dir
    assert "`r(names)'" == "`h'"
end
tmpholder
_estimates dir
assert "`r(names)'" == ""
assert "`e(cmd)'" == "fakeest"
* unhold, not: the held results stay and are no longer restored
program define keepheld
    _estimates hold kept, restore
    _estimates unhold kept, not
end
keepheld
assert "`e(cmd)'" == ""
_estimates unhold kept
assert "`e(cmd)'" == "fakeest"

* the checks of hold and unhold
capture _estimates unhold nosuch
assert _rc == 111
_estimates clear
program define clearit, eclass
    ereturn clear
end
clearit
capture _estimates hold nothing
assert _rc == 301
_estimates hold nothing, nullok
_estimates unhold nothing
assert "`e(cmd)'" == ""

* esample() must hold only 0 and 1
generate byte two = 2
program define badsample, eclass
    ereturn post, esample(two)
end
capture badsample
assert _rc == 471
* ereturn display with no estimates left by the failed post
program define showit, eclass
    ereturn display
end
capture showit
assert _rc == 301
capture ereturn repost
assert _rc == 152
display "test completed"
