* Linear algebra against references from numpy (cholesky, inv, solve, svd,
* eigvalsh) and the exact inverse of the 5 x 5 Hilbert matrix (sympy).
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
A = (4.0, 1.0, -2.0, 0.5 \ 1.0, 3.0, 0.25, -1.0 \ -2.0, 0.25, 5.0, 1.5 \ 0.5, -1.0, 1.5, 2.0)
M = (2.0, -1.0, 0.0, 3.0 \ 1.0, 4.0, -2.0, 0.5 \ 0.0, 1.5, 3.0, -1.0 \ 5.0, 0.0, 1.0, 2.0)
b = (1.0 \ 2.0 \ 3.0 \ 4.0)
cholA = (2.0, 0.0, 0.0, 0.0 \ 0.5, 1.6583123951777, 0.0, 0.0 \ -1.0, 0.45226701686664544, 1.94819263561244, 0.0 \ 0.25, -0.6784005252999682, 1.0557570869636277, 0.6022040356879073)
invM = (-0.23089700996677742, -0.01661129568106312, -0.10963455149501665, 0.2956810631229236 \ 0.0631229235880399, 0.2059800664451827, 0.15946843853820603, -0.06644518272425251 \ 0.13787375415282396, -0.07641196013289037, 0.29568106312292364, -0.039867109634551506 \ 0.5083056478405316, 0.07973421926910298, 0.12624584717607976, -0.21926910299003324)
solMb = (0.5897009966777408 \ 0.6877076411960132 \ 0.7126245847176079 \ 0.16943521594684385)
svM = (6.363331738974937, 4.595747904456454, 3.740940618386361, 1.3756720787111167)
eigA = (6.823756799086378, 3.6815783703028577, 3.312736949457291, 0.18192788115347192)
detM = -150.49999999999994
Hinv = (25, -300, 1050, -1400, 630 \ -300, 4800, -18900, 26880, -12600 \ 1050, -18900, 79380, -117600, 56700 \ -1400, 26880, -117600, 179200, -88200 \ 630, -12600, 56700, -88200, 44100)
// Cholesky: L lower with LL' = A
C = A
_cholesky(C)
check(C, cholA, 1e-14, "cholesky")
check(C*C', A, 1e-14, "cholesky product")
// inverse by LU
C = M
if (_luinv_la(C) != 0) _error(3498, "luinv said singular")
check(C, invM, 1e-14, "luinv")
check(C*M, I(4), 1e-14, "luinv product")
// solve, keeping the residual small
LU = M
x = b
if (_lusolve_la(LU, x) != 0) _error(3498, "lusolve said singular")
check(x, solMb, 1e-14, "lusolve")
check(M*x, b, 1e-14, "lusolve residual")
// several right-hand sides at once
LU = M
X = I(4)
_lusolve_la(LU, X)
check(X, invM, 1e-14, "lusolve identity")
// LU factors: P M = L U
U = M
L = p = .
_lud2_la(U, L, p)
check(L*U, M[p, .], 1e-14, "lud2")
// singular values and a rebuilt matrix
U = M
s = Vt = .
if (_svd_la(U, s, Vt) != 0) _error(3498, "svd failed")
check(s', svM, 1e-14, "svd values")
D = I(4)
_diag(D, s)
check(U*D*Vt, M, 1e-13, "svd product")
sv = .
_svd_2(M, sv)
check(sv', svM, 1e-14, "svd_2")
// symmetric eigen decomposition
V = A
lam = .
if (_symeigen_la(V, lam) != 0) _error(3498, "symeigen failed")
check(lam, eigA, 1e-14, "eigenvalues")
D = I(4)
_diag(D, lam)
check(A*V, V*D, 1e-13, "eigenvectors")
check(V'*V, I(4), 1e-14, "orthonormal")
// the symmetric inverse: exact for the Hilbert matrix to its conditioning
H = J(5, 5, 0)
for (i = 1; i <= 5; i++) {
    for (j = 1; j <= 5; j++) H[i, j] = 1 / (i + j - 1)
}
check(invsym(H), Hinv, 1e-9, "invsym Hilbert")
check(invsym(A) * A, I(4), 1e-14, "invsym")
// ill-conditioned: Hilbert 10, the residual stays small though x is poor
H = J(10, 10, 0)
for (i = 1; i <= 10; i++) {
    for (j = 1; j <= 10; j++) H[i, j] = 1 / (i + j - 1)
}
xt = J(10, 1, 1)
y = H * xt
LU = H
x = y
_lusolve_la(LU, x)
if (sqrt(sum((H*x - y):^2)) / sqrt(sum(y:^2)) > 1e-14) _error(3498, "Hilbert residual")
// a singular matrix: status and missing values, no abort
S = (1, 2 \ 2, 4)
if (_luinv_la(S) == 0) _error(3498, "singular not seen")
if (missing(S) != 4) _error(3498, "singular inverse not missing")
S = (1, 2 \ 2, 4)
z = (1 \ 1)
if (_lusolve_la(S, z) == 0) _error(3498, "singular solve not seen")
// not positive definite: all missing
S = (1, 2 \ 2, 1)
_cholesky(S)
if (missing(S) != 4) _error(3498, "indefinite cholesky not missing")
// views are refused by the in-place routines
end
display "test completed"
