*! version 1.0.0  adds the absent combinations of the values of variables
program define fillall
    version 9.2
    _groups fillall : `0'
end
