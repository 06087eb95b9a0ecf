*! version 1.0.0  names of variables by type, format or label
program define ds
    version 9.2
    _ds `0'
end
