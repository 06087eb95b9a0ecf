program define noend
    display "never stored"
