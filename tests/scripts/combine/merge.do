* _merge and merge: match merges with repeated keys on both sides, the
* one-to-one merge, update and replace with each code, nokeep, keep(),
* _merge() naming, several files; failures change nothing.
run _datasig
drop _all
input id int a str3 s
1 10 "m1"
2 20 "m2a"
2 21 "m2b"
4 . "m4"
5 50 "m5"
end
sort id
save m, replace
drop _all
input id long a str3 u
2 200 "u2a"
2 201 "u2b"
2 202 "u2c"
3 300 "u3"
4 400 "u4"
5 50 "u5"
end
sort id
save u, replace
drop _all
input id w
6 6000
1 1000
end
sort id
save v, replace

* match merge: the k-th master record of a key goes with the k-th using
* record, the side with fewer repeating its last
use m, clear
merge id using u
assert c(N) == 7 & "`: type a'" == "long"
local ids 1 2 2 2 3 4 5
local as 10 20 21 21 300 . 50
local ss m1 m2a m2b m2b . m4 m5
local us . u2a u2b u2c u3 u4 u5
local ms 1 3 3 3 2 3 3
forvalues i = 1/7 {
    assert id[`i'] == `: word `i' of `ids''
    assert a[`i'] == `: word `i' of `as''
    local t : word `i' of `ss'
    if "`t'" == "." local t
    assert s[`i'] == "`t'"
    local t : word `i' of `us'
    if "`t'" == "." local t
    assert u[`i'] == "`t'"
    assert _merge[`i'] == `: word `i' of `ms''
}
assert "`: sortedby'" == "" & c(changed) == 1

* update: a missing master value filled (4), a conflict (5), agreement (3)
use m, clear
merge id using u, update
local as 10 20 21 21 300 400 50
local ms 1 5 5 5 2 4 3
forvalues i = 1/7 {
    assert a[`i'] == `: word `i' of `as''
    assert _merge[`i'] == `: word `i' of `ms''
}
* update replace: the using value wins a conflict; nokeep; _merge() names
use m, clear
merge id using u, update replace nokeep _merge(how)
assert c(N) == 6
local as 10 200 201 202 400 50
local ms 1 5 5 5 4 3
forvalues i = 1/6 {
    assert a[`i'] == `: word `i' of `as''
    assert how[`i'] == `: word `i' of `ms''
}
capture confirm variable _merge
assert _rc != 0
* keep(): only u comes from the file; a stays the master's
use m, clear
merge id using u, keep(u) update
assert "`: type a'" == "int"
assert a[5] == . & u[5] == "u3" & a[6] == . & _merge[6] == 3 & _merge[2] == 3

* one-to-one
use m, clear
merge using u
assert c(N) == 6
assert id[1] == 1 & a[1] == 10 & u[1] == "u2a" & _merge[1] == 3
assert id[5] == 5 & u[5] == "u4" & _merge[5] == 3
assert id[6] == 5 & a[6] == 50 & s[6] == "" & u[6] == "u5" & _merge[6] == 2

* several files in turn; the merge variable tells of the last
use m, clear
merge id using u v
assert c(N) == 8
assert id[1] == 1 & w[1] == 1000 & _merge[1] == 3
forvalues i = 2/7 {
    assert w[`i'] == . & _merge[`i'] == 1
}
assert id[8] == 6 & w[8] == 6000 & _merge[8] == 2

* failures leave everything as it was
use m, clear
kvsig
local before `"$DATASIG"'
capture merge id using u, unique
assert _rc == 459
capture merge id using u, uniqusing
assert _rc == 459
drop _all
input str2 id
"x"
end
save clash, replace
use m, clear
capture merge id using clash
assert _rc == 109
kvsig
assert `"$DATASIG"' == `"`before'"'
capture merge a using u
assert _rc == 5
capture merge id using nosuchfile
assert _rc == 601
capture merge id using u clash
assert _rc == 109
capture merge id using v u, uniqusing
assert _rc == 459
kvsig
assert `"$DATASIG"' == `"`before'"'
generate _merge = 1
kvsig
local before `"$DATASIG"'
capture merge id using u
assert _rc == 110
kvsig
assert `"$DATASIG"' == `"`before'"'
drop _all
capture merge id using u
if !(_rc == 3) exit 9

* no room for the result: nothing changes
quietly set memory 200k
set obs 4000
generate double id = 2 * _n
generate double x = _n
sort id
save m2, replace
replace id = id + 1
rename x y
sort id
save u2, replace
use m2, clear
program define cheapsig
    quietly summarize id
    local s "`=c(N)' `=c(k)' `=c(changed)' `: sortedby' `r(sum)'"
    quietly summarize x
    global CHEAPSIG "`s' `r(sum)' `: type id' `: type x'"
end
cheapsig
local before "$CHEAPSIG"
capture merge id using u2
assert _rc == 901 | _rc == 902
cheapsig
assert "$CHEAPSIG" == "`before'"
capture append using u2
assert _rc == 901
cheapsig
assert "$CHEAPSIG" == "`before'"
display "test completed"
