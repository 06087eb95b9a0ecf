*! version 1.0.0  predict after an instrumental-variables regress
program define regriv_p
    version 9.2
    _predict `0'
end
