* describe: header, one line per variable, short form, a varlist
describe
input byte b int i long l float f double d str12 s
1 2 3 4.5 6.25 "twelve chars"
end
format d %10.3f
describe
describe f-s
describe i, short
capture noisily describe zz
assert _rc == 111
capture noisily describe, bogus
assert _rc == 198
display "test completed"
