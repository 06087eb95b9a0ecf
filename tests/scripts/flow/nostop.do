* nostop goes on after each error; the file's code is its last line's.
do _errors, nostop
display "not reached"
