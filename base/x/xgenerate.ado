*! version 1.0.0  a new variable from functions of groups or of the variables of rows
program define xgenerate, byable(onecall)
    version 9.2
    _groups xgen `_byvars' : `0'
end
