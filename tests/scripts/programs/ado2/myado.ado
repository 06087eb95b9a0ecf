*! version 0.9.0  an older copy further along the path
program define myado
    display "the older myado"
end
