display "one"
error 601
display "two"
error 459
