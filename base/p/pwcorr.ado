*! version 1.0.0  correlations pair by pair: correlate with the pairwise option
program define pwcorr
    version 9.2
    syntax [varlist(numeric)] [if] [in] [aweight fweight] [, *]
    local wgt
    if "`weight'" != "" local wgt [`weight'`exp']
    correlate `varlist' `if' `in' `wgt', pairwise `options'
end
