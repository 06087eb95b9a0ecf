* Hand-worked cases of the group commands, and bad input that must leave
* the data as they were.
* descending keys keep the sort's tie rules: the orders below come from the
* model of the sort in tests/reference/sortmodel.py, the key negated
drop _all
set sortseed 1001
set obs 12
generate id = _n
generate k = mod(7*_n, 5)
dsort -k
local want 12 2 7 4 9 11 6 1 8 3 10 5
forvalues i = 1/12 {
    local w : word `i' of `want'
    assert id[`i'] == `w'
}
local srt : sortedby
assert "`srt'" == ""
drop _all
set obs 30
generate id = _n
generate k = mod(_n*_n, 7)
generate str1 s = substr("ABCD", mod(_n*3, 4) + 1, 1)
dsort - s k
local want 21 29 13 1 17 25 5 9 14 22 6 10 18 2 30 26 7 27 15 3 11 19 23 28 8 20 4 24 16 12
forvalues i = 1/30 {
    local w : word `i' of `want'
    assert id[`i'] == `w'
}
* an ascending key ahead of a descending one is a declared order
dsort k -s
local srt : sortedby
assert "`srt'" == "k"
assert k[1] == 0 & s[1] >= s[2] & k[30] == 4

* expand: 2, 0, ., 3, 1 copies make 2 + 1 + 1 + 3 + 1 = 8; copies at the end
drop _all
set obs 5
generate id = _n
generate e = cond(_n == 1, 2, cond(_n == 2, 0, cond(_n == 3, ., cond(_n == 4, 3, 1))))
expand e, generate(new)
assert _N == 8
assert id[6] == 1 & id[7] == 4 & id[8] == 4
assert new[5] == 0 & new[6] == 1 & new[8] == 1
expand = 2 if id == 5
assert _N == 9 & id[9] == 5
capture expand
assert _rc == 198
assert _N == 9

* fillall: x in 1 2 3 and y in a b; three of the six pairs stand
drop _all
set obs 3
generate x = _n
generate str1 y = cond(_n == 2, "b", "a")
generate v = 10*_n
fillall x y
assert _N == 6
count if _fillall
assert r(N) == 3
assert x[1] == 1 & y[1] == "a" & x[2] == 1 & y[2] == "b" & x[6] == 3 & y[6] == "b"
assert missing(v[2]) & missing(v[3]) & v[1] == 10 & v[4] == 20 & v[5] == 30
capture fillall x y
assert _rc == 110

* levels: strings in order of their bytes, numbers with missing on request
drop _all
set obs 6
generate str5 s = cond(_n < 3, "b x", cond(_n < 5, "a", "c"))
generate x = cond(_n == 6, ., mod(_n, 3))
levels s, local(ls)
assert `"`ls'"' == `"`"a"' `"b x"' `"c"'"'
levels x, local(lx) missing
assert "`lx'" == "0 1 2 ."
assert "`r(levels)'" == "0 1 2 ."
levels x if x > 0, local(lx) separate(,)
assert "`lx'" == "1,2"

* idcheck: 459 on duplicates and on missing values, data unchanged
drop _all
set obs 6
generate a = ceil(_n/2)
generate b = mod(_n, 2)
generate c = cond(_n == 3, ., _n)
idcheck a b
capture idcheck a
assert _rc == 459
capture idcheck c
assert _rc == 459
idcheck c, missok
assert _N == 6

* duplicates: drop on some variables only needs force; nothing changes without
replace b = 0
capture duplicates drop a
assert _rc == 198 & _N == 6
duplicates drop a b, force
assert _N == 3 & a[1] == 1 & a[3] == 3
capture duplicates tag a, generate(a)
assert _rc == 110

* collapse: bad input leaves the data
drop _all
set obs 4
generate g = mod(_n, 2)
generate str2 s = "x"
generate y = _n
capture collapse (mean) s, by(g)
assert _rc == 109 & _N == 4
capture collapse (nonsense) y, by(g)
assert _rc == 198 & _N == 4
capture collapse (mean) g, by(g)
assert _rc == 198 & _N == 4
capture collapse (mean) y if y > 10, by(g)
assert _rc == 2000 & _N == 4
collapse (sum) y (max) m = y, by(g)
assert _N == 2 & y[1] == 6 & y[2] == 4 & m[1] == 4 & m[2] == 3

* xgenerate: names and functions checked first
drop _all
set obs 4
generate y = _n
capture xgenerate y = mean(y)
assert _rc == 110
capture xgenerate z = nosuch(y)
assert _rc == 133
capture xgenerate z = cut(y)
assert _rc == 198
xgenerate z = cut(y), at(0 2 4)
assert z[1] == 0 & z[2] == 2 & z[3] == 2 & missing(z[4])
xgenerate zi = cut(y), at(0 2 4) icodes
assert zi[1] == 0 & zi[2] == 1 & missing(zi[4])
xgenerate sq = seq(), from(1) to(2) block(1)
assert sq[1] == 1 & sq[2] == 2 & sq[3] == 1 & sq[4] == 2
replace y = cond(_n < 3, 5, 7)
xgenerate mo = mode(y), minmode
assert mo == 5
xgenerate mx = mode(y), maxmode
assert mx == 7
xgenerate mm = mode(y)
assert missing(mm)

* sample: a percent or a count, by group, with if
drop _all
set obs 1000
generate g = mod(_n, 5)
generate id = _n
sample 10
assert _N == 100
drop _all
set obs 100
generate g = mod(_n, 5)
sort g
by g: sample 3, count
assert _N == 15
count if g == 2
assert r(N) == 3
drop _all
set obs 100
generate g = mod(_n, 5)
sample 0 if g == 1
assert _N == 80
capture sample 101
assert _rc == 198 & _N == 80
display "test completed"
