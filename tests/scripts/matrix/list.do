* The layouts of matrix list and matrix dir.
matrix A = (1, 2.5, -3 \ 4, 1e10, .)
matrix list A
matrix list A, format(%6.2f)
matrix list A, title(Two rows) noblank
matrix list A, noheader nonames
matrix S = (4, 2 \ 2, 3)
matrix S = syminv(S)
matrix list S
matrix list S, nohalf format(%9.4f)
matrix rownames A = first second
matrix colnames A = eq1:a eq1:L.b eq2:c
matrix list A
matrix coleq A = y
matrix list A
matrix rownames A = x
matrix list A
matrix dir
capture noisily matrix list A, format(%q)
if _rc != 120 error 9
capture noisily matrix list nosuch
if _rc != 111 error 9
capture noisily matrix list e(b)
if _rc != 111 error 9
display "test completed"
