* list: box, header, a rule every five observations, formats, options
input int id float x str10 name
1 1.5 "Ann"
2 -2.25 "Bob Smith"
3 . "{brace}"
4 .a ""
5 1000000 "Eve"
6 0.001 "F"
7 123456789 "Gus"
end
list
format x %9.2f
list x name in 2/4
list id x, separator(2)
list id x, separator(0) noobs
list name id, clean
list id in -2/l, clean noobs
list id if 1
capture noisily list id in 9
assert _rc == 198
capture noisily list nothere
assert _rc == 111
capture noisily list, table display
assert _rc == 198
display "test completed"
