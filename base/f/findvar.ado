*! version 1.0.0  finds variables whose name or label holds a word
program define findvar, rclass
    version 9.2
    if `"`0'"' == "" {
        display as error "nothing to look for"
        exit 198
    }
    local found
    if c(k) > 0 {
        foreach v of varlist _all {
            local lab : variable label `v'
            local hay = lower(`"`v' `lab'"')
            local hit 0
            foreach w of local 0 {
                if strpos(`"`hay'"', lower(`"`w'"')) local hit 1
            }
            if `hit' local found `found' `v'
        }
    }
    foreach v of local found {
        local lab : variable label `v'
        if `"`lab'"' == "" display as result "`v'"
        else display as result %-16s "`v'" as text `" `lab'"'
    }
    if "`found'" == "" display as text "(no variable found)"
    return local varlist `found'
end
