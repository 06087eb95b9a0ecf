* The layouts of correlate: the matrix, means, covariances, weights, many
* variables wrapping at the line size, and the pairwise form.
set obs 25
gen n = _n
gen double a = n * 2 - mod(n, 3)
gen double b = sqrt(n) * 10
gen double c = mod(n * 7, 11)
replace c = . if n == 3
gen double d = 100 - n
gen w = mod(n, 4) + 1
correlate a b c d
correlate a b, means
correlate a b c, covariance
correlate a b [fweight = w]
correlate a b c d, pairwise sig obs
correlate a b c d, pairwise star(0.05) bonferroni
correlate a b c d, pairwise print(0.01) sidak
forvalues k = 1/12 {
    gen double v`k' = mod(n * `k', 7) + n / `k'
}
set linesize 80
correlate v1-v12
display "test completed"
