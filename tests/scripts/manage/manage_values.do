* Written by tests/reference/manage_ref.R; do not edit.
drop _all
set obs 40
gen n = _n
gen g = mod(n, 3) + 1
gen x = mod(n * 7, 11) - 3
gen double y = n * 0.5 + mod(n, 4) * 1.25
gen double ym = y
replace ym = . if mod(n, 9) == 0
gen w = mod(n, 4) + 1
quietly tabstat x ym, statistics(mean sd n sum p25 p50 p75 iqr min max p10 p90) by(g)
matrix T = r(StatTotal)
matrix S1 = r(Stat1)
matrix S2 = r(Stat2)
matrix S3 = r(Stat3)
error reldif(T[1,1], 2.1749999999999998) > 1e-12
error reldif(T[1,2], 12.013888888888889) > 1e-12
error reldif(T[2,1], 3.1532441576808985) > 1e-12
error reldif(T[2,2], 6.0848008666924827) > 1e-12
error reldif(T[3,1],                 40) > 1e-12
error reldif(T[3,2],                 36) > 1e-12
error reldif(T[4,1],                 87) > 1e-12
error reldif(T[4,2],              432.5) > 1e-12
error reldif(T[5,1],               -0.5) > 1e-12
error reldif(T[5,2],              7.375) > 1e-12
error reldif(T[6,1],                  2) > 1e-12
error reldif(T[6,2],             11.875) > 1e-12
error reldif(T[7,1],                  5) > 1e-12
error reldif(T[7,2],              16.75) > 1e-12
error reldif(T[8,1],                5.5) > 1e-12
error reldif(T[8,2],              9.375) > 1e-12
error reldif(T[9,1],                 -3) > 1e-12
error reldif(T[9,2],               1.75) > 1e-12
error reldif(T[10,1],                  7) > 1e-12
error reldif(T[10,2],              23.25) > 1e-12
error reldif(T[11,1],                 -2) > 1e-12
error reldif(T[11,2],               3.75) > 1e-12
error reldif(T[12,1],                6.5) > 1e-12
error reldif(T[12,2],                 20) > 1e-12
error reldif(S1[1,1], 2.6923076923076925) > 1e-12
error reldif(S1[1,2],              12.25) > 1e-12
error reldif(S1[2,1], 3.4733416998767286) > 1e-12
error reldif(S1[2,2], 6.2624875249376748) > 1e-12
error reldif(S1[3,1],                 13) > 1e-12
error reldif(S1[3,2],                  9) > 1e-12
error reldif(S1[4,1],                 35) > 1e-12
error reldif(S1[4,2],             110.25) > 1e-12
error reldif(S1[5,1],                  0) > 1e-12
error reldif(S1[5,2],                  6) > 1e-12
error reldif(S1[6,1],                  3) > 1e-12
error reldif(S1[6,2],              11.75) > 1e-12
error reldif(S1[7,1],                  6) > 1e-12
error reldif(S1[7,2],               17.5) > 1e-12
error reldif(S1[8,1],                  6) > 1e-12
error reldif(S1[8,2],               11.5) > 1e-12
error reldif(S1[9,1],                 -3) > 1e-12
error reldif(S1[9,2],               5.25) > 1e-12
error reldif(S1[10,1],                  7) > 1e-12
error reldif(S1[10,2],              23.25) > 1e-12
error reldif(S1[11,1],                 -2) > 1e-12
error reldif(S1[11,2],               5.25) > 1e-12
error reldif(S1[12,1],                  7) > 1e-12
error reldif(S1[12,2],              23.25) > 1e-12
error reldif(S2[1,1], 2.2142857142857144) > 1e-12
error reldif(S2[1,2], 11.946428571428571) > 1e-12
error reldif(S2[2,1], 2.9659236835601988) > 1e-12
error reldif(S2[2,2], 6.3588056536317685) > 1e-12
error reldif(S2[3,1],                 14) > 1e-12
error reldif(S2[3,2],                 14) > 1e-12
error reldif(S2[4,1],                 31) > 1e-12
error reldif(S2[4,2],             167.25) > 1e-12
error reldif(S2[5,1],                  0) > 1e-12
error reldif(S2[5,2],                7.5) > 1e-12
error reldif(S2[6,1],                2.5) > 1e-12
error reldif(S2[6,2],             13.375) > 1e-12
error reldif(S2[7,1],                  4) > 1e-12
error reldif(S2[7,2],              19.25) > 1e-12
error reldif(S2[8,1],                  4) > 1e-12
error reldif(S2[8,2],              11.75) > 1e-12
error reldif(S2[9,1],                 -3) > 1e-12
error reldif(S2[9,2],               1.75) > 1e-12
error reldif(S2[10,1],                  7) > 1e-12
error reldif(S2[10,2],                 20) > 1e-12
error reldif(S2[11,1],                 -2) > 1e-12
error reldif(S2[11,2],                  2) > 1e-12
error reldif(S2[12,1],                  6) > 1e-12
error reldif(S2[12,2],              19.75) > 1e-12
error reldif(S3[1,1], 1.6153846153846154) > 1e-12
error reldif(S3[1,2], 11.923076923076923) > 1e-12
error reldif(S3[2,1],  3.176435673792811) > 1e-12
error reldif(S3[2,2], 6.1630490081552232) > 1e-12
error reldif(S3[3,1],                 13) > 1e-12
error reldif(S3[3,2],                 13) > 1e-12
error reldif(S3[4,1],                 21) > 1e-12
error reldif(S3[4,2],                155) > 1e-12
error reldif(S3[5,1],                 -1) > 1e-12
error reldif(S3[5,2],               9.25) > 1e-12
error reldif(S3[6,1],                  1) > 1e-12
error reldif(S3[6,2],                 10) > 1e-12
error reldif(S3[7,1],                  4) > 1e-12
error reldif(S3[7,2],              15.75) > 1e-12
error reldif(S3[8,1],                  5) > 1e-12
error reldif(S3[8,2],                6.5) > 1e-12
error reldif(S3[9,1],                 -3) > 1e-12
error reldif(S3[9,2],                3.5) > 1e-12
error reldif(S3[10,1],                  7) > 1e-12
error reldif(S3[10,2],               21.5) > 1e-12
error reldif(S3[11,1],                 -2) > 1e-12
error reldif(S3[11,2],               3.75) > 1e-12
error reldif(S3[12,1],                  6) > 1e-12
error reldif(S3[12,2],              21.25) > 1e-12
error "`r(name2)'" != "2"
quietly tabstat x ym [fweight = w], statistics(mean sd n sum p25 p50 p75 iqr min max p10 p90)
matrix T = r(StatTotal)
error reldif(T[1,1], 2.0800000000000001) > 1e-12
error reldif(T[1,2], 12.633333333333333) > 1e-12
error reldif(T[2,1],  3.196209876675431) > 1e-12
error reldif(T[2,2], 6.0800142297290609) > 1e-12
error reldif(T[3,1],                100) > 1e-12
error reldif(T[3,2],                 90) > 1e-12
error reldif(T[4,1],                208) > 1e-12
error reldif(T[4,2],               1137) > 1e-12
error reldif(T[5,1],                 -1) > 1e-12
error reldif(T[5,2],                7.5) > 1e-12
error reldif(T[6,1],                  2) > 1e-12
error reldif(T[6,2],              13.25) > 1e-12
error reldif(T[7,1],                  5) > 1e-12
error reldif(T[7,2],              17.75) > 1e-12
error reldif(T[8,1],                  6) > 1e-12
error reldif(T[8,2],              10.25) > 1e-12
error reldif(T[9,1],                 -3) > 1e-12
error reldif(T[9,2],               1.75) > 1e-12
error reldif(T[10,1],                  7) > 1e-12
error reldif(T[10,2],              23.25) > 1e-12
error reldif(T[11,1],                 -2) > 1e-12
error reldif(T[11,2],              4.625) > 1e-12
error reldif(T[12,1],                6.5) > 1e-12
error reldif(T[12,2],              21.25) > 1e-12
quietly tabstat ym, statistics(skewness kurtosis cv semean variance)
matrix T = r(StatTotal)
error reldif(T[1,1], 0.05275920154214863) > 1e-12
error reldif(T[2,1], 1.9214711937691242) > 1e-12
error reldif(T[3,1], 0.50648053456862285) > 1e-12
error reldif(T[4,1], 1.0141334777820805) > 1e-12
error reldif(T[5,1], 37.024801587301589) > 1e-12
drop _all
input id sex inc1 inc2 inc3
                 6                  2                 61                 62                 63
                 5                  1                 51 .                 53
                 4                  1                 41                 42                 43
                 3                  2                 31                 32                 33
                 2                  2                 21 .                 23
                 1                  1                 11                 12                 13
