* label copy: the new label holds the same pairs, and is a copy: changing one
* leaves the other; an existing target needs replace
drop _all
label define yn 0 "no" 1 "yes" .a "refused"
label copy yn yn2
local a : label yn2 0
local b : label yn2 1
local c : label yn2 .a
if !("`a'" == "no" & "`b'" == "yes" & "`c'" == "refused") exit 9
* a value without text shows as the number
local d : label yn2 2
if !("`d'" == "2") exit 9
label define yn2 2 "maybe", add
label define yn 1 "yes indeed", modify
local e : label yn 2
if !("`e'" == "2") exit 9
local f : label yn2 1
if !("`f'" == "yes") exit 9
local g : label yn 1
if !("`g'" == "yes indeed") exit 9
* the target exists: 110 without replace, and the target is untouched
capture label copy yn yn2
if !(_rc == 110) exit 9
local h : label yn2 2
if !("`h'" == "maybe") exit 9
label copy yn yn2, replace
local i : label yn2 1
local j : label yn2 2
if !("`i'" == "yes indeed" & "`j'" == "2") exit 9
* a source that does not exist, and a name that is not one
capture label copy nosuch other
if !(_rc == 111) exit 9
capture label copy yn 1bad
if !(_rc == 198) exit 9
capture label copy yn
if !(_rc == 198) exit 9
* copying onto itself changes nothing
label copy yn yn, replace
local k : label yn 0
if !("`k'" == "no") exit 9
* the copy is used by a variable like any label
set obs 2
generate byte v = _n - 1
label values v yn2
local l : label (v) 1
assert "`l'" == "yes indeed"
display "test completed"
