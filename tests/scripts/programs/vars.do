* syntax and the markers on variables of the data
input x y str5 s
1 2 "a"
3 4 "b"
5 . ""
end
program define vl
    syntax varlist(min=2 max=3 numeric) [if] [in] [aweight fweight]
    display "varlist=`varlist' in=`in' weight=`weight' exp=`exp'"
end
vl x y
vl x-y in 1/2 [fw=2]
capture noisily vl x
capture noisily vl x y s
capture noisily vl x y x y
program define vn
    syntax newvarlist(max=2)
    display "varlist=`varlist' typlist=`typlist'"
end
vn a b
* the new variables stay after the program
confirm numeric variable a b
drop a b
capture noisily vn x
program define vopt
    syntax [varlist(default=none)] [, By(varname) Keep(varlist string)]
    display "varlist=[`varlist'] by=[`by'] keep=[`keep']"
end
vopt
vopt x, by(y) keep(s)
capture noisily vopt, by(x y)
capture noisily vopt, keep(x)
confirm variable x y
confirm numeric variable x
capture noisily confirm numeric variable s
confirm string variable s
capture noisily confirm new variable x
confirm new variable q
* marksample: the range, then every variable of the list must be there
program define mk2
    syntax varlist [if] [in]
    marksample touse
    list
end
mk2 x y in 2/3
* the temporary marker goes with the program that made it
describe, short
mark m1 in 1/3
capture noisily markout m1 s
markout m1 s, strok
list
mark m2
markout m2 s, strok
markout m2 x y
list
capture noisily markout x y
capture noisily mark m2
display "test completed"
