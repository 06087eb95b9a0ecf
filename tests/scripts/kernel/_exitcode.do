display "in exitcode"
exit 459
display "not reached"
