*! version 1.0.0  reports, lists, tags or drops duplicate observations
program define duplicates
    version 9.2
    _groups duplicates : `0'
end
