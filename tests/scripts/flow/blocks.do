* if and else with blocks, false branches walked without running, while
* re-expanding its condition on each pass, and the brace errors.
if 1 {
    display "if true"
}
else {
    display "never"
}
if 0 {
    display "never"
    if 1 {
        display "never, nested"
    }
    forvalues i = 1/3 {
        display "never, loop"
    }
    {
        display "never, block"
    }
}
else {
    display "else of a false if"
}
if 0 {
    display "never"
}
else if 1 {
    display "else if"
}
else {
    display "never"
}
local n 0
local g0 1
local g1 1
local g2 1
local g3 0
while `g`n'' {
    display "while pass `n'"
    local ++n
}
display "while ended at `n'"
capture noisily { display "text after the open brace"
if _rc != 198 exit 9
capture noisily {
    display "inside"
} display "text after the close brace"
if _rc != 198 exit 9
capture noisily if 1
if _rc != 100 exit 9
display "an exit inside a loop leaves the do-file"
do _exitloop
display "back"
display "test completed"
