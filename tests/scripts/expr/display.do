* display: expressions, formats and text side by side.
display 10/3
display %9.2f 10/3 "|"
display %-9.2f 10/3 "|"
display %10s "abc" "|"
display "x = " 2+3
display "a" + "b" " c"
display .a " " . " " 1/3
display %9.2f 1 2
display _pi
display "test completed"
