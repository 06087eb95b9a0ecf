* NIST StRD linear regression, data set NoInt2: the certified values of the
* National Institute of Standards and Technology's Statistical Reference
* Datasets (tests/reference/nist/NoInt2.dat), checked to 12 digits.
* Written by tests/reference/nist_to_do.py.
drop _all
input double y double x
3 4
4 5
4 6
end
regress y x, noconstant
assert abs((_b[x] - 0.727272727272727) / 0.727272727272727) < 1e-12
assert abs((_se[x] - 0.420827318078432E-01) / 0.420827318078432E-01) < 1e-12
assert abs((e(rmse) - 0.369274472937998) / 0.369274472937998) < 1e-12
assert abs((e(r2) - 0.993348115299335) / 0.993348115299335) < 1e-12
assert abs((e(mss) - 40.7272727272727) / 40.7272727272727) < 1e-12
assert abs((e(rss) - 0.272727272727273) / 0.272727272727273) < 1e-12
assert e(df_m) == 1 & e(df_r) == 2
assert e(N) == 3
display "test completed"
