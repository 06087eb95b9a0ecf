* NIST StRD linear regression, data set Wampler2: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Wampler2.dat), checked to 11 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
1.00000 0
1.11111 1
1.24992 2
1.42753 3
1.65984 4
1.96875 5
2.38336 6
2.94117 7
3.68928 8
4.68559 9
6.00000 10
7.71561 11
9.92992 12
12.75603 13
16.32384 14
20.78125 15
26.29536 16
33.05367 17
41.26528 18
51.16209 19
63.00000 20
end
generate double x2 = x^2
generate double x3 = x^3
generate double x4 = x^4
generate double x5 = x^5
regress y x x2 x3 x4 x5
assert abs((_b[_cons] - 1.00000000000000) / 1.00000000000000) < 1e-11
assert abs(_se[_cons]) < 1e-11
assert abs((_b[x] - 0.100000000000000) / 0.100000000000000) < 1e-11
assert abs(_se[x]) < 1e-11
assert abs((_b[x2] - 0.100000000000000E-01) / 0.100000000000000E-01) < 1e-11
assert abs(_se[x2]) < 1e-11
assert abs((_b[x3] - 0.100000000000000E-02) / 0.100000000000000E-02) < 1e-11
assert abs(_se[x3]) < 1e-11
assert abs((_b[x4] - 0.100000000000000E-03) / 0.100000000000000E-03) < 1e-11
assert abs(_se[x4]) < 1e-11
assert abs((_b[x5] - 0.100000000000000E-04) / 0.100000000000000E-04) < 1e-11
assert abs(_se[x5]) < 1e-11
assert abs(e(rmse)) < 1e-11
assert abs((e(r2) - 1.00000000000000) / 1.00000000000000) < 1e-11
assert abs((e(mss) - 6602.91858365167) / 6602.91858365167) < 1e-11
assert abs(e(rss)) < 1e-11
assert e(df_m) == 5 & e(df_r) == 15
assert e(N) == 21
display "test completed"
