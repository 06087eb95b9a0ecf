* Temporary variables, names and files belong to the program or do-file that
* made them: they are gone when it ends, whether it ends well or by an error.
drop _all
set obs 3
generate x = _n
program define mk
    tempvar t
    tempname s m
    tempfile f
    global T "`t'"
    global S "`s'"
    global F "`f'"
    generate `t' = 2 * x
    scalar `s' = 42
    matrix `m' = (1, 2)
    save "`f'"
    confirm file "`f'"
    confirm variable `t'
    assert `t' == 2 * x
    assert `s' == 42
    if "`1'" == "fail" error 459
end
* temporary variable names: two underscores and six base-36 digits
program define shapes
    tempvar a
    tempname b
    tempfile c
    assert regexm("`a'", "^__[0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z]$")
    assert regexm("`b'", "^__[0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z][0-9A-Z]$")
    assert "`a'" != "`b'"
    * a file name: the directory, S, t, the process number in five digits, a
    * dot and six base-34 digits
    assert regexm("`c'", "/St[0-9][0-9][0-9][0-9][0-9][.][0-9a-x][0-9a-x][0-9a-x][0-9a-x][0-9a-x][0-9a-x]$")
end
shapes
* a clean end
mk
capture confirm variable $T
assert _rc == 111
capture confirm file "$F"
assert _rc == 601
capture assert $S == 42
assert _rc != 0
assert c(k) == 1
* an error in the middle of the program
capture mk fail
assert _rc == 459
capture confirm variable $T
assert _rc == 111
capture confirm file "$F"
assert _rc == 601
capture assert $S == 42
assert _rc != 0
assert c(k) == 1
* a do-file is a frame too, its locals and temporaries gone at its end
do _tmpsub
capture confirm variable $T
assert _rc == 111
capture confirm file "$F"
assert _rc == 601
assert c(k) == 1
display "test completed"
