*! version 1.0.0  text variables read as numbers
program define destring
    version 9.2
    _destring `0'
end
