* Defining, running, listing and dropping programs
program define show
    display `"0=[`0'] 1=[`1'] 2=[`2'] 3=[`3']"'
    macro shift
    display `"after shift: *=[`*'] 1=[`1']"'
end
show alpha "b c" d
show
* the text is stored as typed: macros are expanded when a line runs
global x "at definition"
program define later
    display     "x is $x"     // blanks collapse outside strings
    display "kept   inside"
end
later
global x "at run"
later
program list later
* a second definition is refused
capture noisily program define later
program drop later
capture noisily later
capture noisily program drop later
capture noisily program drop
capture noisily program drop _all extra
* options of program define
program define rc1, rclass byable(recall, noheader) sortpreserve properties(one two)
    display "rc1 ran"
end
rc1
capture noisily program define bad1, byable(sometimes)
capture noisily program define bad2, plugin
capture noisily program define bad3, nonsense
* a program that drops itself is left in place
program define selfdrop
    program drop selfdrop
    display "still here"
end
selfdrop
selfdrop
* a program that calls another, passing its arguments on
program define outer
    inner `0' extra
end
program define inner
    display "inner got: `0'"
end
outer a b
* version
version
program define vershow
    version 7
    display "inside: a\\b"
    version
end
vershow
version
display "outside: a\\b"
program define bs
    display "bs: a\\b"
end
bs
version 7: bs
version 8: version
version
capture noisily version 9.3
capture noisily version 0.5
capture noisily version abc
version 6.5
version
version 9.2
* a program without end at the end of the file
capture noisily do _noend.do
program dir
program drop _all
program dir
display "test completed"
