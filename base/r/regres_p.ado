*! version 1.0.0  predict after regress: fitted values and the residual statistics
program define regres_p
    version 9.2
    _predict `0'
end
