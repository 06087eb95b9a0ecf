*! version 1.0.0  the distinct values of a variable, into a local macro on request
program define levels
    version 9.2
    _groups levels : `0'
end
