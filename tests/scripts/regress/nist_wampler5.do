* NIST StRD linear regression, data set Wampler5: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Wampler5.dat), checked to 6 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
7590001 0
-20479994 1
20480063 2
-20479636 3
25231365 4
-20476094 5
20489331 6
-20460392 7
18417449 8
-20413570 9
20591111 10
-20302844 11
18651453 12
-20077766 13
21059195 14
-19666384 15
26348481 16
-18971402 17
22480719 18
-17866340 19
10958421 20
end
generate double x2 = x^2
generate double x3 = x^3
generate double x4 = x^4
generate double x5 = x^5
regress y x x2 x3 x4 x5
assert abs((_b[_cons] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[_cons] - 21523262.4678170) / 21523262.4678170) < 1e-6
assert abs((_b[x] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[x] - 23635517.3469681) / 23635517.3469681) < 1e-6
assert abs((_b[x2] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[x2] - 7793435.24331583) / 7793435.24331583) < 1e-6
assert abs((_b[x3] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[x3] - 1014755.07550350) / 1014755.07550350) < 1e-6
assert abs((_b[x4] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[x4] - 56456.6512170752) / 56456.6512170752) < 1e-6
assert abs((_b[x5] - 1.00000000000000) / 1.00000000000000) < 1e-6
assert abs((_se[x5] - 1123.24854679312) / 1123.24854679312) < 1e-6
assert abs((e(rmse) - 23601450.2379268) / 23601450.2379268) < 1e-6
assert abs((e(r2) - 0.224668921574940E-02) / 0.224668921574940E-02) < 1e-6
assert abs((e(mss) - 18814317208116.7) / 18814317208116.7) < 1e-6
assert abs((e(rss) - 0.835542680000000E+16) / 0.835542680000000E+16) < 1e-6
assert e(df_m) == 5 & e(df_r) == 15
assert e(N) == 21
display "test completed"
