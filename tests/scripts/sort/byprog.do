* Programs under by: called once per group (recall) or once for all (onecall).
set obs 9
gen g = ceil(_n/3)
gen x = _n*_n
program define grpsum, byable(recall)
    syntax [varlist] [if] [in]
    marksample touse
    global calls "$calls `=_byindex()'"
    quietly replace s = x if `touse'
    quietly replace s = s + s[_n-1] if `touse' & _n > _byn1()
end
gen s = .
global calls
bysort g: grpsum x
assert "$calls" == " 1 2 3"
assert s[3] == 1 + 4 + 9 & s[6] == 16 + 25 + 36 & s[9] == 49 + 64 + 81
assert s[4] == 16
program define whole, byable(onecall)
    global bv "`_byvars'"
    global brc "`_byrc0'"
    global range "`=_byn1()'-`=_byn2()'"
end
by g, rc0: whole
assert "$bv" == "g"
assert "$brc" == ", rc0"
assert "$range" == "1-9"
* outside a by the functions say so
assert _by() == 0
program define notby
    display "never"
end
capture by g: notby
assert _rc == 190
* the by state is not inherited by a program called from a by-program
program define inner
    global inner = _by()
end
program define outer, byable(recall)
    inner
end
by g: outer
assert $inner == 0
display "test completed"
