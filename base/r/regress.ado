*! version 1.0.0  linear regression by least squares
program define regress, eclass byable(onecall)
    version 9.2
    local replay = 0
    gettoken first : 0, parse(" ,[")
    if `"`first'"' == "" | `"`first'"' == "," {
        local replay = 1
    }
    if "`_byvars'" != "" {
        by `_byvars' `_byrc0': _regress `0'
    }
    else {
        _regress `0'
    }
    if !`replay' {
        ereturn local title "Linear regression"
        ereturn local cmd "regress"
    }
end
