display "last line without a line feed is lost"
display "x"