*! version 1.0.0  sorts in ascending or descending order of each key
program define dsort
    version 9.2
    _groups dsort : `0'
end
