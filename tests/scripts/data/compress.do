* compress messages, memory, set memory limits
* the figures below are for a data area of 10 MB, whatever the default
quietly set memory 10m
input double(a b) float c long d str20 s
1 2.5 3 4 "x"
100 -3 30000 70000 "longer"
end
describe
compress
describe
compress
memory
capture noisily set memory 1k
capture noisily set memory 20m
drop _all
capture noisily set memory 1k
set memory 20m
memory
display "test completed"
