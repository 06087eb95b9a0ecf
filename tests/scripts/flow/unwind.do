* An error two do-files down prints its status at each do level on the way
* up; inside a loop body, which runs as a program, it prints once.
capture noisily do _level1
if _rc != 459 exit 9
capture noisily do _unwindloop
if _rc != 459 exit 9
display "test completed"
