*! version 1.0.0  numeric variables written as text
program define tostring
    version 9.2
    _tostring `0'
end
