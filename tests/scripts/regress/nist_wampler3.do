* NIST StRD linear regression, data set Wampler3: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Wampler3.dat), checked to 10 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
760. 0
-2042. 1
2111. 2
-1684. 3
3888. 4
1858. 5
11379. 6
17560. 7
39287. 8
64382. 9
113159. 10
175108. 11
273291. 12
400186. 13
581243. 14
811568. 15
1121004. 16
1506550. 17
2002767. 18
2611612. 19
3369180. 20
end
generate double x2 = x^2
generate double x3 = x^3
generate double x4 = x^4
generate double x5 = x^5
regress y x x2 x3 x4 x5
assert abs((_b[_cons] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[_cons] - 2152.32624678170) / 2152.32624678170) < 1e-10
assert abs((_b[x] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[x] - 2363.55173469681) / 2363.55173469681) < 1e-10
assert abs((_b[x2] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[x2] - 779.343524331583) / 779.343524331583) < 1e-10
assert abs((_b[x3] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[x3] - 101.475507550350) / 101.475507550350) < 1e-10
assert abs((_b[x4] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[x4] - 5.64566512170752) / 5.64566512170752) < 1e-10
assert abs((_b[x5] - 1.00000000000000) / 1.00000000000000) < 1e-10
assert abs((_se[x5] - 0.112324854679312) / 0.112324854679312) < 1e-10
assert abs((e(rmse) - 2360.14502379268) / 2360.14502379268) < 1e-10
assert abs((e(r2) - 0.999995559025820) / 0.999995559025820) < 1e-10
assert abs((e(mss) - 18814317208116.7) / 18814317208116.7) < 1e-10
assert abs((e(rss) - 83554268.0000000) / 83554268.0000000) < 1e-10
assert e(df_m) == 5 & e(df_r) == 15
assert e(N) == 21
display "test completed"
