* constraint keeps numbered constraints; matrix makeCns builds the constraint
* matrix of the current estimates, matrix dispCns shows it
* assert checks each observation: one is needed
set obs 1
constraint define 1 x = z
constraint 2 2*x + [eq2]w = 3
constraint define 3 _b[z] - 0.5 = [eq2]_b[w]
constraint 10 [eq2]_cons
constraint list
constraint dir
constraint get 2
assert r(defined) == 1
assert "`r(contents)'" == "2*x + [eq2]w = 3"
constraint get 4
assert r(defined) == 0
constraint free
assert r(free) == 4
* estimates with two equations: eq1: x z _cons, eq2: w _cons
program define myest, eclass
    matrix b = (1, 2, 3, 4, 5)
    matrix colnames b = eq1:x eq1:z eq1:_cons eq2:w eq2:_cons
    matrix V = I(5)
    matrix colnames V = eq1:x eq1:z eq1:_cons eq2:w eq2:_cons
    matrix rownames V = eq1:x eq1:z eq1:_cons eq2:w eq2:_cons
    matrix post b V
end
myest
matrix makeCns 1-3
matrix C = get(Cns)
assert rowsof(C) == 3 & colsof(C) == 6
* row 1: x - z = 0
assert C[1,1] == 1 & C[1,2] == -1 & C[1,3] == 0 & C[1,4] == 0 & C[1,6] == 0
* row 2: 2x + w = 3
assert C[2,1] == 2 & C[2,2] == 0 & C[2,4] == 1 & C[2,6] == 3
* row 3: z - w = 0.5
assert C[3,1] == 0 & C[3,2] == 1 & C[3,4] == -1 & C[3,6] == 0.5
matrix dispCns
* all constraints: 1 2 3 10, the last [eq2]_cons = 0
matrix makeCns
matrix C = get(Cns)
assert rowsof(C) == 4 & C[4,5] == 1 & C[4,1] == 0 & C[4,6] == 0
* x = 0 besides 1 2 3 in x, z, w only: four rows of rank 3
constraint 9 x
capture matrix makeCns 1/3 9
assert _rc == 412
* a redundant set: x = z twice
constraint 11 z = x
capture matrix makeCns 1 11
assert _rc == 412
* an inconsistent set: x = z and x - z = 1
constraint 12 x - z = 1
capture matrix makeCns 1 12
assert _rc == 412
* unknown coefficients and bad text
constraint 13 nosuch = 1
capture matrix makeCns 13
assert _rc == 111
constraint 14 [eq3]x = 1
capture matrix makeCns 14
assert _rc == 111
constraint 15 x + * z = 1
capture matrix makeCns 15
assert _rc == 198
constraint 16 3 = 4
capture matrix makeCns 16
assert _rc == 198
capture matrix makeCns 99
assert _rc == 111
* failed builds left the last good matrix
matrix C = get(Cns)
assert rowsof(C) == 4
* numbers out of range and drops
capture constraint 0 x = 1
assert _rc == 198
capture constraint 2000 x = 1
assert _rc == 198
capture constraint 5
assert _rc == 198
constraint drop 11/16
constraint drop 9/10
constraint dir
constraint get 10
assert r(defined) == 0
constraint drop _all
constraint free
assert r(free) == 1
* without estimates
program define clr, eclass
    ereturn clear
end
clr
matrix dispCns
capture matrix makeCns
assert _rc == 301
display "test completed"
