* matrix mlout shows e(b) and e(V) as a coefficient table.
* b = (1, 2), V = diag(4, 9): standard errors 2 and 3, z = 0.5 and 0.6667,
* p = 2*(1 - Phi(z)) = 0.617 and 0.505, 95% limits b -/+ 1.959964*se:
* -2.919928, 4.919928 and -3.879892, 7.879892; 90% limits with 1.644854:
* -2.289707, 4.289707 and -2.934561, 6.934561 (worked by hand).
capture noisily matrix mlout
if _rc != 301 error 9
program define myest, eclass
    matrix b = (1, 2)
    matrix colnames b = x _cons
    matrix V = (4, 0 \ 0, 9)
    matrix colnames V = x _cons
    matrix rownames V = x _cons
    matrix post b V
end
myest
matrix mlout
matrix mlout, level(90)
display "test completed"
