* kvsig: one text that changes with anything about the data in memory:
* size, names, types, formats, labels, sort order, the changed flag and
* every value. Left in the global macro DATASIG.
capture program drop kvsig
program define kvsig
    local s "N=`=c(N)' k=`=c(k)' changed=`=c(changed)'"
    local srt : sortedby
    local s `"`s' sorted=`srt'"'
    if c(k) > 0 {
        foreach v of varlist _all {
            local t : type `v'
            local f : format `v'
            local vl : value label `v'
            local l : variable label `v'
            local s `"`s' | `v' `t' `f' `vl' `l' :"'
            forvalues i = 1/`=c(N)' {
                local s `"`s' `=`v'[`i']'"'
            }
        }
    }
    global DATASIG `"`s'"'
end
