*! version 1.0.0  a description of each variable
program define codebook
    version 9.2
    _codebook `0'
end
