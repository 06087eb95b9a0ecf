* The functions of the system's Lumo library load by themselves; values
* worked by hand.
lumo which range()
lumo: if (range(1, 2, 0.25) != (1 \ 1.25 \ 1.5 \ 1.75 \ 2)) exit(9)
lumo: if (range(5, 1, 2) != (5 \ 3 \ 1)) exit(9)
lumo: if (range(5, 1, -2) != (5 \ 3 \ 1)) exit(9)
lumo: if (range(3, 3, 0) != 3) exit(9)
lumo: if (rows(range(0, 1, 0.1)) != 11) exit(9)
lumo: if (rangen(0, 1, 5) != (0 \ .25 \ .5 \ .75 \ 1)) exit(9)
lumo: if (rangen(2, -2, 3) != (2 \ 0 \ -2)) exit(9)
lumo: if (rows(rangen(0, 1, 0)) != 0) exit(9)
lumo: if (runningsum((1, ., 2.5, -4)) != (1, 1, 3.5, -.5)) exit(9)
lumo: if (runningsum((2 \ 3)) != (2 \ 5)) exit(9)
* bad arguments end in _error(); until that built-in is linked the code
* is 3996 (not yet available)
cap noi lumo: range(1, 2, 0)
if _rc != 3300 & _rc != 3996 exit 9
cap noi lumo: rangen(1, ., 2)
if _rc != 3351 & _rc != 3996 exit 9
display "test completed"
