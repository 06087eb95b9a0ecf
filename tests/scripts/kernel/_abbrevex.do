ex
display "not reached: ex is exit"
