* NIST StRD linear regression, data set Wampler4: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Wampler4.dat), checked to 8 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
75901 0
-204794 1
204863 2
-204436 3
253665 4
-200894 5
214131 6
-185192 7
221249 8
-138370 9
315911 10
-27644 11
455253 12
197434 13
783995 14
608816 15
1370781 16
1303798 17
2205519 18
2408860 19
3444321 20
end
generate double x2 = x^2
generate double x3 = x^3
generate double x4 = x^4
generate double x5 = x^5
regress y x x2 x3 x4 x5
assert abs((_b[_cons] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[_cons] - 215232.624678170) / 215232.624678170) < 1e-8
assert abs((_b[x] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[x] - 236355.173469681) / 236355.173469681) < 1e-8
assert abs((_b[x2] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[x2] - 77934.3524331583) / 77934.3524331583) < 1e-8
assert abs((_b[x3] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[x3] - 10147.5507550350) / 10147.5507550350) < 1e-8
assert abs((_b[x4] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[x4] - 564.566512170752) / 564.566512170752) < 1e-8
assert abs((_b[x5] - 1.00000000000000) / 1.00000000000000) < 1e-8
assert abs((_se[x5] - 11.2324854679312) / 11.2324854679312) < 1e-8
assert abs((e(rmse) - 236014.502379268) / 236014.502379268) < 1e-8
assert abs((e(r2) - 0.957478440825662) / 0.957478440825662) < 1e-8
assert abs((e(mss) - 18814317208116.7) / 18814317208116.7) < 1e-8
assert abs((e(rss) - 835542680000.000) / 835542680000.000) < 1e-8
assert e(df_m) == 5 & e(df_r) == 15
assert e(N) == 21
display "test completed"
