* wide data: the display form, or the table when asked for
input double(averyveryverylongname1 averyveryverylongname2 averyveryverylongname3 third fourth) str20 label
1 2 3 4 5 "first row"
6 7 8 9 10 "second row"
end
list
* a new variable fills the observations there first, then adds one
input str50 note
""
""
"a note that pushes the table past the line"
end
list
list in 2/3, table
list third fourth, display
list third fourth, abbreviate(3)
list averyveryverylongname1 third, abbreviate(12) noobs
display "test completed"
