*! version 1.0.0  a one-way table of each variable in turn
program define tab1
    version 9.2
    syntax varlist [if] [in] [fweight aweight iweight] [, *]
    local wgt
    if "`weight'" != "" local wgt [`weight'`exp']
    foreach v of local varlist {
        display as text _n "-> tabulation of `v'"
        tabulate `v' `if' `in' `wgt', `options'
    }
end
