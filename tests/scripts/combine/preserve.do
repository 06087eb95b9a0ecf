* preserve and restore: nesting, the options, and the restore at the end of
* a program that ends well, fails or exits.
run _datasig
drop _all
input x str3 s y
3 "c" 30
1 "a" .
2 "bb" .a
end
label define yl 30 "thirty"
label define orphan 1 "one"
label values y yl
label variable x "the x"
char x[note1] "first note"
char _dta[source] "typed in"
sort x
save base, replace
kvsig
local orig `"$DATASIG"'
assert c(changed) == 0

* a plain round trip, after changing everything that can change
preserve
drop if x == 2
replace y = 99
generate z = 1
label drop _all
char x[note1]
sort s
restore
kvsig
assert `"$DATASIG"' == `"`orig'"'
assert "`: char x[note1]'" == "first note"
assert "`: char _dta[source]'" == "typed in"
assert "`: label orphan 1'" == "one"
assert "`: label yl 30'" == "thirty"
assert "$S_FN" == "base.dta"
assert c(changed) == 0

* the changed flag comes back as it was, set
replace x = x + 10
kvsig
local changed `"$DATASIG"'
assert c(changed) == 1
preserve
use base, clear
assert c(changed) == 0
restore
kvsig
assert `"$DATASIG"' == `"`changed'"'
replace x = x - 10
kvsig
local back `"$DATASIG"'

* one preserve at a level: 621, and the first stays good
preserve
capture preserve
assert _rc == 621
drop _all
restore
kvsig
assert `"$DATASIG"' == `"`back'"'
capture restore
assert _rc == 622

* restore, preserve can be repeated; restore, not cancels
preserve
drop in 1
restore, preserve
assert c(N) == 3
drop in 1/2
restore, preserve
assert c(N) == 3
drop y
restore, not
assert c(k) == 2
capture restore
assert _rc == 622
use base, clear

* preserve, changed writes nothing and leaves the data as they stand
preserve, changed
restore
kvsig
assert `"$DATASIG"' == `"`orig'"'

* an empty dataset comes back empty
drop _all
preserve
input a
5
end
restore
if !(c(k) == 0 & c(N) == 0) exit 9
use base, clear

* programs: their preserve comes back at their end however they end
program define ok_end
    preserve
    drop _all
    set obs 5
    generate w = 1
end
program define fails
    preserve
    drop if x < 3
    replace s = "zz"
    error 459
end
program define exits
    preserve
    keep in 1
    exit 7
end
program define keeps
    preserve
    drop in 1
    restore, not
end
program define nested
    preserve
    drop in 1
    ok_end
    assert c(N) == 2
    fails
end
ok_end
kvsig
assert `"$DATASIG"' == `"`orig'"'
capture fails
assert _rc == 459
kvsig
assert `"$DATASIG"' == `"`orig'"'
capture exits
assert _rc == 7
kvsig
assert `"$DATASIG"' == `"`orig'"'
keeps
assert c(N) == 2
use base, clear
capture nested
assert _rc == 459
kvsig
assert `"$DATASIG"' == `"`orig'"'

* a program may preserve while its caller holds a preserve
preserve
ok_end
drop in 1
restore
kvsig
assert `"$DATASIG"' == `"`orig'"'
display "test completed"
