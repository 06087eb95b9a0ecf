* The store's subcommands: describe, memory, rename, drop and clear.
lumo clear
lumo
z = (1,2,3)
s = "hello"
function twice(x) { return(2 * x) }
end
lumo describe
lumo memory
display r(mat_n)
display r(fcn_n)
lumo rename z b
lumo: b
* z is no longer there: naming it at the interactive level makes a new 0 x 0
lumo: rows(z), cols(z)
lumo rename twice() dbl()
lumo: dbl(4)
capture noisily lumo rename b s
display _rc
lumo drop b
capture noisily lumo drop b
display _rc
lumo describe
lumo clear
lumo memory
display r(mat_n)
display r(fcn_n)
display r(live)
display "test completed"
