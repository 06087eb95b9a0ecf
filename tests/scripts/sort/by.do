* by-groups: exact equality, sort-only variables, _n and _N in groups, the
* silent commands, rc0, and programs called per group or once.
input g x
1 5
.a 1
2 3
. 2
1 4
2 .
.a 6
1 7
end
capture by g: count
assert _rc == 5
* a partial sort declares no order, so by still refuses
sort g in 1/4
capture by g: count
assert _rc == 5
bysort g (x): gen n = _n
bysort g (x): gen N = _N
local srt : sortedby
assert "`srt'" == "g x"
* groups: 1 (3 obs), 2 (2), . (1), .a (2): . and .a apart
assert g == 1 & N == 3 in 1/3
assert x == 4 & n == 1 in 1
assert g == 2 & N == 2 in 4/5
assert x == . & n == 2 in 5
assert g == . & N == 1 in 6
assert g == .a & N == 2 in 7/8
* the missing-count message counts every group, once, after the last
by g: gen y = x if n == 1
assert y == 4 in 1
assert y == . in 2
by g: gen first = x[1]
assert first == 4 in 1/3
assert first == 1 in 7/8
by g: replace first = first + _n
assert first == 6 in 2
* drop under by acts within each group
by g: drop if _n == 2
assert _N == 5
assert g[1] == 1 & g[2] == 1 & g[3] == 2 & g[4] == . & g[5] == .a
* by-group functions: the group number and the last group
by g: gen idx = _byindex()
by g: gen lst = _bylastcall()
by g: gen r1 = _byn1()
by g: gen r2 = _byn2()
assert idx[1] == 1 & idx[3] == 2 & idx[5] == 4
assert lst == (_n == 5)
assert r1[2] == 1 & r2[2] == 2 & r1[5] == 5
* rc0 goes on past a failing group and shows each code
capture noisily by g, rc0: count if "a"
assert _rc == 0
capture by g: count if "a"
assert _rc == 109
capture by g: assert x < 5
assert _rc == 9
capture by g, rc0: assert x < 5
assert _rc == 9
* a command that cannot be run by group
capture by g: describe
assert _rc == 190
display "test completed"
