*! version 1.0.0  the data replaced by statistics of groups
program define collapse
    version 9.2
    _groups collapse : `0'
end
