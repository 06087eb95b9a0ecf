* set obs adds observations: numbers missing, strings empty
set obs 2
describe
input str6 name int n
abc 7
end
set obs 5
list
set obs 5
capture noisily set obs 3
assert _rc == 198
capture noisily set obs 2.5
assert _rc == 198
capture noisily set obs -1
assert _rc == 198
capture noisily set obs many
assert _rc == 198
describe, short
display "test completed"
