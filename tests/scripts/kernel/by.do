* The by prefix: its checks before any group runs.
set obs 2
input x
1
2
end
capture noisily by x: list
capture noisily by x: display "a"
capture noisily by x y: list
capture noisily bysort x: list
capture noisily by x: by x: list
capture noisily by x, bogus: list
display "test completed"
