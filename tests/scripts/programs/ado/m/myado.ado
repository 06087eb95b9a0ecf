*! version 1.0.0  a test command found in a first-letter subdirectory
*! second version line
program define myado
    display "myado says `0'"
end
