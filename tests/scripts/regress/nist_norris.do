* NIST StRD linear regression, data set Norris: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/Norris.dat), checked to 12 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
0.1 0.2
338.8 337.4
118.1 118.2
888.0 884.6
9.2 10.1
228.1 226.5
668.5 666.3
998.5 996.3
449.1 448.6
778.9 777.0
559.2 558.2
0.3 0.4
0.1 0.6
778.1 775.5
668.8 666.9
339.3 338.0
448.9 447.5
10.8 11.6
557.7 556.0
228.3 228.1
998.0 995.8
888.8 887.6
119.6 120.2
0.3 0.3
0.6 0.3
557.6 556.8
339.3 339.1
888.0 887.2
998.5 999.0
778.9 779.0
10.2 11.1
117.6 118.3
228.9 229.2
668.4 669.1
449.2 448.9
0.2 0.5
end
regress y x
assert abs((_b[_cons] - -0.262323073774029) / -0.262323073774029) < 1e-12
assert abs((_se[_cons] - 0.232818234301152) / 0.232818234301152) < 1e-12
assert abs((_b[x] - 1.00211681802045) / 1.00211681802045) < 1e-12
assert abs((_se[x] - 0.429796848199937E-03) / 0.429796848199937E-03) < 1e-12
assert abs((e(rmse) - 0.884796396144373) / 0.884796396144373) < 1e-12
assert abs((e(r2) - 0.999993745883712) / 0.999993745883712) < 1e-12
assert abs((e(mss) - 4255954.13232369) / 4255954.13232369) < 1e-12
assert abs((e(rss) - 26.6173985294224) / 26.6173985294224) < 1e-12
assert e(df_m) == 1 & e(df_r) == 34
assert e(N) == 36
display "test completed"
