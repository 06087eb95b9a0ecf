* Least squares written in the matrix language over a view of the dataset,
* against regress and against coefficients worked out by numpy's lstsq on
* the same data (tests/scripts/lumobi/ols.do documents the generator).
drop _all
set obs 200
generate double x1 = sin(_n)*10
generate double x2 = cos(_n*0.37) + _n/50
generate double x3 = mod(_n*7, 11) - 5
generate double y = 3 - 1.5*x1 + 2.25*x2 + 0.5*x3 + sin(_n*1.7)
quietly regress y x1 x2 x3
lumo
function ols(string scalar yname, string rowvector xnames)
{
    real matrix X, XX
    real colvector y, b
    X = .
    y = .
    kv_view(X, ., xnames)
    kv_view(y, ., yname)
    XX = cross(X, 1, X)
    XX = (XX, colsum(X)' \ colsum(X), rows(X))
    b = invsym(XX) * (cross(X, y) \ colsum(y))
    return(b')
}
b = ols("y", ("x1", "x2", "x3"))
eb = kv_matrix("e(b)")
if (mreldif(b, eb) > 1e-12) _error(3498, "lumo ols differs from regress")
ref = (-1.4997406717469022, 2.2498328123850335, 0.5223718248429559, 3.002486668605722)
if (mreldif(b, ref) > 1e-10) _error(3498, "lumo ols differs from numpy")
// the same by solving the normal equations through LU
X = .
kv_view(X, ., "x1 x2 x3")
Z = X, J(rows(X), 1, 1)
A = cross(Z, Z)
B = cross(Z, kv_data(., "y"))
if (_lusolve_la(A, B) != 0) _error(3498, "lusolve failed")
if (mreldif(B', ref) > 1e-10) _error(3498, "lusolve differs from numpy")
end
display "test completed"
