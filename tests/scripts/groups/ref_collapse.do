* expected values from tests/reference/groups_ref.py (pandas, numpy)
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
collapse (mean) mean=y (sum) sum=y (count) n=y (min) min=y (max) max=y (sd) sd=y (median) med=y (p25) p25=y (p90) p90=y (iqr) iqr=y (first) first=y (last) last=y (firstnm) fnm=y (lastnm) lnm=y, by(g)
assert _N == 7
assert g == 0 in 1
assert reldif(mean, 7.2328042328042335) < 1e-13 if g == 0
assert reldif(sum, 195.2857142857143) < 1e-13 if g == 0
assert n == 27 if g == 0
assert reldif(min, 0.42857142857142855) < 1e-13 if g == 0
assert reldif(max, 14.142857142857142) < 1e-13 if g == 0
assert reldif(sd, 4.23748469350688) < 1e-13 if g == 0
assert reldif(med, 7.428571428571429) < 1e-13 if g == 0
assert reldif(p25, 3.4285714285714284) < 1e-13 if g == 0
assert reldif(p90, 13.0) < 1e-13 if g == 0
assert reldif(iqr, 7.7142857142857135) < 1e-13 if g == 0
assert reldif(first, 8.142857142857142) < 1e-13 if g == 0
assert reldif(last, 11.571428571428571) < 1e-13 if g == 0
assert reldif(fnm, 8.142857142857142) < 1e-13 if g == 0
assert reldif(lnm, 11.571428571428571) < 1e-13 if g == 0
assert g == 1 in 2
assert reldif(mean, 7.417582417582418) < 1e-13 if g == 1
assert reldif(sum, 192.85714285714286) < 1e-13 if g == 1
assert n == 26 if g == 1
assert reldif(min, 0.2857142857142857) < 1e-13 if g == 1
assert reldif(max, 14.0) < 1e-13 if g == 1
assert reldif(sd, 4.122991400036189) < 1e-13 if g == 1
assert reldif(med, 7.357142857142858) < 1e-13 if g == 1
assert reldif(p25, 4.0) < 1e-13 if g == 1
assert reldif(p90, 12.857142857142858) < 1e-13 if g == 1
assert reldif(iqr, 7.0) < 1e-13 if g == 1
assert reldif(first, 2.857142857142857) < 1e-13 if g == 1
assert reldif(last, 6.285714285714286) < 1e-13 if g == 1
assert reldif(fnm, 2.857142857142857) < 1e-13 if g == 1
assert reldif(lnm, 6.285714285714286) < 1e-13 if g == 1
assert g == 2 in 3
assert reldif(mean, 7.324175824175825) < 1e-13 if g == 2
assert reldif(sum, 190.42857142857144) < 1e-13 if g == 2
assert n == 26 if g == 2
assert reldif(min, 0.5714285714285714) < 1e-13 if g == 2
assert reldif(max, 14.285714285714286) < 1e-13 if g == 2
assert reldif(sd, 4.328464438528333) < 1e-13 if g == 2
assert reldif(med, 7.2142857142857135) < 1e-13 if g == 2
assert reldif(p25, 3.5714285714285716) < 1e-13 if g == 2
assert reldif(p90, 13.571428571428571) < 1e-13 if g == 2
assert reldif(iqr, 7.714285714285715) < 1e-13 if g == 2
assert reldif(first, 12.0) < 1e-13 if g == 2
assert reldif(last, 1.0) < 1e-13 if g == 2
assert reldif(fnm, 12.0) < 1e-13 if g == 2
assert reldif(lnm, 1.0) < 1e-13 if g == 2
assert g == 3 in 4
assert reldif(mean, 6.831632653061225) < 1e-13 if g == 3
assert reldif(sum, 191.28571428571428) < 1e-13 if g == 3
assert n == 28 if g == 3
assert reldif(min, 0.14285714285714285) < 1e-13 if g == 3
assert reldif(max, 14.142857142857142) < 1e-13 if g == 3
assert reldif(sd, 4.246567876805729) < 1e-13 if g == 3
assert reldif(med, 6.928571428571429) < 1e-13 if g == 3
assert reldif(p25, 3.071428571428571) < 1e-13 if g == 3
assert reldif(p90, 12.714285714285714) < 1e-13 if g == 3
assert reldif(iqr, 7.2142857142857135) < 1e-13 if g == 3
assert reldif(first, 6.714285714285714) < 1e-13 if g == 3
assert reldif(last, 3.857142857142857) < 1e-13 if g == 3
assert reldif(fnm, 6.714285714285714) < 1e-13 if g == 3
assert reldif(lnm, 3.857142857142857) < 1e-13 if g == 3
assert g == 4 in 5
assert reldif(mean, 6.92063492063492) < 1e-13 if g == 4
assert reldif(sum, 186.85714285714283) < 1e-13 if g == 4
assert n == 27 if g == 4
assert reldif(min, 0.0) < 1e-13 if g == 4
assert reldif(max, 13.714285714285714) < 1e-13 if g == 4
assert reldif(sd, 4.259504716407145) < 1e-13 if g == 4
assert reldif(med, 7.0) < 1e-13 if g == 4
assert reldif(p25, 3.0) < 1e-13 if g == 4
assert reldif(p90, 13.0) < 1e-13 if g == 4
assert reldif(iqr, 7.7142857142857135) < 1e-13 if g == 4
assert reldif(first, 1.4285714285714286) < 1e-13 if g == 4
assert reldif(last, 13.0) < 1e-13 if g == 4
assert reldif(fnm, 1.4285714285714286) < 1e-13 if g == 4
assert reldif(lnm, 13.0) < 1e-13 if g == 4
assert g == 5 in 6
assert reldif(mean, 7.703703703703703) < 1e-13 if g == 5
assert reldif(sum, 208.0) < 1e-13 if g == 5
assert n == 27 if g == 5
assert reldif(min, 0.2857142857142857) < 1e-13 if g == 5
assert reldif(max, 14.285714285714286) < 1e-13 if g == 5
assert reldif(sd, 4.25592687219658) < 1e-13 if g == 5
assert reldif(med, 7.714285714285714) < 1e-13 if g == 5
assert reldif(p25, 4.285714285714286) < 1e-13 if g == 5
assert reldif(p90, 13.571428571428571) < 1e-13 if g == 5
assert reldif(iqr, 7.428571428571428) < 1e-13 if g == 5
assert reldif(first, 10.571428571428571) < 1e-13 if g == 5
assert reldif(last, 7.714285714285714) < 1e-13 if g == 5
assert reldif(fnm, 10.571428571428571) < 1e-13 if g == 5
assert reldif(lnm, 7.714285714285714) < 1e-13 if g == 5
assert g == 6 in 7
assert reldif(mean, 7.0153061224489806) < 1e-13 if g == 6
assert reldif(sum, 196.42857142857144) < 1e-13 if g == 6
assert n == 28 if g == 6
assert reldif(min, 0.14285714285714285) < 1e-13 if g == 6
assert reldif(max, 13.857142857142858) < 1e-13 if g == 6
assert reldif(sd, 4.213203032966506) < 1e-13 if g == 6
assert reldif(med, 7.0) < 1e-13 if g == 6
assert reldif(p25, 3.5) < 1e-13 if g == 6
assert reldif(p90, 13.142857142857142) < 1e-13 if g == 6
assert reldif(iqr, 7.0) < 1e-13 if g == 6
assert reldif(first, 5.285714285714286) < 1e-13 if g == 6
assert reldif(last, 2.4285714285714284) < 1e-13 if g == 6
assert reldif(fnm, 5.285714285714286) < 1e-13 if g == 6
assert reldif(lnm, 2.4285714285714284) < 1e-13 if g == 6
display "test completed"
