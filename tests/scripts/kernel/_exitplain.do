exit
display "not reached"
