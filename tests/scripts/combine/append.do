* append: types raised to hold both (byte with long, float with double, str5
* with str12), new variables missing for the old records, value labels of
* the file added where none of the name exists; failures change nothing.
run _datasig
drop _all
input byte b float f str5 s
1 1.5 "abc"
2 2.5 "abcde"
end
label define bl 1 "master one"
label values b bl
sort b
save master, replace

drop _all
input long b double f str12 s byte t
100000 0.1 "twelve chars" 7
-5 1e300 "" .b
end
label drop bl
label define bl 1 "using one" 2 "using two"
label values b bl
label define tl 7 "seven"
label values t tl
label variable t "only in the file"
char t[unit] "kg"
save other, replace

use master, clear
append using other
assert c(N) == 4 & c(k) == 4
assert "`: type b'" == "long" & "`: type f'" == "double" & "`: type s'" == "str12"
assert "`: type t'" == "byte"
* the old records keep their values exactly, in the wider types
assert b[1] == 1 & b[2] == 2 & b[3] == 100000 & b[4] == -5
assert f[1] == float(1.5) & f[2] == float(2.5)
* a float widened to double keeps the float's value: 0.1 from the file is
* the double 0.1, not the float nearest it
assert f[3] == 0.1 & f[3] != float(0.1) & f[4] == 1e300
assert s[1] == "abc" & s[2] == "abcde" & s[3] == "twelve chars" & s[4] == ""
* the new variable is missing for the old records, .b kept for the new
assert t[1] == . & t[2] == . & t[3] == 7 & t[4] == .b
assert "`: variable label t'" == "only in the file"
assert "`: char t[unit]'" == "kg"
* the label in memory stays; the new one comes from the file
assert "`: label bl 1'" == "master one"
assert "`: label (t) 7'" == "seven"
assert "`: sortedby'" == ""
assert c(changed) == 1

* notes of the file follow those in memory; nonotes leaves them out
use other, clear
char _dta[note1] "from the file"
char _dta[note0] "1"
char t[note1] "t note"
char t[note0] "1"
save othern, replace
use master, clear
char _dta[note1] "from memory"
char _dta[note0] "1"
append using othern
assert "`: char _dta[note0]'" == "2"
assert "`: char _dta[note1]'" == "from memory"
assert "`: char _dta[note2]'" == "from the file"
assert "`: char t[note1]'" == "t note"
use master, clear
char _dta[note1] "from memory"
char _dta[note0] "1"
append using othern, nonotes
assert "`: char _dta[note0]'" == "1"
assert "`: char _dta[note2]'" == ""
assert "`: char t[note1]'" == ""

* nolabel: no value labels from the file
use master, clear
append using other, nolabel
capture label list tl
assert _rc != 0

* a variable string in one and numeric in the other: nothing changes
drop _all
input str4 b
"x"
end
save clash, replace
use master, clear
kvsig
local before `"$DATASIG"'
capture noisily append using clash
assert _rc == 109
kvsig
assert `"$DATASIG"' == `"`before'"'

* a missing file, a file that is no dataset, a truncated one: nothing changes
capture append using nosuchfile
assert _rc == 601
kvsig
assert `"$DATASIG"' == `"`before'"'
! echo this is not a dataset file > notdta.dta
capture append using notdta
assert _rc == 610
kvsig
assert `"$DATASIG"' == `"`before'"'
! head -c 400 other.dta > trunc.dta
capture append using trunc
assert _rc == 688
kvsig
assert `"$DATASIG"' == `"`before'"'

* appending to nothing gives the file's data
drop _all
append using other
assert c(N) == 2 & c(k) == 4 & b[1] == 100000
display "test completed"
