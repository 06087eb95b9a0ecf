* tsscons and means against R (lm, anova against y ~ 1, weighted.mean), the
* values printed by tests/reference/regress_opts.R.
drop _all
set obs 30
generate double x1 = _n
generate double x2 = mod(_n * 7, 11)
generate double y = 1 + 0.5 * x1 - 2 * x2 + mod(_n * 13, 17) / 3
generate w = mod(_n, 4) + 1
* without a constant, the sums of squares about the mean
regress y x1 x2, noconstant tsscons
assert abs((_b[x1] - 0.63114634812327652) / 0.63114634812327652) < 1e-12
assert abs((_b[x2] - -1.7766603054007746) / -1.7766603054007746) < 1e-12
assert abs(e(rss) - 152.08811928573786) / 152.08811928573786 < 1e-12
assert abs(e(mss) - 1957.0831770105583) / 1957.0831770105583 < 1e-12
assert abs(e(r2) - 0.92789200215610534) < 1e-13
assert abs(e(r2_a) - 0.92531671651882341) < 1e-13
assert abs(e(F) - 360.30644085579388) / 360.30644085579388 < 1e-11
assert e(N) == 30 & e(df_m) == 1 & e(df_r) == 28
assert abs(e(ll) - -66.917096546350777) / 66.917096546350777 < 1e-12
assert abs(e(ll_0) - -106.36095125250182) / 106.36095125250182 < 1e-12
* with a constant nothing changes
regress y x1 x2, tsscons
assert abs(e(r2) - 0.96396387845011056) < 1e-13
assert abs(e(F) - 361.12411101345106) / 361.12411101345106 < 1e-11
assert e(df_m) == 2
* a fit worse than the mean: R-squared and F are missing, the model sum of
* squares is 0
generate double yn = 40 - x1
regress yn x1, noconstant tsscons
assert abs(e(rss) - 11409.836065573769) / 11409.836065573769 < 1e-12
assert e(r2) == . & e(r2_a) == . & e(F) == . & e(mss) == 0
assert abs(e(ll) - -131.68366139835652) / 131.68366139835652 < 1e-12
assert abs(e(ll_0) - -107.31380176639446) / 107.31380176639446 < 1e-12
* means of the regressors, unweighted and weighted over a subsample
regress y x1 x2, means
matrix M = e(means)
assert rowsof(M) == 1 & colsof(M) == 2
assert abs(M[1, 1] - 15.5) < 1e-13 & abs(M[1, 2] - 5.1) < 1e-13
assert "`: colnames M'" == "x1 x2" & "`: rownames M'" == "mean"
regress y x1 x2 [aweight = w] if x2 > 2, means noconstant
matrix M = e(means)
assert abs(M[1, 1] - 13.924528301886792) < 1e-12
assert abs(M[1, 2] - 6.5660377358490569) < 1e-12
regress y x1 x2 [aweight = w] if x2 > 2, m
matrix M = e(means)
assert abs(M[1, 1] - 13.924528301886792) < 1e-12
assert abs(M[1, 2] - 6.5660377358490569) < 1e-12
local m : e(matrices)
assert "`m'" == "b V means"
* without the option there is none, and a new fit drops the old one
regress y x1 x2
local m : e(matrices)
assert "`m'" == "b V"
* the options that change nothing are accepted
regress y x1 x2, rssmat bmat checkorder
assert abs(e(r2) - 0.96396387845011056) < 1e-13
display "test completed"
