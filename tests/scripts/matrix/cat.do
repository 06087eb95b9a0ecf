* matrix cat joins matrices by rows (the default) or by columns
* assert checks each observation: one is needed
set obs 1
matrix A = (1, 2 \ 3, 4)
matrix rownames A = a1 a2
matrix colnames A = x y
matrix B = (5, 6)
matrix rownames B = b1
matrix C = (7 \ 8)
matrix colnames C = z
matrix cat R = A B
assert rowsof(R) == 3 & colsof(R) == 2
assert R[1,1] == 1 & R[2,2] == 4 & R[3,1] == 5 & R[3,2] == 6
local rn : rownames R
assert "`rn'" == "a1 a2 b1"
local cn : colnames R
assert "`cn'" == "x y"
matrix cat K = A C, columns
assert rowsof(K) == 2 & colsof(K) == 3
assert K[1,3] == 7 & K[2,3] == 8 & K[2,1] == 3
local cn : colnames K
assert "`cn'" == "x y z"
* three operands, and the target among them
matrix cat A = A B B
assert rowsof(A) == 4 & A[4,2] == 6 & A[2,1] == 3
* a single operand is a copy
matrix cat D = C
assert rowsof(D) == 2 & D[2,1] == 8
* nullmat() of an absent matrix vanishes: a loop can grow a matrix
capture matrix drop G
forvalues i = 1/3 {
    matrix cat G = nullmat(G) (`i', `i'^2)
}
assert rowsof(G) == 3 & G[3,2] == 9 & G[2,1] == 2
* failures leave the target as it was
matrix T = (9)
capture matrix cat T = A C
assert _rc == 503
assert rowsof(T) == 1 & T[1,1] == 9
capture matrix cat T = A nosuch
assert _rc == 111
capture matrix cat T = A B, bogus
assert _rc == 198
capture matrix cat T = A B, rows columns
assert _rc == 198
capture matrix cat T A B
assert _rc == 198
capture matrix cat T =
assert _rc == 198
capture matrix cat 1x = A B
assert _rc == 198
* an option given twice is no conflict
matrix cat D = C C, rows rows
assert rowsof(D) == 4
assert T[1,1] == 9
display "test completed"
