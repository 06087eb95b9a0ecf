* The eigensystem of complex matrices: eigenvalues against numpy.linalg.eig
* (matched in any order), condition numbers against |y'x| / (|x| |y|) from
* scipy's left and right vectors, and the residual norms of A v - lambda v
* and u'A - lambda u' worked here.
lumo
function near(real scalar got, real scalar want, real scalar tol, string scalar what)
{
    if (!(abs(got - want) <= tol)) _error(3498, what + ": " + strofreal(got, "%21.15g"))
}
// the smallest squared distance from z to an element of L, by parts
real scalar function dist2(real scalar zr, real scalar zi, complex rowvector L)
{
    real scalar j, d, best
    best = .
    for (j = 1; j <= cols(L); j++) {
        d = (Re(L[j]) - zr)^2 + (Im(L[j]) - zi)^2
        if (d < best) best = d
    }
    return(best)
}
A = (1+2i, 3, 0.5-1i \ -1i, 2-1i, 1 \ 0.25, 1+1i, -3)
A0 = A
X = L = rc = .
if (_eigen_la(1, A, X, L, rc, 0) != 0) _error(3498, "status")
if (Re(A) != Re(A0) | Im(A) != Im(A0)) _error(3498, "input changed")
if (rows(X) != 3 | cols(X) != 3 | cols(L) != 3 | !iscomplex(X) | !iscomplex(L)) _error(3498, "shapes")
near(dist2(0.2845254592040741, 2.4137201882318804, L), 0, 1e-13^2, "lambda 1")
near(dist2(2.8980116432535006, -1.2229129487257326, L), 0, 1e-13^2, "lambda 2")
near(dist2(-3.182537102457572, -0.19080723950614759, L), 0, 1e-13^2, "lambda 3")
for (j = 1; j <= 3; j++) {
    R = A*X[., j] - L[j]*X[., j]
    near(sqrt(Re(R'*R)), 0, 1e-13, "right residual " + strofreal(j))
    near(Re(X[., j]'*X[., j]), 1, 1e-14, "unit length " + strofreal(j))
    // the largest element is real
    m = 1
    for (i = 2; i <= 3; i++) if (Re(X[i, j])^2 + Im(X[i, j])^2 > Re(X[m, j])^2 + Im(X[m, j])^2) m = i
    near(Im(X[m, j]), 0, 1e-15, "largest element real " + strofreal(j))
    // condition numbers, by the eigenvalue they belong to
    if (dist2(0.2845254592040741, 2.4137201882318804, L[j]) < 1e-20) near(rc[j], 0.8611065167648273, 1e-12, "rcond 1")
    if (dist2(2.8980116432535006, -1.2229129487257326, L[j]) < 1e-20) near(rc[j], 0.8688608653225325, 1e-12, "rcond 2")
    if (dist2(-3.182537102457572, -0.19080723950614759, L[j]) < 1e-20) near(rc[j], 0.9550804590268649, 1e-12, "rcond 3")
}
// left vectors, without balancing: u'A = lambda u' with u' the conjugate transpose
Y = .
if (_eigen_la(2, A, Y, L, rc, 1) != 0) _error(3498, "left status")
for (j = 1; j <= 3; j++) {
    R = Y[., j]'*A - L[j]*Y[., j]'
    near(sqrt(Re(R*R')), 0, 1e-13, "left residual " + strofreal(j))
}
// values only
_eigen_la(0, A, X, L, rc, 0)
if (rows(X) != 0 | cols(L) != 3) _error(3498, "values only")
// a Hermitian matrix has real eigenvalues: numpy.linalg.eigvalsh
H = (2, 1-1i, 0 \ 1+1i, 3, 2i \ 0, -2i, 1)
_eigen_la(1, H, X, L, rc, 0)
near(dist2(-0.4892885718100789, 0, L), 0, 1e-13^2, "hermitian 1")
near(dist2(1.7108314535516893, 0, L), 0, 1e-13^2, "hermitian 2")
near(dist2(4.7784571182583875, 0, L), 0, 1e-13^2, "hermitian 3")
// a complex matrix with a zero imaginary part is a real one: a rotation
_eigen_la(1, C((0, -1 \ 1, 0)), X, L, rc, 0)
near(dist2(0, 1, L), 0, 1e-15^2, "rotation +i")
near(dist2(0, -1, L), 0, 1e-15^2, "rotation -i")
// failures
if (_korvu("lumo: _eigen_la(1, (1i, 2), X, L, rc, 0)", 1) != 3205) _error(3498, "not square")
if (_korvu("lumo: _eigen_la(1, (1i, . \ 1, 2), X, L, rc, 0)", 1) != 3351) _error(3498, "missing")
end
display "test completed"
