* expected values from tests/reference/groups_ref.py (pandas, numpy)
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
collapse (mean) m=y (sd) sd=y (sum) s=y (count) n=y (median) med=y [fweight=w], by(g)
assert reldif(m, 7.147186147186147) < 1e-13 if g == 0
assert reldif(sd, 4.254979146061585) < 1e-13 if g == 0
assert reldif(s, 471.7142857142857) < 1e-13 if g == 0
assert n == 66 if g == 0
assert reldif(med, 7.071428571428571) < 1e-13 if g == 0
assert reldif(m, 7.472527472527473) < 1e-13 if g == 1
assert reldif(sd, 4.14061847434396) < 1e-13 if g == 1
assert reldif(s, 485.7142857142857) < 1e-13 if g == 1
assert n == 65 if g == 1
assert reldif(med, 7.0) < 1e-13 if g == 1
assert reldif(m, 7.426373626373626) < 1e-13 if g == 2
assert reldif(sd, 4.429182871650035) < 1e-13 if g == 2
assert reldif(s, 482.71428571428567) < 1e-13 if g == 2
assert n == 65 if g == 2
assert reldif(med, 7.571428571428571) < 1e-13 if g == 2
assert reldif(m, 6.57983193277311) < 1e-13 if g == 3
assert reldif(sd, 4.186039367725263) < 1e-13 if g == 3
assert reldif(s, 447.42857142857144) < 1e-13 if g == 3
assert n == 68 if g == 3
assert reldif(med, 6.928571428571429) < 1e-13 if g == 3
assert reldif(m, 7.279678068410464) < 1e-13 if g == 4
assert reldif(sd, 4.219034793499222) < 1e-13 if g == 4
assert reldif(s, 516.8571428571429) < 1e-13 if g == 4
assert n == 71 if g == 4
assert reldif(med, 7.428571428571429) < 1e-13 if g == 4
assert reldif(m, 7.999999999999998) < 1e-13 if g == 5
assert reldif(sd, 4.22506537156936) < 1e-13 if g == 5
assert reldif(s, 527.9999999999999) < 1e-13 if g == 5
assert n == 66 if g == 5
assert reldif(med, 7.714285714285714) < 1e-13 if g == 5
assert reldif(m, 6.56938775510204) < 1e-13 if g == 6
assert reldif(sd, 4.148136342043438) < 1e-13 if g == 6
assert reldif(s, 459.85714285714283) < 1e-13 if g == 6
assert n == 70 if g == 6
assert reldif(med, 7.142857142857143) < 1e-13 if g == 6
drop _all
set obs 200
generate g = mod(_n*13, 7)
generate h = mod(_n, 3)
generate double y = cond(mod(_n, 17) == 0, ., mod(_n*37, 101)/7)
generate w = 1 + mod(_n, 4)
generate str3 s = cond(mod(_n, 5) < 2, "ab", cond(mod(_n, 5) < 4, "c", "b d"))
collapse (mean) m=y (sd) sd=y (sum) s=y [aweight=w], by(g)
assert reldif(m, 7.1471861471861455) < 1e-13 if g == 0
assert reldif(sd, 4.3030595325880245) < 1e-13 if g == 0
assert reldif(s, 192.97402597402592) < 1e-13 if g == 0
assert reldif(m, 7.472527472527473) < 1e-13 if g == 1
assert reldif(sd, 4.190011296223481) < 1e-13 if g == 1
assert reldif(s, 194.28571428571428) < 1e-13 if g == 1
assert reldif(m, 7.426373626373626) < 1e-13 if g == 2
assert reldif(sd, 4.482017935302188) < 1e-13 if g == 2
assert reldif(s, 193.08571428571426) < 1e-13 if g == 2
assert reldif(m, 6.579831932773109) < 1e-13 if g == 3
assert reldif(sd, 4.231393230704842) < 1e-13 if g == 3
assert reldif(s, 184.23529411764704) < 1e-13 if g == 3
assert reldif(m, 7.279678068410464) < 1e-13 if g == 4
assert reldif(sd, 4.26901971722067) < 1e-13 if g == 4
assert reldif(s, 196.5513078470825) < 1e-13 if g == 4
assert reldif(m, 8.0) < 1e-13 if g == 5
assert reldif(sd, 4.272807738615404) < 1e-13 if g == 5
assert reldif(s, 216.0) < 1e-13 if g == 5
assert reldif(m, 6.56938775510204) < 1e-13 if g == 6
assert reldif(sd, 4.193973494221202) < 1e-13 if g == 6
assert reldif(s, 183.94285714285712) < 1e-13 if g == 6
display "test completed"
