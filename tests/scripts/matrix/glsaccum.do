* matrix glsaccum against sum_g X_g' W_g X_g worked in R
* (tests/reference/glsaccum_ref.R).
drop _all
set obs 9
generate double x1 = _n^2 / 3
generate double x2 = mod(_n * 5, 7)
generate g = cond(_n <= 2, 1, cond(_n <= 5, 2, 3))
generate r = cond(_n <= 2, _n, cond(_n <= 5, _n - 2, _n - 5))
matrix W = (4, 1, 0.5, 0 \ 1, 3, 1, 0.25 \ 0.5, 1, 2, 1 \ 0, 0.25, 1, 5)
matrix glsaccum A = x1 x2, group(g) glsmat(W) row(r)
assert r(N) == 9
assert reldif(A[1,1], 9061.7222222222208) < 1e-14
assert reldif(A[2,1], 1397.0833333333333) < 1e-14
assert reldif(A[3,1], 495.83333333333331) < 1e-14
assert reldif(A[2,2], 516) < 1e-14
assert reldif(A[3,2], 138.75) < 1e-14
assert reldif(A[3,3], 44.5) < 1e-14
assert A[1,3] == A[3,1]
assert "`: colnames A'" == "x1 x2 _cons"
* noconstant keeps the variables' block
matrix glsaccum B = x1 x2, group(g) glsmat(W) row(r) noconstant
assert colsof(B) == 2 & reldif(B[2,1], 1397.0833333333333) < 1e-14
* with W the identity, each group adds X_g'X_g: the same as matrix accum
matrix I = I(4)
matrix glsaccum C = x1 x2, group(g) glsmat(I) row(r)
quietly matrix accum D = x1 x2
forvalues i = 1/3 {
    forvalues j = 1/3 {
        assert reldif(C[`i',`j'], D[`i',`j']) < 1e-14
    }
}
* bad input
replace r = 5 in 9
capture matrix glsaccum A = x1 x2, group(g) glsmat(W) row(r)
assert _rc == 503
replace r = 4 in 9
matrix Z = (1, 2 \ 3, 4)
capture matrix glsaccum A = x1 x2, group(g) glsmat(Z) row(r)
assert _rc == 505
capture matrix glsaccum A = x1 x2, group(g) row(r)
assert _rc == 100
display "test completed"
