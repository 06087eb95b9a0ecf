* qrsolve() and qrinv() of the library against numpy.linalg.lstsq, inv and
* pinv: over-determined systems, an ill-conditioned polynomial fit
* (condition number about 5e5), a matrix of deficient rank (same fitted
* values as the minimum-norm solution, coefficient zero on the column
* found dependent), and the edge cases.
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
A = (0.001, 0.299, -0.274 \ -0.891, -0.455, -0.992 \ 0.06, 1.34, -0.492 \ -0.62, 0.49, 0.357 \ 0.105, -0.93, -0.029 \ 0.695, -1.344, -0.458 \ -1.901, -1.29, -1.842 \ -0.235, -1.267, 0.271)
B = (0.157, -0.187 \ -2.517, -0.539 \ -0.049, 0.113 \ -1.53, -0.478 \ -0.979, -0.809 \ 1.061, -0.808 \ -0.033, 0.884 \ -0.584, -0.112)
Xw = (1.1622977821407325, -0.3305385446684993 \ -0.010054801941168923, 0.20135436591873998 \ -0.5788446985263442, -0.035592472653906526)
A0 = A
B0 = B
rk = .
check(qrsolve(A, B, 1, rk), Xw, 1e-13, "least squares, two right-hand sides")
if (rk != 3) _error(3498, "rank of A")
check(A, A0, 0, "A kept")
check(B, B0, 0, "B kept")
check(qrsolve(A, B[., 2]), Xw[., 2], 1e-13, "one right-hand side")
// the residual is orthogonal to the columns
check(A' * (B - A * qrsolve(A, B)), J(3, 2, 0), 1e-14, "normal equations")
// a polynomial of degree 5 on 12 points of [1, 2]
y = (0.14112 \ -0.130759 \ -0.392972 \ -0.626137 \ -0.813018 \ -0.9398 \ -0.997111 \ -0.980716 \ -0.891827 \ -0.737013 \ -0.527719 \ -0.279415)
P = J(12, 6, 1)
for (i = 1; i <= 12; i++) {
    t = 1 + (i - 1) / 11
    for (j = 2; j <= 6; j++) P[i, j] = P[i, j - 1] * t
}
check(qrsolve(P, y), (-5.339446986426285 \ 22.539036960374535 \ -26.501821484454478 \ 9.860335055625388 \ -0.02848287302298047 \ -0.3886843214174256), 1e-8, "ill-conditioned fit")
// rank 2: the third column is the sum of the first two
D = A
D[., 3] = D[., 1] + D[., 2]
Xd = qrsolve(D, B, 1, rk)
if (rk != 2) _error(3498, "rank of D: " + strofreal(rk))
check(D * Xd, (-0.03017531867666536, 0.05813236315746942 \ -0.6563278115757967, 0.22593374600001317 \ -0.09140186689723276, 0.24090271238796904 \ -0.5402375979204146, 0.3149922672592409 \ 0.17920992605492125, -0.2190258543675689 \ 0.6878917422876748, -0.5085483241167638 \ -1.3672533300012073, 0.4195995625018862 \ -0.05432133212690075, -0.16476785772824037), 1e-12, "fitted values at deficient rank")
if (sum(rowsum(Xd :== 0) :== 2) != 1) _error(3498, "one row of zeros")
// a square system and inverses
S = (4, 1, 2 \ 1, 5, -1 \ 0.5, 2, 3)
Siw = (0.26771653543307083, 0.015748031496063, -0.17322834645669294 \ -0.055118110236220465, 0.1732283464566929, 0.09448818897637795 \ -0.007874015748031496, -0.11811023622047245, 0.2992125984251969)
check(qrinv(S), Siw, 1e-14, "inverse")
check(qrsolve(S, (1 \ 2 \ 3)), Siw * (1 \ 2 \ 3), 1e-14, "square solve")
check(qrinv(A), (0.07753604019227123, -0.06276080758643365, 0.16078159808787923, -0.340746119714921, 0.04976245766886397, 0.3992085253576031, -0.2111696256730581, -0.1658921391852044 \ 0.06221864789084234, 0.00626064645581859, 0.22657327579697123, 0.045488442546516177, -0.1311354803305821, -0.16060812776662253, -0.051791931023248014, -0.200254759713125 \ -0.14180634470684653, -0.15134534622204907, -0.32805723036369094, 0.29733711939683616, 0.023539883797887524, -0.30231975445596593, -0.17973056849248614, 0.2753264614782002), 1e-13, "left inverse of a tall matrix")
// edge cases: missing gives missing; an empty system; rows that differ
check(qrsolve((1, . \ 2, 3), (1 \ 2)), (. \ .), 0, "missing")
check(qrsolve(J(0, 2, .), J(0, 1, .)), J(2, 1, 0), 0, "no rows")
if (_korvu("lumo: qrsolve((1, 2 \ 3, 4), (1 \ 2 \ 3))", 1) != 3200) _error(3498, "rows differ")
// a zero matrix has rank 0 and zero coefficients
check(qrsolve(J(3, 2, 0), (1 \ 2 \ 3), 1, rk), (0 \ 0), 0, "zero matrix")
if (rk != 0) _error(3498, "rank of zero")
end
display "test completed"
