* An error two do-files down prints its status at each do level on the way
* up; inside a loop body, which runs as a program, it prints once.
local fail_b error 459
capture noisily do _level1
foreach w in a b c {
    display "pass `w'"
    `fail_`w''
    display "rest of pass `w'"
}
display "not reached"
