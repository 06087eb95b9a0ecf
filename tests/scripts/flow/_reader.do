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