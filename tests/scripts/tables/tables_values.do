* Written by tests/reference/tables_ref.R from R's own tests; do not edit.
* The data, as built in R: n = 1..60
set obs 60
gen n = _n
gen x = mod(n * 7, 4) + 1
gen g = mod((x >= 3) + (mod(n, 5) == 0) + (mod(n, 7) == 0) * 2, 3)
gen double y = n * 1.5 - mod(n, 7) * 2.25
gen double z = sqrt(n) + mod(n, 5)
gen w = mod(n, 3) + 1
gen xm = x
replace xm = . if n == 5 | n == 17
gen double zm = z
replace zm = . if n == 9 | n == 17 | n == 33
quietly tabulate x, matcell(F)
error r(N) != 60 | r(r) != 4
error F[1,1] != 15
error F[2,1] != 15
error F[3,1] != 15
error F[4,1] != 15
quietly tabulate x g, chi2 lrchi2 V gamma taub exact
error r(N) != 60 | r(r) != 4 | r(c) != 3
error reldif(r(chi2), 23.071452991452993) > 1e-12
error reldif(r(p), 0.00077289690257834704) > 1e-12
error reldif(r(chi2_lr), 25.098710981347669) > 1e-12
error reldif(r(p_lr), 0.0003273788732775595) > 1e-12
error reldif(r(CramersV), 0.4384770327646686) > 1e-12
error reldif(r(gamma), 0.53045404208194902) > 1e-12
error reldif(r(taub), 0.39147393932737645) > 1e-12
error reldif(r(p_exact), 0.00025410329388933392) > 1e-09
error reldif(r(ase_gam), 0.13387700380506434) > 1e-06
error reldif(r(ase_taub), 0.10299434591811951) > 1e-06
gen a2 = x <= 2
gen b2 = g == 0
quietly tabulate a2 b2, chi2 V exact
error reldif(r(chi2), 21.990950226244344) > 1e-12
error reldif(r(CramersV), 0.60540551459668124) > 1e-12
error reldif(r(p_exact), 4.8343573781676727e-06) > 1e-09
error reldif(r(p1_exact), 2.417178689083833e-06) > 1e-09
quietly tabulate x g [fweight = w], chi2 taub
error r(N) != 120
error reldif(r(chi2), 51.437275541795664) > 1e-12
error reldif(r(taub), 0.38310477218304534) > 1e-12
quietly tabulate x, summarize(y)
error r(N) != 60
quietly correlate y z xm zm
matrix C = r(C)
error r(N) != 56
error reldif(C[1,1], 1) > 1e-12
error reldif(C[2,1], 0.75748323247807736) > 1e-12
error reldif(C[2,2], 1) > 1e-12
error reldif(C[3,1], 0.031536988455914301) > 1e-12
error reldif(C[3,2], -0.0074225820471946861) > 1e-12
error reldif(C[3,3], 1) > 1e-12
error reldif(C[4,1], 0.75748323247807736) > 1e-12
error reldif(C[4,2], 1) > 1e-12
error reldif(C[4,3], -0.0074225820471946861) > 1e-12
error reldif(C[4,4], 1) > 1e-12
quietly correlate y z xm zm, covariance
matrix C = r(C)
error reldif(C[1,1], 696.52384334415581) > 1e-12
error reldif(C[2,1], 45.411178819712724) > 1e-12
error reldif(C[2,2], 5.1599265100121583) > 1e-12
error reldif(C[3,1], 0.90730519480519478) > 1e-12
error reldif(C[3,2], -0.018379849437230904) > 1e-12
error reldif(C[3,3], 1.1883116883116882) > 1e-12
error reldif(C[4,1], 45.411178819712724) > 1e-12
error reldif(C[4,2], 5.1599265100121583) > 1e-12
error reldif(C[4,3], -0.018379849437230904) > 1e-12
error reldif(C[4,4], 5.1599265100121583) > 1e-12
quietly correlate y z [aweight = w]
error reldif(r(rho), 0.78202086875239363) > 1e-12
quietly correlate y z [fweight = w], covariance
error r(N) != 120
error reldif(r(cov_12), 48.466236408889841) > 1e-12
error reldif(r(Var_1), 699.27337184873954) > 1e-12
quietly correlate y xm zm, pairwise sig
matrix C = r(C)
matrix P = r(P)
matrix Nobs = r(Nobs)
error reldif(C[1,1], 1) > 1e-12
error reldif(C[2,1], -0.0019597641259517643) > 1e-12
error reldif(C[2,2], 1) > 1e-12
error reldif(C[3,1], 0.77096276505885797) > 1e-12
error reldif(C[3,2], -0.0074225820471946861) > 1e-12
error reldif(C[3,3], 1) > 1e-12
error reldif(P[2,1], 0.98835112043585016) > 1e-10
error reldif(P[3,1], 2.2954637748264195e-12) > 1e-10
error reldif(P[3,2], 0.95670137485551776) > 1e-10
quietly correlate y xm zm, pairwise bonferroni
matrix P = r(P)
error reldif(P[2,1], 1) > 1e-10
error reldif(P[3,1], 6.8863913244792584e-12) > 1e-10
error reldif(P[3,2], 1) > 1e-10
quietly correlate y xm zm, pairwise sidak
matrix P = r(P)
error reldif(P[2,1], 0.99999841928903621) > 1e-10
error reldif(P[3,1], 6.886491377144921e-12) > 1e-10
error reldif(P[3,2], 0.99991882499586304) > 1e-10
error Nobs[3,2] != 56
display "test completed"
