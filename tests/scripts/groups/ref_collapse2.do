* expected values from tests/reference/groups_ref.py (pandas, numpy)
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
collapse (mean) y (count) n=y if h != 1, by(s g)
assert _N == 21
assert s == "ab" & g == 0 in 1
assert reldif(y, 8.081632653061224) < 1e-13 if _n == 1
assert n == 7 in 1
assert s == "ab" & g == 1 in 2
assert reldif(y, 7.017857142857143) < 1e-13 if _n == 2
assert n == 8 in 2
assert s == "ab" & g == 2 in 3
assert reldif(y, 8.714285714285714) < 1e-13 if _n == 3
assert n == 7 in 3
assert s == "ab" & g == 3 in 4
assert reldif(y, 6.910714285714286) < 1e-13 if _n == 4
assert n == 8 in 4
assert s == "ab" & g == 4 in 5
assert reldif(y, 6.877551020408163) < 1e-13 if _n == 5
assert n == 7 in 5
assert s == "ab" & g == 5 in 6
assert reldif(y, 9.333333333333334) < 1e-13 if _n == 6
assert n == 6 in 6
assert s == "ab" & g == 6 in 7
assert reldif(y, 7.0) < 1e-13 if _n == 7
assert n == 8 in 7
assert s == "b d" & g == 0 in 8
assert reldif(y, 5.476190476190475) < 1e-13 if _n == 8
assert n == 3 in 8
assert s == "b d" & g == 1 in 9
assert reldif(y, 5.3809523809523805) < 1e-13 if _n == 9
assert n == 3 in 9
assert s == "b d" & g == 2 in 10
assert reldif(y, 6.142857142857143) < 1e-13 if _n == 10
assert n == 4 in 10
assert s == "b d" & g == 3 in 11
assert reldif(y, 6.214285714285715) < 1e-13 if _n == 11
assert n == 4 in 11
assert s == "b d" & g == 4 in 12
assert reldif(y, 6.285714285714286) < 1e-13 if _n == 12
assert n == 4 in 12
assert s == "b d" & g == 5 in 13
assert reldif(y, 6.357142857142858) < 1e-13 if _n == 13
assert n == 4 in 13
assert s == "b d" & g == 6 in 14
assert reldif(y, 4.714285714285714) < 1e-13 if _n == 14
assert n == 3 in 14
assert s == "c" & g == 0 in 15
assert reldif(y, 7.5102040816326525) < 1e-13 if _n == 15
assert n == 7 in 15
assert s == "c" & g == 1 in 16
assert reldif(y, 8.244897959183673) < 1e-13 if _n == 16
assert n == 7 in 16
assert s == "c" & g == 2 in 17
assert reldif(y, 6.551020408163266) < 1e-13 if _n == 17
assert n == 7 in 17
assert s == "c" & g == 3 in 18
assert reldif(y, 6.8809523809523805) < 1e-13 if _n == 18
assert n == 6 in 18
assert s == "c" & g == 4 in 19
assert reldif(y, 7.979591836734693) < 1e-13 if _n == 19
assert n == 7 in 19
assert s == "c" & g == 5 in 20
assert reldif(y, 7.339285714285714) < 1e-13 if _n == 20
assert n == 8 in 20
assert s == "c" & g == 6 in 21
assert reldif(y, 7.285714285714286) < 1e-13 if _n == 21
assert n == 8 in 21
display "test completed"
