program define notnodef
    display "never run"
end
