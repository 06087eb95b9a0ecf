*! version 1.0.0  the older word for the robust variance from score variables
program define huber
    version 9.2
    _huber `0'
end
