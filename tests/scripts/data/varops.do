* rename, order, move, drop and keep of variables
input a b c d e
1 2 3 4 5
end
rename b bee
rename c cc
capture noisily rename a bee
assert _rc == 110
capture noisily rename a 1a
assert _rc == 198
capture noisily rename a _n
assert _rc == 198
capture noisily rename zz y
assert _rc == 111
describe, short
list
order e d
list
capture noisily order cc-bee
assert _rc == 198
order bee-cc
list
move a e
list
capture noisily move a
assert _rc == 102
capture noisily move a e d
assert _rc == 103
drop d
list
keep cc a
list
capture noisily drop
assert _rc == 100
capture noisily drop a if 1
assert _rc == 198
capture noisily drop in 5
assert _rc == 198
capture noisily drop zz
assert _rc == 111
drop a*
list
describe
drop _all
describe
display "test completed"
