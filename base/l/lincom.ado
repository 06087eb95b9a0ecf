*! version 1.0.0  a linear combination of the coefficients with its standard error
program define lincom, rclass
    version 9.2
    if "`e(cmd)'" == "" {
        error 301
    }
    local expr `"`0'"'
    local c = index(`"`0'"', ",")
    if `c' > 0 {
        local expr = substr(`"`0'"', 1, `c' - 1)
        local 0 = substr(`"`0'"', `c', .)
    }
    else {
        local 0
    }
    syntax [, Level(cilevel) EForm]
    if `"`expr'"' == "" {
        display as error "expression required"
        exit 198
    }
    tempname b V C VV
    matrix `b' = e(b)
    matrix `V' = e(V)
    local names : colnames `b'
    local full : colfullnames `b'
    local k = colsof(`b')
    * the expression read token by token: coefficient names are kept apart
    local rest `"`expr'"'
    local toks
    local n 0
    while `"`rest'"' != "" {
        gettoken t rest : rest, parse("+-*/()^ ")
        if `"`t'"' == "" continue, break
        local n = `n' + 1
        local tok`n' `"`t'"'
        local isc`n' 0
        * a coefficient: name, or eq:name for one of another equation
        local isvar = regexm(`"`t'"', "^[A-Za-z_][A-Za-z_0-9]*(:[A-Za-z_][A-Za-z_0-9]*)?$")
        if `isvar' {
            if strpos(`"`t'"', ":") {
                local pos : list posof `"`t'"' in full
            }
            else {
                local pos : list posof `"`t'"' in names
            }
            if `pos' == 0 {
                display as error "`t' not found"
                exit 111
            }
            local isc`n' `pos'
        }
    }
    * the value at b, and the coefficient of each term: f(e_j) - f(0)
    local fb
    local f0
    forvalues i = 1/`n' {
        if `isc`i'' {
            local fb `"`fb'(`b'[1,`isc`i''])"'
            local f0 `"`f0'(0)"'
        }
        else {
            local fb `"`fb'`tok`i''"'
            local f0 `"`f0'`tok`i''"'
        }
    }
    tempname est zero cj se
    scalar `est' = `fb'
    scalar `zero' = `f0'
    matrix `C' = J(1, `k', 0)
    forvalues j = 1/`k' {
        local fj
        local f2
        forvalues i = 1/`n' {
            if `isc`i'' == `j' {
                local fj `"`fj'(1)"'
                local f2 `"`f2'(2)"'
            }
            else if `isc`i'' {
                local fj `"`fj'(0)"'
                local f2 `"`f2'(0)"'
            }
            else {
                local fj `"`fj'`tok`i''"'
                local f2 `"`f2'`tok`i''"'
            }
        }
        scalar `cj' = (`fj') - `zero'
        if reldif((`f2') - `zero', 2 * `cj') > 1e-12 {
            display as error "expression is not a linear combination of the coefficients"
            exit 198
        }
        matrix `C'[1, `j'] = `cj'
    }
    * the combination must give back the expression at b and at a vector of ones
    tempname cb
    matrix `cb' = `C' * `b''
    local f1
    forvalues i = 1/`n' {
        if `isc`i'' {
            local f1 `"`f1'(1)"'
        }
        else {
            local f1 `"`f1'`tok`i''"'
        }
    }
    local sumc = 0
    forvalues j = 1/`k' {
        local sumc = `sumc' + `C'[1, `j']
    }
    if reldif(`est', `zero' + `cb'[1,1]) > 1e-10 | reldif((`f1'), `zero' + `sumc') > 1e-10 {
        display as error "expression is not a linear combination of the coefficients"
        exit 198
    }
    matrix `VV' = `C' * `V' * `C''
    scalar `se' = sqrt(`VV'[1,1])
    local df = e(df_r)
    local stat t
    if "`df'" == "" | "`df'" == "." {
        local stat z
    }
    if "`stat'" == "t" {
        local crit = invttail(`df', (1 - `level' / 100) / 2)
        local p = 2 * ttail(`df', abs(`est' / `se'))
    }
    else {
        local crit = invnormal(1 - (1 - `level' / 100) / 2)
        local p = 2 * normal(-abs(`est' / `se'))
    }
    local lb = `est' - `crit' * `se'
    local ub = `est' + `crit' * `se'
    * exponentiated: exp(b), its standard error by the delta method, and the
    * limits carried through exp; the test stays that of b
    local head "     Coef."
    local shown = `est'
    local sshown = `se'
    local lshown = `lb'
    local ushown = `ub'
    if "`eform'" != "" {
        local head "    exp(b)"
        local shown = exp(`est')
        local sshown = exp(`est') * `se'
        local lshown = exp(`lb')
        local ushown = exp(`ub')
    }
    display
    display as text " ( 1)  `expr' = 0"
    display
    display as text "------------------------------------------------------------------------------"
    local dep = abbrev("`e(depvar)'", 12)
    display as text %12s "`dep'" " | `head'   Std. Err.      `stat'    P>|`stat'|     [`level'% Conf. Interval]"
    display as text "-------------+----------------------------------------------------------------"
    display as text %12s "(1)" " |  " as result %9.0g `shown' "  " %9.0g `sshown' " " %8.2f `est' / `se' "   " %5.3f `p' "    " %9.0g `lshown' "   " %9.0g `ushown'
    display as text "------------------------------------------------------------------------------"
    return scalar estimate = `est'
    return scalar se = `se'
    if "`stat'" == "t" {
        return scalar df = `df'
        return scalar t = `est' / `se'
    }
    else {
        return scalar z = `est' / `se'
    }
    return scalar p = `p'
    return scalar lb = `lb'
    return scalar ub = `ub'
    return scalar level = `level'
end
