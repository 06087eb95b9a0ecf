* infile (free format) and infix (columns): the files beside this script
* were written by hand; the values expected are read off them.
* free.txt: blanks, commas (two in a row: a missing value), quoted text with
* a blank and a comma, a word in a numeric column, no final line end
infile str3 s double x str12 t using free.txt
assert _N == 5
assert s == "a" in 1
assert x == 1.5 in 1
assert t == "x y" in 1
assert s == "2" in 2
assert x == . in 2
assert t == "z" in 2
assert x == .a in 3
assert x == -400 in 4
assert t == "with, comma" in 4
* "abc" is not a number
assert x == . in 5
assert s == "e" & t == "v" in 5
* the data in memory need clear
capture infile y using free.txt
assert _rc == 18
assert _N == 5 & x == 1.5 in 1
* a file that does not exist leaves the data as they were
capture infile y using nosuch.txt, clear
assert _rc == 601
assert _N == 5 & t == "with, comma" in 4
* a dictionary that does not exist
capture infile using dict.dct, clear
assert _rc == 601
* fix.txt: columns 1-4, 5-7 and 8-11; a CRLF line; a line whose text is
* longer than its variable
infix int a 1-4 str3 b 5-7 c 8-11 using fix.txt, clear
assert _N == 3
local t : type a
assert "`t'" == "int"
assert a == 12 in 1
assert b == "abc" in 1
assert c == 3.5 in 1
assert a == 123 in 2
assert b == "de" in 2
assert c == . in 2
assert a == . in 3
assert b == "too" in 3
* "ng9" in columns 8-10
assert c == . in 3
* two lines an observation
infix 2 lines a 1 b 3 2: c 1 using two.txt, clear
assert _N == 2
assert a == 1 & b == 2 & c == 3 in 1
assert a == 4 & b == 5 & c == 6 in 2
capture infix a 3-1 using two.txt, clear
assert _rc == 198
capture infix a using two.txt, clear
assert _rc == 198
assert _N == 2
display "test completed"
