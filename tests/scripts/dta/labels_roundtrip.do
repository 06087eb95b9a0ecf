label define yn 0 "no" 1 "yes" .a "not asked"
label define yn 2 "maybe", add
label list yn
label dir
char _dta[source] "hand made"
char list
notes: first note
notes
label data "empty but labelled"
save t, emptyok orphans
label save yn using yn
label drop _all
use t, clear
char list
label list
label drop _all
do yn
label list yn
capture use nosuch, clear
if _rc != 601 {
    exit 9
}
display "test completed"
