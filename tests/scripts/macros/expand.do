* Macro expansion.
local a "b"
local b "nested"
display "``a''"
global g "G"
display "$g and ${g}x and $ blank and $1digit"
local i 1
display "`i++' `i' `++i' `i' `i--' `--i'"
local x "a" "b"
display `"`x'"'
local e
display "[`e']"
local keep "kept"
local keep
display "[`keep']"
local q `"quoted "inside""'
display `"`q'"'
local m "`macval(q)'"
display `"`m'"'
* self-reference stops with 920 and the line is not run
global loop "\$loop"
capture noisily do _loop.do
* a comment line is never expanded: $loop
local n1 "one"
local n2 "two"
macro drop _n*
display "[`n1'`n2']"
global keep1 "k"
global drop1 "d"
global drop2 "d"
macro drop drop*
macro dir
display "test completed"
