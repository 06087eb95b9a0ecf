local fail_b error 459
foreach w in a b c {
    display "pass `w'"
    `fail_`w''
    display "rest of pass `w'"
}
display "not reached"
