* syntax: templates, options of every kind, and the messages on bad input
program define opts
    syntax [, Detail noCONStant Title(string) Reps(integer 50) Tol(real 1e-3) Nums(numlist ascending integer) Level(cilevel) GENerate(name) Pass(passthru) *]
    display "detail=`detail' constant=`constant' title=`title' reps=`reps' tol=`tol'"
    display "nums=`nums' level=`level' generate=`generate' pass=`pass' options=`options'"
end
opts
opts, det nocons ti(hello world) r(7) tol(0.25) nums(1/3 6(2)10) l(90) gen(newv) pass(a b) extra(1) more
capture noisily opts, constant
capture noisily opts, reps(1.5)
capture noisily opts, nums(3/1)
capture noisily opts, nums(1.5)
capture noisily opts, level(5)
capture noisily opts, gen(1bad)
program define req
    syntax , Must(string) [Opt]
    display "must=`must' opt=`opt'"
end
capture noisily req
capture noisily req, opt
req, must(x)
program define anyth
    syntax anything(name=stuff) [if] [in] [using/] [aweight fweight] [, Ok]
    display "stuff=`stuff' if=`if' in=`in' using=`using' weight=`weight' exp=`exp' ok=`ok'"
end
anyth a b c using "my file.txt", ok
anyth x y [fw=3]
anyth x y if 1
capture noisily anyth
program define exps
    syntax =/exp [if]
    display "exp=`exp' if=`if'"
end
exps = 42
capture noisily exps
program define vl
    syntax varlist(min=2)
    display "varlist=`varlist'"
end
capture noisily vl
capture noisily vl a b
program define bad
    syntax varlist junk
end
capture noisily bad
program define bad2
    syntax [if] [if]
end
capture noisily bad2
program define nm
    syntax namelist(min=2 max=3)
    display "namelist=`namelist'"
end
nm a b
capture noisily nm a
capture noisily nm a b c d
capture noisily nm a 1b
program define ifreq
    syntax if
    display "`if'"
end
capture noisily ifreq
ifreq if 1
* options left out erase their macros, so nothing stale survives
program define stale
    local detail "stale"
    local title "stale"
    syntax [, Detail Title(string)]
    display "detail=[`detail'] title=[`title']"
end
stale
* in with a range, using with the keyword kept, =exp with its sign
program define kept
    syntax [in] [using] [=exp]
    display `"in=[`in'] using=[`using'] exp=[`exp']"'
end
kept
capture noisily kept in 1/2
kept using "a b.txt" = 7
program define tsopt
    syntax [, Vars(varlist numeric)]
    display "vars=[`vars']"
end
tsopt
capture noisily tsopt, vars(nosuch)
program define oldparse
    local varlist "opt"
    local options "Detail"
    parse "`*'"
    display "detail=[`detail']"
end
oldparse , detail
program define splitter
    parse "`*'", parse(",")
    display "1=[`1'] 2=[`2'] 3=[`3']"
end
splitter a b,c
display "test completed"
