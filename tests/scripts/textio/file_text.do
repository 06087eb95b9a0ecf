* file: text written through a handle and read back line by line; the
* expected lines are written out by hand.
tempfile t
file open h using "`t'", write
file write h "hello" _tab (1+1) _n
file write h %5.2f (3.14159) _skip(2) "x" _col(12) "y" _n(2)
file write h `"say "hi""' _char(65) %4s ("ab") _n
file write h "last, no newline"
file close h
file open h using "`t'", read text
file read h line
assert r(eof) == 0
assert `"`line'"' == "hello" + char(9) + "2"
file read h line
assert "`line'" == " 3.14  x   y"
file read h line
assert "`line'" == "" & r(eof) == 0
file read h line
assert `"`line'"' == `"say "hi"A  ab"'
file read h line
assert "`line'" == "last, no newline" & r(eof) == 0
file read h line
assert r(eof) == 1
file seek h tof
assert r(loc) == 0
file read h line
assert `"`line'"' == "hello" + char(9) + "2"
file seek h query
* "hello", tab, "2", line feed
assert r(loc) == 8
file close h
* a CRLF file: the carriage return is not part of the line
file open w using crlf.txt, write replace
file write w "a,b" _char(13) _n "c" _char(13) _n
file close w
file open r using crlf.txt, read
file read r line
assert "`line'" == "a,b"
file read r line
assert "`line'" == "c"
file read r line
assert r(eof) == 1
file close r
* append adds at the end
file open w using crlf.txt, write append
file write w "d" _n
file close w
file open r using crlf.txt, read
file seek r eof
assert r(loc) == 9
file close r
* refusals
capture file open w using crlf.txt, write
assert _rc == 602
capture file open w using nosuch.txt, read
assert _rc == 601
capture file read nohandle line
assert _rc == 601
file open w using new.txt, write
capture file open w using other.txt, write
assert _rc == 110
capture file read w line
assert _rc == 608
capture file write w foo
assert _rc == 198
capture file write w (1 +)
assert _rc != 0
file close _all
file query
display "test completed"
