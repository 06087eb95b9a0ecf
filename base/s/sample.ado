*! version 1.0.0  keeps a random sample of the observations
program define sample, byable(onecall)
    version 9.2
    _groups sample `_byvars' : `0'
end
