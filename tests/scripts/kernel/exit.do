* exit leaves the do-file; exit # leaves it with that code.
display "one"
capture noisily do _exitcode.do
display "back"
do _exitplain
display "test completed"
