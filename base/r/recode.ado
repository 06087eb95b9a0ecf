*! version 1.0.0  values changed by rules
program define recode
    version 9.2
    _recode `0'
end
