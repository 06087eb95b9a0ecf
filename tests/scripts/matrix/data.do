* matrix score, matrix dissimilarity and matrix substitute, with values
* worked by hand
set obs 4
generate x = _n
generate w = 2 in 1
replace w = 0 in 2
replace w = 1 in 3

* score: 2x - w + 0.5; the fourth observation has w missing
matrix b = (2, -1, 0.5)
matrix colnames b = x w _cons
matrix score double s = b
assert s == 0.5 in 1
assert s == 4.5 in 2
assert s == 5.5 in 3
assert s == . in 4
* a missing value replaced by missval(): 2*4 - 10 + 0.5
matrix score double s2 = b, missval(10)
assert s2 == -1.5 in 4
assert s2 == 4.5 in 2
* if and in: the others are missing
matrix score double s3 = b if x > 1
assert s3 == . in 1
assert s3 == 4.5 in 2
matrix score double s4 = b in 3
count if s4 < .
assert r(N) == 1
assert s4 == 5.5 in 3
* replace changes only the selected observations
matrix b2 = (1, 0)
matrix colnames b2 = x _cons
matrix score s = b2 in 1/2, replace
assert s == 1 in 1
assert s == 2 in 2
assert s == 5.5 in 3
* an existing name without replace is 110; a variable not in the data is 111
* unless forcezero
capture matrix score s = b
assert _rc == 110
matrix b5 = (1, 3)
matrix colnames b5 = x q
capture matrix score double s5 = b5
assert _rc == 111
capture confirm variable s5
assert _rc != 0
matrix score double s5 = b5, forcezero
assert s5 == x
* equations: the first by default, or by name or number
matrix b6 = (1, 2, 10, 20)
matrix colnames b6 = x _cons x _cons
matrix coleq b6 = a a b b
matrix score double e1 = b6
assert e1 == x + 2
matrix score double e2 = b6, equation(b)
assert e2 == 10*x + 20
matrix score double e3 = b6, equation(#2)
assert e3 == e2
capture matrix score double e4 = b6, equation(c)
assert _rc != 0
capture confirm variable e4
assert _rc != 0
* a column vector is not a coefficient vector
matrix c = (1 \ 2)
capture matrix score double s6 = c
assert _rc == 503
* a string variable in the names
generate str3 q = "a"
capture matrix score double s7 = b5
assert _rc == 109

* dissimilarity between observations (0,0), (3,4), (1,1); the fourth has a
* missing value and is left out
drop _all
set obs 4
generate p = 0 in 1
replace p = 3 in 2
replace p = 1 in 3
generate r = 0 in 1
replace r = 4 in 2
replace r = 1 in 3
replace r = 2 in 4
matrix dissimilarity D = p r
assert rowsof(D) == 3 & colsof(D) == 3
assert D[1, 2] == 5 & D[2, 1] == 5
assert reldif(D[1, 3], sqrt(2)) < 1e-15
assert reldif(D[2, 3], sqrt(13)) < 1e-15
assert D[1, 1] == 0 & D[3, 3] == 0
assert issym(D)
local rn : rownames D
assert "`rn'" == "obs1 obs2 obs3"
matrix dissimilarity D = p r, L2squared
assert D[1, 2] == 25 & D[1, 3] == 2 & D[2, 3] == 13
matrix dissimilarity D = p r, L1
assert D[1, 2] == 7 & D[1, 3] == 2 & D[2, 3] == 5
matrix dissimilarity D = p r, Linfinity
assert D[1, 2] == 4 & D[1, 3] == 1 & D[2, 3] == 3
matrix dissimilarity D = p r, Canberra
assert D[1, 2] == 2 & D[1, 3] == 2 & reldif(D[2, 3], 1.1) < 1e-15
* between the variables (0,3,1) and (0,4,1)
matrix dissimilarity V = p r, variables
assert rowsof(V) == 2 & V[1, 2] == 1
local cn : colnames V
assert "`cn'" == "p r"
matrix dissimilarity V = p r, variables L1
assert V[1, 2] == 1
* names from a variable, and the selection
generate str4 who = "a" + string(_n)
matrix dissimilarity D = p r if p > 0, names(who)
local rn : rownames D
assert "`rn'" == "a2 a3"
assert reldif(D[1, 2], sqrt(13)) < 1e-15
capture matrix dissimilarity D = p r, L1 L2
assert _rc == 198
capture matrix dissimilarity D = p who
assert _rc == 109
capture matrix dissimilarity D = p r if p > 5
assert _rc == 2000

* substitute: elements found by their row and column names
matrix A = J(3, 3, 0)
matrix rownames A = a b c
matrix colnames A = a b c
matrix B = (7, 8)
matrix rownames B = b
matrix colnames B = a c
matrix substitute A = B
assert A[2, 1] == 7 & A[2, 3] == 8
assert A[1, 1] == 0 & A[3, 3] == 0 & A[1, 2] == 0
matrix colnames B = a z
capture matrix substitute A = B
assert _rc == 503
assert A[2, 1] == 7
capture matrix substitute A = nosuch
assert _rc == 111

* the return being built, listed by its own name
program define mkret, rclass
    matrix X = (1, 2 \ 3, 4)
    return matrix X = X
    matrix list return(X)
    capture matrix list return(Y)
    assert _rc == 111
end
mkret
matrix list r(X)
assert el(r(X), 2, 1) == 3
display "test completed"
