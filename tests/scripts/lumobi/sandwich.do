* The sandwich variance of _robust() and _svy() from Lumo, and of the
* command _robust behind regress, against statsmodels on the same data
* (OLS with HC0, HC1 and cluster-robust covariance) and, for the
* stratified and survey forms, against numpy sums written out by hand.
clear
input double y double x1 double x2 cl st
0.46 0.03 4.9 1 1
1.71 1.36 1.02 1 1
2.89 1.22 2.77 1 1
-2.3 -0.51 2.42 2 1
-0.73 -0.3 1.77 2 1
-1.82 -0.53 2.96 2 1
-1.49 0.57 1.18 2 1
0.06 -0.06 4.01 3 1
1.36 0.75 4.34 3 1
-1.01 -1.85 0.64 3 1
3.55 1.57 2.34 4 2
1.74 -0.1 1.39 4 2
1.93 0.68 0.42 4 2
0.59 -0.14 4.48 4 2
1.81 -0.38 2.15 4 2
-0.65 0.46 0.74 5 2
1.7 0.82 3.37 5 2
1.4 -0.2 1.01 5 2
-4.85 -0.15 4.51 6 2
1.49 0.69 1.09 6 2
end
quietly regress y x1 x2, cluster(cl)
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
HC0 = (0.12111054391528564, -0.02759127869376707, 0.00844131232467637 \ -0.027591278693767072, 0.07482527163401884, -0.14435458032216156 \ 0.008441312324676372, -0.14435458032216156, 0.40420179628033637)
HC1 = (0.1424829928415125, -0.03246032787502009, 0.009930955676089844 \ -0.03246032787502009, 0.08802973133413981, -0.16982891802607242 \ 0.00993095567608984, -0.16982891802607245, 0.47553152503568974)
CL = (0.0725505560679095, -0.029945587731709692, -0.05197947815788679 \ -0.02994558773170968, 0.0866086556405438, -0.15859447986828482 \ -0.05197947815788678, -0.1585944798682849, 0.6501356127586301)
ST = (0.08790837776214278, -0.027862799231014035, -0.09372350266590074 \ -0.027862799231014035, 0.07532005430187669, -0.09927760569907483 \ -0.09372350266590078, -0.09927760569907484, 0.5153428158652019)
SVY = (0.053078627640901294, -0.014447636280851635, -0.06128656652202185 \ -0.014447636280851592, 0.04258289176608655, -0.05766694399896271 \ -0.06128656652202192, -0.057666943998962376, 0.309569181759232)
SVY1 = (0.12748478306872152, -0.02904345125659686, 0.008885591920711863 \ -0.029043451256596846, 0.07876344382528297, -0.15195218981280156 \ 0.008885591920711833, -0.15195218981280154, 0.4254755750319326)
// the command side: regress with cluster()
check(kv_matrix("e(V)"), CL, 1e-12, "regress, cluster")
kv_view(D, ., "y x1 x2")
X = D[., 2..3], J(20, 1, 1)
y = D[., 1]
V0 = invsym(cross(X, X))
e = y - X * (V0 * cross(X, y))
U = e :* X
cl = kv_data(., "cl")
st = kv_data(., "st")
none = J(0, 1, .)
V = V0
if (_robust(V, U, none, none, none, 0) != 0) _error(3498, "HC0 status")
check(V, HC0, 1e-12, "HC0: minus(0)")
V = V0
_robust(V, U, none, none, none, 3)
check(V, HC1, 1e-12, "HC1: minus(3)")
V = V0
_robust(V, U, cl, none, none, 3)
check(V, CL, 1e-12, "cluster")
// string cluster codes give the same units
V = V0
_robust(V, U, ("a", "a", "a", "b", "b", "b", "b", "c", "c", "c", "d", "d", "d", "d", "d", "e", "e", "e", "f", "f")', none, none, 3)
check(V, CL, 1e-12, "string clusters")
V = V0
_robust(V, U, cl, st, none, 3)
check(V, ST, 1e-12, "clusters within strata")
// the survey variance: strata, PSUs, stratum sizes 10 and 8 PSUs
V = V0
if (_svy(V, U, st, cl, 10 :* (st :== 1) + 8 :* (st :== 2)) != 0) _error(3498, "svy status")
check(V, SVY, 1e-12, "svy with fpc")
// a rate of 0 is no correction; a rate of 1/5 takes 4/5 of it
V = V0
_svy(V, U)
check(V, SVY1, 1e-12, "svy, one stratum")
V = V0
_svy(V, U, none, none, J(20, 1, 0.2))
check(V, 0.8 :* SVY1, 1e-12, "svy, rate")
// weights multiply the score rows: doubling every one gives four times
V = V0
_robust(V, U, none, none, none, 0, J(20, 1, 2))
check(V, 4 :* HC0, 1e-12, "weights")
// a row with a missing value is left out: the same as dropping it
U2 = U
U2[20, 1] = .
V = V0
_robust(V, U2, none, none, none, 0)
W = V0
_robust(W, U[1..19, .], none, none, none, 0)
check(V, W, 1e-15, "missing rows")
// failures leave V as it was
V = V0
if (_robust(V, U, cl, (J(19, 1, 1) \ 2), none, 3) != 460) _error(3498, "single-PSU stratum")
check(V, V0, 0, "kept after 460")
if (_robust(V, J(20, 3, .), none, none, none, 1) != 2000) _error(3498, "no observations")
if (_robust(V, U, none, none, (J(10, 1, 10) \ J(10, 1, 5)), 1) != 198) _error(3498, "fpc below the units")
if (_svy(V, U, st, cl, (J(9, 1, 10) \ J(11, 1, 9))) != 198) _error(3498, "fpc varying in a stratum")
NS = V0
NS[1, 2] = 1
if (_robust(NS, U) != 505) _error(3498, "not symmetric")
check(V, V0, 0, "kept after failures")
if (_korvu("lumo: _robust(V, U[., 1..2])", 1) != 3200) _error(3498, "columns differ")
if (_korvu("lumo: _robust(V, U, J(3, 1, 1))", 1) != 3200) _error(3498, "cluster rows differ")
end
display "test completed"
