* insheet: delimiters, names guessed or told, lower-case names unless case,
* names given, doubles, and no replacement of the data without clear.
insheet using fx_tab.txt
confirm variable name age score
assert name[2] == "bob" & age[1] == 31 & score[2] == 2.25
local t : type score
assert "`t'" == "float"
capture insheet using fx_tab.txt
assert _rc == 4
insheet using fx_tab.txt, clear case double
confirm variable Name Age Score
local t : type Score
assert "`t'" == "double"
insheet using fx_tab.txt, clear nonames tab
assert _N == 3 & v1[1] == "Name" & v2[1] == "Age"
insheet who howold points using fx_tab.txt, clear
assert who[1] == "ann" & howold[2] == 42 & points[1] == 1.5
insheet using fx_pipe.txt, clear delimiter("|")
assert _N == 2 & v1[2] == 6 & v2[1] == "x"
insheet using fx_pipe.txt, clear delimiter("|") names
assert _N == 1 & v5[1] == 6 & x[1] == "y"
capture insheet using fx_pipe.txt, clear tab comma
assert _rc == 198
capture insheet using fx_pipe.txt, clear delimiter("||")
assert _rc == 198
capture insheet using no_such_file.txt, clear
assert _rc == 601
assert _N == 1
display "test completed"
