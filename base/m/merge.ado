*! version 1.0.0  joins the data in memory with one or more dataset files
program define merge, rclass
    version 9.2
    if c(k) == 0 {
        error 3
    }
    * split the line: the varlist, the files behind using, the options
    local head
    local files
    gettoken w rest : 0, parse(" ,")
    while `"`w'"' != "using" & `"`w'"' != "" & `"`w'"' != "," {
        local head `head' `w'
        gettoken w rest : rest, parse(" ,")
    }
    if `"`w'"' != "using" {
        display as error "using required"
        exit 100
    }
    gettoken w rest : rest, parse(" ,")
    while `"`w'"' != "," & `"`w'"' != "" {
        local files `"`files' `"`w'"'"'
        gettoken w rest : rest, parse(" ,")
    }
    if `"`files'"' == "" {
        display as error "using required"
        exit 100
    }
    local 0 `"`head' , `rest'"'
    syntax [varlist(default=none)] [, MATCH(string) NOLabel NONOTES UPDATE REPLACE /*
        */ NOKEEP _merge(name) KEEP(string) UNIQUE UNIQMASTER UNIQUSING]
    if "`_merge'" == "" local _merge _merge
    if `"`keep'"' != "" local keepopt `"keep(`keep')"'
    local sortusing
    if `"`match'"' != "" {
        local match : subinstr local match " " "", all
        local match = lower("`match'")
        if "`match'" != "1:1" & "`match'" != "m:1" & "`match'" != "1:m" {
            display as error "match() must be 1:1, m:1 or 1:m"
            exit 198
        }
        if "`varlist'" == "" {
            display as error "match() requires the key variables"
            exit 100
        }
        * what the user asked for already is not asked twice
        if "`match'" != "m:1" & "`uniqmaster'" == "" local uniq uniqmaster
        if "`match'" != "1:m" & "`uniqusing'" == "" local uniq `uniq' uniqusing
        sort `varlist', stable
        local sortusing sortusing
    }
    _merge `varlist' using `files', `nolabel' `nonotes' `update' `replace' `nokeep' /*
        */ _merge(`_merge') `keepopt' `unique' `uniqmaster' `uniqusing' `uniq' `sortusing'
    if `"`match'"' == "" exit
    * how many observations came from where
    display
    display as text "    match `match' on `varlist'"
    display as text "    ----------------------------------------"
    local words `""master only" "using only" "matched" "matched, missing filled" "matched, conflict""'
    local total 0
    * _merge leaves the counts of each code in r()
    forvalues k = 1/5 {
        local n`k' = r(N_`k')
    }
    forvalues k = 1/5 {
        local total = `total' + `n`k''
        return scalar N_`k' = `n`k''
        if `k' <= 3 | "`update'" != "" {
            local w : word `k' of `words'
            display as text "    " %-26s "`w'" as result %12.0f `n`k'' as text "  (`_merge'==`k')"
        }
    }
    display as text "    ----------------------------------------"
    display as text "    " %-26s "total" as result %12.0f `total'
    return scalar N = `total'
end
