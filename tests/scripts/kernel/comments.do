* The do-file reader: comments, continuation lines and the delimiter.
display "a" /* a comment
spanning lines */ "b"
display "http://not.a.comment"
display "c" // a line comment
display "d" ///
    "e"
// a line that is only a comment
#nosuch hash command
#delimit ;
display "f"
  "g" ;
display "h"; display "i";
#delimit cr
display "tab	inside"
do _nolf
display "test completed"
