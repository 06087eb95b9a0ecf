* nostop goes on after each error; the file's code is its last line's.
capture noisily do _errors, nostop
display "test completed"
