program define twin
    check from twin
end
program define check
    display "twin's own check: `0'"
end
