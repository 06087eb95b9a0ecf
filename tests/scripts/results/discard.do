* Discarding the data ends e() and the held estimates; a matrix result has no
* place in an ordinary expression (509)
program define fakeest, eclass
    tempname b V
    matrix `b' = (1.5, -2)
    matrix colnames `b' = x _cons
    matrix `V' = (4, 1 \ 1, 9)
    matrix colnames `V' = x _cons
    matrix rownames `V' = x _cons
    ereturn post `b' `V', esample(touse) obs(4) depname(y)
    ereturn local cmd "fakeest"
end
program define rmat, rclass
    matrix M = (1, 2)
    return matrix M = M
    return scalar k = 2
end

set obs 6
generate x = _n
generate byte touse = x <= 4
fakeest
assert e(N) == 4
assert el(e(b), 1, 1) == 1.5
* e(b) and e(V) in an ordinary expression: 509, in every command that reads one
capture display e(b)
assert _rc == 509
capture generate z = e(V)
assert _rc == 509
capture assert e(b) == 1
assert _rc == 509
capture confirm variable z
assert _rc != 0
* the estimation results themselves are untouched
assert e(N) == 4
assert "`e(cmd)'" == "fakeest"
* in macro expansion a matrix reads as its kind
assert "`e(b)'" == "matrix"
* an r() matrix too; the r() scalar beside it reads as usual
rmat
capture display r(M)
assert _rc == 509
assert r(k) == 2

* drop _all: e() and the held estimates go with the data
_estimates hold kept, copy
_estimates dir
assert "`r(names)'" == "kept"
drop _all
if !(e(N) == .) exit 9
if !("`e(cmd)'" == "") exit 9
if !("`e(functions)'" == "") exit 9
_estimates dir
if !("`r(names)'" == "") exit 9
capture _estimates unhold kept
if !(_rc == 111) exit 9

* use: the same, whether or not the file read has anything to do with them
set obs 6
generate x = _n
generate byte touse = x <= 4
save _discard_tmp, replace
fakeest
_estimates hold other, copy
assert e(N) == 4
use _discard_tmp, clear
if !(e(N) == .) exit 9
if !("`e(cmd)'" == "") exit 9
_estimates dir
if !("`r(names)'" == "") exit 9
count if e(sample)
assert r(N) == 0
* the data read are all there: the marker variable made no trouble
describe, short
assert r(k) == 2 & r(N) == 6
erase _discard_tmp.dta

* a failed use (no such file) discards nothing
fakeest
capture use _no_such_file_here, clear
assert _rc == 601
assert e(N) == 4
display "test completed"
