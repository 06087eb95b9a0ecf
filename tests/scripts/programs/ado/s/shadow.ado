program define shadow
    check from shadow
end
program define check
    display "shadow's own check: `0'"
end
