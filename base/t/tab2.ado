*! version 1.0.0  a two-way table of every pair of variables
program define tab2
    version 9.2
    syntax varlist(min=2) [if] [in] [fweight aweight iweight] [, *]
    local wgt
    if "`weight'" != "" local wgt [`weight'`exp']
    local n : word count `varlist'
    forvalues i = 1/`n' {
        local a : word `i' of `varlist'
        forvalues j = `=`i' + 1'/`n' {
            local b : word `j' of `varlist'
            display as text _n "-> tabulation of `a' by `b'"
            tabulate `a' `b' `if' `in' `wgt', `options'
        }
    }
end
