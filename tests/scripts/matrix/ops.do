* Matrix operators and functions, each checked against values worked by hand.
set obs 1
matrix A = (1, 2 \ 3, 4)
matrix B = (5, 6 \ 7, 8)
matrix C = A * B
assert C[1,1] == 19 & C[1,2] == 22 & C[2,1] == 43 & C[2,2] == 50
matrix C = A + B - 2*A
assert C[1,1] == 4 & C[2,2] == 4
matrix C = A / 2
assert C[2,1] == 1.5
matrix C = -A'
assert C[1,2] == -3 & C[2,1] == -2
* Kronecker product
matrix K = A # (1, 10)
assert rowsof(K) == 2 & colsof(K) == 4
assert K[2,3] == 4 & K[2,4] == 40 & K[1,2] == 10
* joins
matrix J = (A, B \ B, A)
assert rowsof(J) == 4 & colsof(J) == 4 & J[3,2] == 6 & J[4,4] == 4
matrix J = (nullmat(nosuch), 1, 2)
assert colsof(J) == 2
* the inverse of A: 1/(-2) * (4, -2 \ -3, 1)
matrix Ai = inv(A)
assert abs(Ai[1,1] + 2) < 1e-14 & abs(Ai[1,2] - 1) < 1e-14
assert abs(Ai[2,1] - 1.5) < 1e-14 & abs(Ai[2,2] + 0.5) < 1e-14
matrix S = (4, 2 \ 2, 2)
matrix Si = syminv(S)
assert Si[1,1] == 0.5 & Si[1,2] == -0.5 & Si[2,2] == 1
assert issym(Si) == 1 & issym(A) == 0
matrix Si = invsym(S)
assert Si[2,1] == -0.5
* a singular symmetric matrix: one zero diagonal
matrix X = (2, 1, 3 \ 1, 1, 2 \ 3, 2, 5)
matrix G = syminv(X)
assert diag0cnt(G) == 1
assert abs(G[1,1] - 5) < 1e-12 & abs(G[1,3] + 3) < 1e-12 & abs(G[3,3] - 2) < 1e-12
assert G[2,2] == 0 & G[1,2] == 0
* the natural order drops the third column instead
set tol_r 0
matrix G = syminv(X)
set tol_r 1
assert abs(G[1,1] - 1) < 1e-12 & abs(G[1,2] + 1) < 1e-12 & abs(G[2,2] - 2) < 1e-12
assert G[3,3] == 0 & G[1,3] == 0
assert c(tol_r) == 1 & c(tol_1) == 1e-9
* I, J, diag, vecdiag, vec, trace, det, hadamard
matrix I3 = I(3)
assert trace(I3) == 3 & det(I3) == 1
matrix T = J(2, 3, 7)
assert T[2,3] == 7 & colsof(T) == 3
matrix D = diag((1, 2, 3))
assert D[2,2] == 2 & D[1,2] == 0
matrix v = vecdiag(A)
assert v[1,2] == 4
matrix v = vec(A)
assert v[2,1] == 3 & v[3,1] == 2
assert det(A) == -2
matrix H = hadamard(A, B)
assert H[2,1] == 21
* Cholesky of (4, 2 \ 2, 3): (2, 0 \ 1, sqrt(2))
matrix L = cholesky((4, 2 \ 2, 3))
assert L[1,1] == 2 & L[1,2] == 0 & L[2,1] == 1 & reldif(L[2,2], sqrt(2)) < 1e-15
* corr of a covariance matrix
matrix R = corr((4, 2 \ 2, 9))
assert R[1,2] == 2/6 & R[1,1] == 1
* sweep on the first position of (4, 2 \ 2, 3): pivot -1/4, row 2/4, rest 3 - 1
matrix W = sweep((4, 2 \ 2, 3), 1)
assert W[1,1] == -0.25 & W[1,2] == 0.5 & W[2,2] == 2
* the target may be an operand
matrix A = A'
assert A[1,2] == 3
matrix A = A * A
assert A[1,1] == 7 & A[1,2] == 15 & A[2,1] == 10 & A[2,2] == 22
* elements by subscript and by el()
matrix A[2,1] = 100
assert el(A, 2, 1) == 100
scalar s = el(A, 2, 1) / 4
assert s == 25
scalar s = s + 1
assert scalar(s) == 26
matrix M = (s, 2*s)
assert M[1,2] == 52
* a matrix and a scalar of one name: the later wins
matrix s = I(2)
capture scalar list s
assert _rc == 111
* ranges and stripe subscripts
matrix Z = (1, 2, 3 \ 4, 5, 6 \ 7, 8, 9)
matrix colnames Z = a b c
matrix rownames Z = x y z
matrix Y = Z[2..3, "b"...]
assert rowsof(Y) == 2 & colsof(Y) == 2 & Y[1,1] == 5 & Y[2,2] == 9
assert Z["y", "c"] == 6
assert rownumb(Z, "z") == 3 & colnumb(Z, "b") == 2
local n : rowsof Z
assert `n' == 3
local k : colnumb Z c
assert `k' == 3
* the names of all matrices and scalars, in order of name
matrix drop _all
scalar drop _all
matrix P = 1
matrix Q = 2
scalar t = 3
local m : all matrices
assert "`m'" == "P Q"
local s : all scalars
assert "`s'" == "t"
local s : all string scalars
assert "`s'" == ""
local m : all matrices "Q*"
assert "`m'" == "Q"
display "test completed"
