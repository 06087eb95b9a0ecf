* NIST StRD linear regression, data set Wampler1: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Wampler1.dat), checked to 10 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
1 0
6 1
63 2
364 3
1365 4
3906 5
9331 6
19608 7
37449 8
66430 9
111111 10
177156 11
271453 12
402234 13
579195 14
813616 15
1118481 16
1508598 17
2000719 18
2613660 19
3368421 20
end
generate double x2 = x^2
generate double x3 = x^3
generate double x4 = x^4
generate double x5 = x^5
regress y x x2 x3 x4 x5
assert abs((_b[_cons] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[_cons]) < 1e-10
assert abs((_b[x] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[x]) < 1e-10
assert abs((_b[x2] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[x2]) < 1e-10
assert abs((_b[x3] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[x3]) < 1e-10
assert abs((_b[x4] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[x4]) < 1e-10
assert abs((_b[x5] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs(_se[x5]) < 1e-10
assert abs(e(rmse)) < 1e-10
assert abs((e(r2) - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((e(mss) - 18814317208116.7) / 18814317208116.7) < 1e-10
assert abs(e(rss)) < 1e-10
assert e(df_m) == 5 & e(df_r) == 15
assert e(N) == 21
display "test completed"
