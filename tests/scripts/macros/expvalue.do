* Expressions in macros: local x = exp, `=exp', and a while loop counting.
local x = 1/3
display "`x'"
local y = "a" + "b"
display "`y' `=2*21'"
local i 0
while `i' < 3 {
  local i = `i' + 1
}
display `i'
display "test completed"
