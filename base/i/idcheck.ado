*! version 1.0.0  checks that variables identify the observations uniquely
program define idcheck
    version 9.2
    _groups idcheck : `0'
end
