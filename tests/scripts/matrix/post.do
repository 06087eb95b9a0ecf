* matrix post and repost hand b and V to the e store; e(b), e(V) and get()
set obs 1
* read them back.
program define myest, eclass
    matrix b = (1, 2)
    matrix colnames b = x _cons
    matrix V = (4, 1 \ 1, 9)
    matrix colnames V = x _cons
    matrix rownames V = x _cons
    matrix post b V
end
myest
matrix eb = e(b)
assert eb[1,1] == 1 & eb[1,2] == 2
assert colnumb(eb, "_cons") == 2
matrix eV = get(VCE)
assert eV[2,2] == 9 & eV[1,2] == 1
matrix se = vecdiag(e(V))
assert se[1,1] == 4
local names : colnames eb
assert "`names'" == "x _cons"
matrix list e(V)
* posting moved the matrices
capture matrix list b
assert _rc == 111
program define repo, eclass
    matrix nb = (3, 4)
    matrix repost b = nb
end
repo
matrix eb = e(b)
assert eb[1,1] == 3 & eb[1,2] == 4
display "test completed"
