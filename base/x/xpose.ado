*! version 1.0.0  the data transposed
program define xpose
    version 9.2
    _xpose `0'
end