end
reshape long inc, i(id) j(year)
error _N != 18 | c(k) != 4
gen k = _n
assert id ==                  1 & year ==                  1 & inc ==                 11 & sex ==                  1 if k == 1
assert id ==                  1 & year ==                  2 & inc ==                 12 & sex ==                  1 if k == 2
assert id ==                  1 & year ==                  3 & inc ==                 13 & sex ==                  1 if k == 3
assert id ==                  2 & year ==                  1 & inc ==                 21 & sex ==                  2 if k == 4
assert id ==                  2 & year ==                  2 & inc == . & sex ==                  2 if k == 5
assert id ==                  2 & year ==                  3 & inc ==                 23 & sex ==                  2 if k == 6
assert id ==                  3 & year ==                  1 & inc ==                 31 & sex ==                  2 if k == 7
assert id ==                  3 & year ==                  2 & inc ==                 32 & sex ==                  2 if k == 8
assert id ==                  3 & year ==                  3 & inc ==                 33 & sex ==                  2 if k == 9
assert id ==                  4 & year ==                  1 & inc ==                 41 & sex ==                  1 if k == 10
assert id ==                  4 & year ==                  2 & inc ==                 42 & sex ==                  1 if k == 11
assert id ==                  4 & year ==                  3 & inc ==                 43 & sex ==                  1 if k == 12
assert id ==                  5 & year ==                  1 & inc ==                 51 & sex ==                  1 if k == 13
assert id ==                  5 & year ==                  2 & inc == . & sex ==                  1 if k == 14
assert id ==                  5 & year ==                  3 & inc ==                 53 & sex ==                  1 if k == 15
assert id ==                  6 & year ==                  1 & inc ==                 61 & sex ==                  2 if k == 16
assert id ==                  6 & year ==                  2 & inc ==                 62 & sex ==                  2 if k == 17
assert id ==                  6 & year ==                  3 & inc ==                 63 & sex ==                  2 if k == 18
drop k
reshape wide
error _N != 6 | c(k) != 5
gen k = _n
assert id ==                  1 & sex ==                  1 & inc1 ==                 11 & inc2 ==                 12 & inc3 ==                 13 if k == 1
assert id ==                  2 & sex ==                  2 & inc1 ==                 21 & inc2 == . & inc3 ==                 23 if k == 2
assert id ==                  3 & sex ==                  2 & inc1 ==                 31 & inc2 ==                 32 & inc3 ==                 33 if k == 3
assert id ==                  4 & sex ==                  1 & inc1 ==                 41 & inc2 ==                 42 & inc3 ==                 43 if k == 4
assert id ==                  5 & sex ==                  1 & inc1 ==                 51 & inc2 == . & inc3 ==                 53 if k == 5
assert id ==                  6 & sex ==                  2 & inc1 ==                 61 & inc2 ==                 62 & inc3 ==                 63 if k == 6
drop k
drop _all
input str8 fruit
"pear"
"apple"
"fig"
"apple"
""
"kiwi"
"fig"
"pear"
end
encode fruit, generate(code)
gen k = _n
assert code ==                  4 if k == 1
assert code ==                  1 if k == 2
assert code ==                  2 if k == 3
assert code ==                  1 if k == 4
assert code == . if k == 5
assert code ==                  3 if k == 6
assert code ==                  2 if k == 7
assert code ==                  4 if k == 8
decode code, generate(back)
assert back == fruit
display "test completed"
