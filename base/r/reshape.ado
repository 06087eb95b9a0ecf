*! version 1.0.0  the data between the long and the wide layouts
program define reshape
    version 9.2
    _reshape `0'
end
