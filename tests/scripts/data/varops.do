* rename, order, move, drop and keep of variables
input a b c d e
1 2 3 4 5
end
rename b bee
rename c cc
capture noisily rename a bee
capture noisily rename a 1a
capture noisily rename a _n
capture noisily rename zz y
describe, short
list
order e d
list
capture noisily order cc-bee
order bee-cc
list
move a e
list
capture noisily move a
capture noisily move a e d
drop d
list
keep cc a
list
capture noisily drop
capture noisily drop a if 1
capture noisily drop in 5
capture noisily drop zz
drop a*
list
describe
drop _all
describe
display "test completed"
