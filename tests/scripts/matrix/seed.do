* The generator from a fresh start and after set seed, against values from
* the model in tests/reference/urnmodel.py (exact hexadecimal forms).
set obs 3
generate double u = uniform()
assert u[1] == 1.188b1bc8X-003
assert u[2] == 1.4954382aX-001
assert u[3] == 1.1d982f0cX-001
assert "`c(seed)'" == "X449562ba07988aab94e12a21e0d7adbd421b"
set seed 1
assert "`c(seed)'" == "Xc136bd85c43f462544a474abacbdd93d391e"
replace u = uniform()
assert u[1] == 1.561c5fc8X-001
assert u[2] == 1.db1db69X-001
assert u[3] == 1.f01be4f8X-002
* a seed and its negative give one stream; the default seed the start-up one
set seed -42
scalar a = uniform()
set seed 42
scalar b = uniform()
assert scalar(b) == scalar(a)
assert scalar(a) == 1.260d7848X-003
set seed 123456789
scalar b = uniform()
assert scalar(b) == 1.188b1bc8X-003
* the state text repeats the stream
set seed 7
local s = c(seed)
generate double v = uniform()
set seed `s'
generate double w = uniform()
assert v == w
* an if keeps one draw per selected observation, in order
set seed 1
generate double z = uniform() if _n != 2
assert z[1] == 1.561c5fc8X-001 & missing(z[2]) & z[3] == 1.db1db69X-001
* matuniform fills by rows
set seed 1
matrix U = matuniform(1, 2)
assert U[1,2] == 1.db1db69X-001
* bad state texts and seeds
capture noisily set seed X449562ba07988aab94e12a21e0d7adbd421c
assert _rc == 198
capture set seed X449562BA07988aab94e12a21e0d7adbd421b
assert _rc == 198
capture set seed X449562ba
assert _rc == 198
capture noisily set seed 1 2
assert _rc == 198
capture noisily set seed 1.5
assert _rc == 198
capture set seed 2147483647
assert _rc == 198
* after the failures the state is the one set last
assert "`c(seed)'" != ""
set seed0 0
set seed0 -5
display "test completed"
