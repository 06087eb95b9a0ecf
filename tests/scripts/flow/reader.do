* The reader: nested comments, // inside strings, a string open across
* lines under #delimit ;, carriage returns, and a last line ending in ;
do _reader
display "test completed"
