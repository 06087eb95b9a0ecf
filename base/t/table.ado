*! version 1.0.0  statistics in the cells of a table of up to three variables
program define table
    version 9.2
    _table `0'
end
