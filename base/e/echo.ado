*! version 1.0.0  shows its arguments as typed, after macro expansion
program define echo
    version 9.2
    display `"`0'"'
end
