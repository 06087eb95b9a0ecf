*! version 1.0.0  the data replaced by the frequencies of combinations of values
program define freqdata
    version 9.2
    _groups freqdata : `0'
end
