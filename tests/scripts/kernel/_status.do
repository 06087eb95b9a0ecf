display "before"
error 459
display "never"
