* forvalues in its four forms; fractional steps add up in double precision,
* so 0(0.1)0.5 runs six passes, 0(0.1)1 eleven and 1(-0.3)0 four; an empty
* range runs no pass; the counter is left erased.
forvalues i = 1/3 {
    display "slash `i'"
}
display "counter after the loop: [`i']"
forvalues x = 0(0.25)1 {
    display "quarter `x'"
}
forvalues x = 0(0.1)0.5 {
    display "up"
}
forvalues x = 0(0.1)1 {
    display "up to one"
}
forvalues x = 1(-0.3)0 {
    display "down"
}
forvalues k = 10 8 : 4 {
    display "colon `k'"
}
forvalues k = 1 4 to 10 {
    display "to `k'"
}
local lo 2
local hi 1
forvalues i = `lo'/`hi' {
    display "never"
}
display "empty range ran no pass"
capture noisily forvalues i = 1(0)3 {
    display "never"
}
if _rc != 198 exit 9
capture noisily forvalues i = 1 to 3 {
    display "never"
}
if _rc != 198 exit 9
* continue skips the rest of a pass; continue, break ends the loop.
local act_b continue
local act_d continue, break
foreach w in a b c d e {
    `act_`w''
    display "body `w'"
}
* a continue inside if blocks inside the loop keeps the rest skipped
local c_2 continue
forvalues i = 1/3 {
    if 1 {
        if 1 {
            display "pass `i' before"
            `c_`i''
            display "pass `i' inside"
        }
        display "pass `i' between"
    }
    display "pass `i' after"
}
* nested loops keep their own counters and lists
foreach a in x y {
    forvalues n = 1/2 {
        foreach b in p q {
            display "`a'`n'`b' rest [`ferest()']"
        }
    }
}
* a list from a local and from a global, and numbers
local mine "one `"two three"' four"
foreach w of local mine {
    display "local: [`w']"
}
global g "alpha beta"
foreach w of global g {
    display "global: [`w']"
}
foreach v of numlist 1 2.5 -3 {
    display "number: [`v']"
}
capture noisily foreach v of numlist 1 x {
    display "never"
}
if _rc != 121 exit 9
capture noisily foreach v of nothing a b {
    display "never"
}
if _rc != 198 exit 9
local empty
foreach w of local empty {
    display "never"
}
display `"mine is still [`mine']"'
* continue outside a loop
capture noisily continue
if _rc != 119 exit 9
display "test completed"
