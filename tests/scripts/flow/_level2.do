display "level 2"
error 459
display "not reached in level 2"
