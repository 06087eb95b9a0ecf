* run by tempnames.do: temporaries of a do-file
tempvar z
tempfile g
global T "`z'"
global F "`g'"
generate `z' = 1
save "`g'"
confirm file "`g'"
confirm variable `z'
