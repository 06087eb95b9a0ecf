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
* the values come through the change of type
assert a == cond(_n == 1, 1, 100) & c == cond(_n == 1, 3, 30000)
assert s == cond(_n == 1, "x", "longer") & d == cond(_n == 1, 4, 70000)
compress
capture noisily compress a if a > 0
assert _rc == 101
capture noisily compress in 1
assert _rc == 101
memory
capture noisily set memory 1k
capture noisily set memory 20m
drop _all
capture noisily compress
if _rc != 3 {
    exit 9
}
capture noisily set memory 1k
set memory 20m
memory
display "test completed"
