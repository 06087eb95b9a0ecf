* Weights, robust and cluster variances against R (lm and the sandwich formulas
* by hand in tests/reference/regress_ref.R, which prints these values).
drop _all
set obs 30
generate double x1 = _n
generate double x2 = mod(_n * 7, 11)
generate double y = 1 + 0.5 * x1 - 2 * x2 + mod(_n * 13, 17) / 3
generate w = mod(_n, 4) + 1
generate g = mod(_n, 6)
regress y x1 x2
assert abs((_b[x1] - 0.49921786025323228) / 0.49921786025323228) < 1e-12
assert abs((_b[x2] - -2.1130808825171394) / -2.1130808825171394) < 1e-12
assert abs((_b[_cons] - 4.3443912224678654) / 4.3443912224678654) < 1e-12
assert abs((_se[x1] - 0.035540254134408741) / 0.035540254134408741) < 1e-12
assert abs((_se[x2] - 0.098147741686564441) / 0.098147741686564441) < 1e-12
assert abs((_se[_cons] - 0.83566401387888856) / 0.83566401387888856) < 1e-12
assert abs(e(rss) - 76.006353202871225) / 76.006353202871225 < 1e-12
assert abs(e(r2) - 0.96396387845011056) < 1e-13
assert abs(e(F) - 361.12411101345106) / 361.12411101345106 < 1e-11
assert e(N) == 30 & e(df_m) == 2 & e(df_r) == 27
assert "`e(vcetype)'" == ""
regress y x1 x2, robust
assert abs((_b[x1] - 0.49921786025323228) / 0.49921786025323228) < 1e-12
assert abs((_b[x2] - -2.1130808825171394) / -2.1130808825171394) < 1e-12
assert abs((_b[_cons] - 4.3443912224678654) / 4.3443912224678654) < 1e-12
assert abs((_se[x1] - 0.034474138633476925) / 0.034474138633476925) < 1e-12
assert abs((_se[x2] - 0.093588731258588284) / 0.093588731258588284) < 1e-12
assert abs((_se[_cons] - 0.80694417130548979) / 0.80694417130548979) < 1e-12
assert "`e(vcetype)'" == "Robust"
regress y x1 x2, hc2
assert abs((_se[x1] - 0.03484835642646146) / 0.03484835642646146) < 1e-12
assert abs((_se[x2] - 0.094522182013435097) / 0.094522182013435097) < 1e-12
assert abs((_se[_cons] - 0.81269325566066253) / 0.81269325566066253) < 1e-12
assert "`e(vcetype)'" == "Robust HC2"
regress y x1 x2, hc3
assert abs((_se[x1] - 0.037161146644812029) / 0.037161146644812029) < 1e-12
assert abs((_se[x2] - 0.10070642153536184) / 0.10070642153536184) < 1e-12
assert abs((_se[_cons] - 0.86322150593559421) / 0.86322150593559421) < 1e-12
assert "`e(vcetype)'" == "Robust HC3"
regress y x1 x2, cluster(g)
assert abs((_se[x1] - 0.040707700062961004) / 0.040707700062961004) < 1e-12
assert abs((_se[x2] - 0.09801842113157519) / 0.09801842113157519) < 1e-12
assert abs((_se[_cons] - 1.007782309822727) / 1.007782309822727) < 1e-12
assert abs(e(F) - 789.64246395734631) / 789.64246395734631 < 1e-11
assert e(N_clust) == 6 & "`e(clustvar)'" == "g"
* the cluster variable as a string gives the same groups
generate str3 gs = "g" + string(g)
regress y x1 x2, cluster(gs)
assert abs((_se[x1] - 0.040707700062961004) / 0.040707700062961004) < 1e-12
assert abs((_se[x2] - 0.09801842113157519) / 0.09801842113157519) < 1e-12
assert abs((_se[_cons] - 1.007782309822727) / 1.007782309822727) < 1e-12
regress y x1 x2 [aweight=w]
assert abs((_b[x1] - 0.51258504319047438) / 0.51258504319047438) < 1e-12
assert abs((_b[x2] - -2.1095002742966078) / -2.1095002742966078) < 1e-12
assert abs((_b[_cons] - 4.3684461097096401) / 4.3684461097096401) < 1e-12
assert abs((_se[x1] - 0.032445323791190563) / 0.032445323791190563) < 1e-12
assert abs((_se[x2] - 0.087151407042431212) / 0.087151407042431212) < 1e-12
assert abs((_se[_cons] - 0.77594453135747399) / 0.77594453135747399) < 1e-12
assert e(N) == 30
regress y x1 x2 [fweight=w]
assert abs((_b[x1] - 0.51258504319047438) / 0.51258504319047438) < 1e-12
assert abs((_b[x2] - -2.1095002742966078) / -2.1095002742966078) < 1e-12
assert abs((_b[_cons] - 4.3684461097096401) / 4.3684461097096401) < 1e-12
assert abs((_se[x1] - 0.019868621956950078) / 0.019868621956950078) < 1e-12
assert abs((_se[x2] - 0.053369119404889233) / 0.053369119404889233) < 1e-12
assert abs((_se[_cons] - 0.47516704263220805) / 0.47516704263220805) < 1e-12
assert e(N) == 75 & e(df_r) == 75 - 3
regress y x1 x2 [iweight=w]
assert abs((_b[x1] - 0.51258504319047438) / 0.51258504319047438) < 1e-12
assert abs((_b[x2] - -2.1095002742966078) / -2.1095002742966078) < 1e-12
assert abs((_b[_cons] - 4.3684461097096401) / 4.3684461097096401) < 1e-12
assert abs((_se[x1] - 0.019868621956950088) / 0.019868621956950088) < 1e-12
assert abs((_se[x2] - 0.05336911940488924) / 0.05336911940488924) < 1e-12
assert abs((_se[_cons] - 0.47516704263220849) / 0.47516704263220849) < 1e-12
regress y x1 x2 [pweight=w]
assert abs((_b[x1] - 0.51258504319047438) / 0.51258504319047438) < 1e-12
assert abs((_b[x2] - -2.1095002742966078) / -2.1095002742966078) < 1e-12
assert abs((_b[_cons] - 4.3684461097096401) / 4.3684461097096401) < 1e-12
assert abs((_se[x1] - 0.030909399534237464) / 0.030909399534237464) < 1e-12
assert abs((_se[x2] - 0.08409537828526463) / 0.08409537828526463) < 1e-12
assert abs((_se[_cons] - 0.70459579871863487) / 0.70459579871863487) < 1e-12
assert "`e(vcetype)'" == "Robust"
* no constant: the robust variance of the two slopes
regress y x1 x2, robust noconstant
assert abs((_se[x1] - 0.030713299812782112) / 0.030713299812782112) < 1e-12
assert abs((_se[x2] - 0.095241441142651859) / 0.095241441142651859) < 1e-12
* the sample marker: observations 1 to 20 only
regress y x1 x2 in 1/20
count if e(sample)
assert r(N) == 20
* a missing cluster leaves the observation out: the same as selecting it away,
* for numeric and string clusters; e(sample) in an if reads the old marker
replace g = . in 1/3
regress y x1 x2, cluster(g)
assert e(N) == 27
regress y x1 x2 if g < ., cluster(g)
local se = _se[x1]
regress y x1 x2 if e(sample)
assert e(N) == 27
generate str2 gs2 = string(g)
replace gs2 = "" in 1/3
regress y x1 x2, cluster(gs2)
assert e(N) == 27 & e(N_clust) == 6
assert reldif(_se[x1], `se') < 1e-14
display "test completed"
