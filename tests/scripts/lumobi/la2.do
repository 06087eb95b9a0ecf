* The general eigensystem, the pivoted QR and its products, and the
* generalized inverse, against references from numpy and scipy (eig, qr
* with pivoting, pinv).
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
G = (4, 1, -2, 0.5 \ 3, -1, 2, 1 \ 0, 2, 1, -3 \ 1, 1, 1, 1)
Lre = (-2.9896103481889487, 4.8195212389376065, 1.5850445546256715, 1.5850445546256715)
Lim = (0.0, 0.0, 1.8960864282603385, -1.8960864282603385)
rce = (0.906447184152804, 0.8922097659031869, 0.8379889235226271, 0.8379889235226271)
X = L = rc = .
G0 = G
if (_eigen_la(1, G, X, L, rc, 0) != 0) _error(3498, "eigen failed")
check(G, G0, 0, "eigen leaves its input")
check(Re(L), Lre, 1e-13, "eigenvalues, real parts")
check(Im(L), Lim, 1e-13, "eigenvalues, imaginary parts")
check(rc, rce, 1e-12, "eigenvalue condition")
// G(Xr + iXi) = (Xr + iXi)(Lr + iLi), by parts
Dr = I(4)
_diag(Dr, Re(L))
Di = I(4)
_diag(Di, Im(L))
check(G*Re(X), Re(X)*Dr - Im(X)*Di, 1e-13, "right vectors, real part")
check(G*Im(X), Re(X)*Di + Im(X)*Dr, 1e-13, "right vectors, imaginary part")
check(colsum(Re(X):^2 + Im(X):^2), J(1, 4, 1), 1e-14, "unit vectors")
// left vectors: Y'G = LY' with Y' the conjugate transpose
if (_eigen_la(2, G, X, L, rc, 1) != 0) _error(3498, "eigen left failed")
check(Re(X)'*G, Dr*Re(X)' + Di*Im(X)', 1e-13, "left vectors, real part")
check(-Im(X)'*G, Di*Re(X)' - Dr*Im(X)', 1e-13, "left vectors, imaginary part")
// values only
_eigen_la(0, (0, -2, 1 \ 1, 0, 0 \ 0, 1, 3), X, L, rc, 0)
if (rows(X) != 0) _error(3498, "values only gave vectors")
check(Re(L), (-0.04337266994133249, -0.04337266994133249, 3.0867453398826665), 1e-13, "R values")
check(Im(L), (1.5052838885544215, -1.5052838885544215, 0.0), 1e-13, "R values, imaginary")
// the pivoted QR of a tall matrix
A = (1, 2, 3 \ 4, 5, 6 \ 7, 8, 10 \ 1, 0, 1 \ 2, -1, 0.5)
H = A
tau = R = p = .
if (_hqrdp_la(H, tau, R, p) != 0) _error(3498, "hqrdp failed")
check(R, (-12.093386622447824, -8.186292482887758, -9.55067456336905 \ 0, -1.9961501407998812, 1.0944143629095862 \ 0, 0, -1.2597113109250826), 1e-13, "R")
check(p, (3, 1, 2), 0, "pivots")
Q1 = _hqrdq1(H, tau)
check(Q1, (-0.24806946917841688, 0.5163786078517069, 0.7417278278439652 \ -0.4961389383568338, 0.03082857360308683, -0.18083447042476825 \ -0.826898230594723, -0.11560715101157615, -0.18185613409948465 \ -0.0826898230594723, -0.16185001141620653, 0.4863119091649134 \ -0.04134491152973615, -0.832371487283348, 0.3841455416932935), 1e-13, "Q1")
check(Q1*R, A[., p], 1e-13, "QR = AP")
Q = _hqrdq1(H, tau, 5)
check(Q'*Q, I(5), 1e-14, "Q orthogonal")
B = (1, 2 \ 0, 1 \ 3, -1 \ 2, 2 \ 1, 0)
QB = B
_hqrdmult(H, tau, QB, 1)
check(QB, (-2.935488718611267, -0.33075929223788914 \ -0.9865143552987826, 0.8554929174856637 \ 1.5529287855686316, 2.4571011376924736 \ 1.5110779498345217, 0.3455319175180971 \ 0.8454294921350002, -1.7326257102608098), 1e-13, "Q'B")
_hqrdmult(H, tau, QB, 0)
check(QB, B, 1e-14, "Q Q'B = B")
// the first column forced to the front
H = A
p = (1, 0, 0)
_hqrdp_la(H, tau, R, p)
if (p[1] != 1) _error(3498, "forced column moved")
check(_hqrdq1(H, tau)*R, A[., p], 1e-13, "QR = AP, forced")
// generalized inverses: rank-deficient and full column rank
S = (1, 2, 3 \ 2, 4, 6 \ 1, 0, 1 \ 0, 1, 1)
check(ginvr(S), (0, 0, 0.6666666666666671, -0.33333333333333354 \ 0.03846153846153874, 0.07692307692307682, -0.5256410256410257, 0.28205128205128205 \ 0.03846153846153837, 0.0769230769230769, 0.14102564102564102, -0.05128205128205129), 1e-13, "ginvr rank 2")
check(ginvr(A), (-0.581508515815083, 0.06326034063260325, 0.13706407137064022, -0.1305758313057565, 0.24979724249797178 \ -0.5888077858880759, 0.14355231143552286, 0.14436334144363283, -0.38605028386050094, -0.3049472830494733 \ 0.8791565287915619, -0.11516626115166224, -0.13841578805082366, 0.40010813733441186, 0.07515544741822204), 1e-13, "ginvr full rank")
Sg = ginvr(S)
check(S*Sg*S, S, 1e-13, "S G S = S")
check(ginvr((1, .)), (., .)', 0, "missing in, missing out")
check(ginvr(J(2, 3, 0)), J(3, 2, 0), 0, "ginvr of zero")
end
display "test completed"
