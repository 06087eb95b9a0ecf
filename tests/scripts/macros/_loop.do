display "$loop"
display "not reached"
