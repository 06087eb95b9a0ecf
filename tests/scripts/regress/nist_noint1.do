* NIST StRD linear regression, data set NoInt1: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/NoInt1.dat), checked to 12 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
130 60
131 61
132 62
133 63
134 64
135 65
136 66
137 67
138 68
139 69
140 70
end
regress y x, noconstant
assert abs((_b[x] - 2.07438016528926) / 2.07438016528926) < 1e-12
assert abs((_se[x] - 0.165289256198347E-01) / 0.165289256198347E-01) < 1e-12
assert abs((e(rmse) - 3.56753034006338) / 3.56753034006338) < 1e-12
assert abs((e(r2) - 0.999365492298663) / 0.999365492298663) < 1e-12
assert abs((e(mss) - 200457.727272727) / 200457.727272727) < 1e-12
assert abs((e(rss) - 127.272727272727) / 127.272727272727) < 1e-12
assert e(df_m) == 1 & e(df_r) == 10
assert e(N) == 11
display "test completed"
