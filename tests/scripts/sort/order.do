* Already ordered data keep their order, ties included; stable keeps the
* present order of ties; the declared order and what cuts it.
set obs 20
gen id = _n
gen k = floor(_n/4)
sort k
assert id == _n
local srt : sortedby
assert "`srt'" == "k"
* strictly descending data are reversed
gen d = 100 - _n
sort d
assert id == 21 - _n
* stable: ties in their present order, the work key not declared
gen t = mod(_n, 3)
sort t, stable
assert t[_n-1] < t | (t[_n-1] == t & id[_n-1] > id) in 2/l
local srt : sortedby
assert "`srt'" == "t"
* a change to a key cuts the order there
sort t id
local srt : sortedby
assert "`srt'" == "t id"
replace id = id + 0
local srt : sortedby
assert "`srt'" == "t id"
replace id = -id in 1
local srt : sortedby
assert "`srt'" == "t"
* missing values sort last, . before .a before .b
drop _all
input x
3
.b
.
1
.a
2
end
sort x
assert x[1] == 1 & x[3] == 3 & x[4] == . & x[5] == .a & x[6] == .b
* strings by byte order
drop _all
input str5 s
"b"
"B"
"ab"
""
"a"
end
sort s
assert s[1] == "" & s[2] == "B" & s[3] == "a" & s[4] == "ab" & s[5] == "b"
* texts longer than 8 bytes that share their start
drop _all
input str12 s
"abcdefghij"
"abcdefghi"
"abcdefgh"
"abcdefghia"
"abcdefgz"
"b"
"abcdefghij"
end
gen id = _n
sort s
assert s[1] == "abcdefgh" & s[2] == "abcdefghi" & s[3] == "abcdefghia"
assert s[4] == "abcdefghij" & s[5] == "abcdefghij" & s[6] == "abcdefgz" & s[7] == "b"
sort s id
assert id[4] == 1 & id[5] == 7
* one observation and the empty dataset declare their order
drop _all
set obs 1
gen z = 1
sort z
local srt : sortedby
assert "`srt'" == "z"
* if is not allowed, in is
capture sort z if z == 1
assert _rc == 101
capture sort z, stable index(q)
assert _rc == 198
capture sort
assert _rc == 100
display "test completed"
