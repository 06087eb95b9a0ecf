* foreach over a list of new names: one pass per name, in order; a name that
* is already a variable stops the loop with 110 before any pass; the loop
* itself makes no variables.
set obs 2
generate zz3 = 1
local seen
foreach v of newlist zz1 zz2 {
    local seen `seen' `v'
}
if "`seen'" != "zz1 zz2" {
    display as error "passes over the new list: [`seen']"
    exit 9
}
capture confirm variable zz1
if _rc == 0 {
    display as error "the loop made a variable"
    exit 9
}
local seen
capture noisily foreach v of newlist zz4 zz3 {
    local seen `seen' `v'
}
if _rc != 110 | "`seen'" != "" {
    display as error "existing name: code " _rc ", passes [`seen']"
    exit 9
}
* a long list of new names, each pass once
local n 0
foreach v of newlist q1-q300 {
    local ++n
}
if `n' != 300 {
    display as error "`n' passes over q1-q300"
    exit 9
}
display "test completed"
