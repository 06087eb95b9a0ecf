* Bad input gives its code and leaves the matrices as they were.
set obs 1
matrix A = (1, 2 \ 3, 4)
matrix B = (1, 2, 3)
capture matrix C = A + B
assert _rc == 503
capture matrix C = A * A'B
assert _rc != 0
capture matrix C = B * A
assert _rc == 503
capture matrix C = (A, B)
assert _rc == 503
capture matrix C = (A \ (1, 2, 3))
assert _rc == 503
capture matrix C = nosuch * 2
assert _rc == 111
capture matrix C = syminv(B)
assert _rc == 505
capture matrix C = syminv((1, 2 \ 3, 4))
assert _rc == 505
capture matrix C = inv((1, . \ 2, 3))
assert _rc == 504
capture matrix C = invsym((1, . \ ., 3))
assert _rc == 504
capture matrix C = cholesky((1, 2 \ 2, 1))
assert _rc == 506
capture matrix C = corr((0, 0 \ 0, 1))
assert _rc == 506
capture matrix C = I(32768)
assert _rc == 908
capture matrix C = J(401, 1, 0)
assert _rc == 908
set matsize 500
matrix C = J(401, 1, 0)
assert rowsof(C) == 401
set matsize 400
capture matrix C = A[3, 1]
assert _rc == 503
capture matrix C = A["nosuch", 1]
assert _rc == 111
capture matrix C = A +
assert _rc == 198
capture matrix C = (1, 2
assert _rc == 198
capture matrix 1C = A
assert _rc == 198
capture matrix _n = A
assert _rc == 198
capture matrix rownames A = a b c
assert _rc == 503
* stripes: an equation must stand in one run; names must be names
matrix E = J(1, 3, 0)
capture noisily matrix colnames E = e1:a e2:b e1:c
assert _rc == 507
capture matrix colnames E = e1:a e1:b e2:c
assert _rc == 0
capture matrix colnames E = a:b:c
assert _rc == 198
capture matrix colnames E = abcdefghijklmnopqrstuvwxyzabcdefghij
assert _rc == 198
capture matrix coleq E = a.b
assert _rc == 198
local c : colfullnames E
assert "`c'" == "e1:a e1:b e2:c"
* matrix input takes numbers only
matrix input N = (1, -2.5e3 \ .a, .)
assert N[1,2] == -2500 & N[2,1] == .a
capture matrix input N = (A, 1)
assert _rc == 198
capture matrix input N = (sqrt(2), 1)
assert _rc == 198
capture matrix frobnicate A
assert _rc == 501
capture matrix accum X = y
assert _rc == 111
capture matrix glsaccum X = y
assert _rc == 111
capture matrix post b V
assert _rc != 0
capture matrix mlout
assert _rc == 301
capture matrix nosuch[1, 1] = 2
assert _rc == 111
capture matrix A[5, 1] = 2
assert _rc == 503
* A and B are untouched
assert A[2,2] == 4 & colsof(B) == 3 & rowsof(A) == 2
capture matrix drop nosuch
assert _rc == 111
matrix drop A B
capture matrix list A
assert _rc == 111
display "test completed"
