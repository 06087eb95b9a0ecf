*! version 1.0.0  a table of chosen statistics, by groups
program define tabstat
    version 9.2
    _tabstat `0'
end
