* The reader: nested comments, // inside strings, a string open across
* lines under #delimit ;, carriage returns, and a last line ending in ;
display "a" /* outer /* inner */ still comment */ "b"
display "c // not a comment"
#delimit ;
display "d
 e" ;
display
  "f" /* ; */ "g";
#delimit cr
display "h" // comment
display "tab	here" ///
  "i"
#delimit ;
display "last";