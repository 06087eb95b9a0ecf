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
if !(r(eof) == 0) exit 9
if !(`"`line'"' == "hello" + char(9) + "2") exit 9
file read h line
if !("`line'" == " 3.14  x   y") exit 9
file read h line
if !("`line'" == "" & r(eof) == 0) exit 9
file read h line
if !(`"`line'"' == `"say "hi"A  ab"') exit 9
file read h line
if !("`line'" == "last, no newline" & r(eof) == 0) exit 9
file read h line
if !(r(eof) == 1) exit 9
file seek h tof
if !(r(loc) == 0) exit 9
file read h line
if !(`"`line'"' == "hello" + char(9) + "2") exit 9
file seek h query
* "hello", tab, "2", line feed
if !(r(loc) == 8) exit 9
file close h
* a CRLF file: the carriage return is not part of the line
file open w using crlf.txt, write replace
file write w "a,b" _char(13) _n "c" _char(13) _n
file close w
file open r using crlf.txt, read
file read r line
if !("`line'" == "a,b") exit 9
file read r line
if !("`line'" == "c") exit 9
file read r line
if !(r(eof) == 1) exit 9
file close r
* append adds at the end
file open w using crlf.txt, write append
file write w "d" _n
file close w
file open r using crlf.txt, read
file seek r eof
file seek r query
* "a,b" CR LF, "c" CR LF, then "d" LF
if !(r(loc) == 10) exit 9
file close r
* refusals
capture file open w using crlf.txt, write
if !(_rc == 602) exit 9
capture file open w using nosuch.txt, read
if !(_rc == 601) exit 9
capture file read nohandle line
if !(_rc == 601) exit 9
file open w using new.txt, write
capture file open w using other.txt, write
if !(_rc == 110) exit 9
capture file read w line
if !(_rc == 608) exit 9
capture file write w foo
if !(_rc == 198) exit 9
capture file write w (1 +)
if !(_rc != 0) exit 9
file close _all
file query
display "test completed"
