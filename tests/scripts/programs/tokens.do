* tokenize, gettoken, args, numlist, confirm and unabcmd
program define tk
    tokenize `"`0'"', parse(",=")
    display "1=[`1'] 2=[`2'] 3=[`3'] 4=[`4'] 5=[`5'] 6=[`6']"
end
tk a=b, "c d" e
tokenize x y z
display "`1' `2' `3'"
tokenize
display "[`1'][`2']"
capture noisily tokenize "abc
local s `"first (a b) "q r" rest"'
gettoken w s : s
display `"w=[`w'] s=[`s']"'
gettoken w s : s, match(m)
display `"w=[`w'] s=[`s'] m=[`m']"'
gettoken w s : s, qed(q)
display "w=[`w'] s=[`s'] q=[`q']"
gettoken w : s, qed(q)
display "w=[`w'] q=[`q']"
local t "a,b c"
gettoken (global) g t : t, parse(",")
display "g=[$g] t=[`t']"
gettoken w t : t, parse(",")
display "w=[`w'] t=[`t']"
program define ar
    args first second third
    display "first=`first' second=`second' third=[`third']"
end
ar 1 "two words"
program define gt
    gettoken a 0 : 0
    display "a=`a' rest=`0'"
end
gt p q r
program define shownl
    syntax , L(numlist missingokay)
    display "`l'"
end
shownl, l(1/3 6(2)10)
shownl, l(1 3 : 9 10 to 14)
shownl, l(0(.1).3 -1/-3 5[-2]1)
shownl, l(2.5/4 1 . .a)
numlist "1/3 6(2)10"
capture noisily numlist "3/1", ascending
capture noisily numlist "1 2 3", min(4)
capture noisily numlist "1 2 3", max(2)
capture noisily numlist "1/4", range(>=2)
capture noisily numlist "1.5 2", integer
capture noisily numlist "1 ."
numlist "1 .", missingokay
capture noisily numlist "/3"
capture noisily numlist "1(2]5"
confirm existence a
capture noisily confirm existence
capture noisily confirm number abc
confirm number 3.5
capture noisily confirm integer number 3.5
capture noisily confirm names 1x
confirm names a b
capture noisily confirm names
capture noisily confirm file nosuchfile.txt
confirm new file newfile.txt
capture noisily confirm format %9.x
confirm format %9.2f
capture noisily confirm bogus thing
capture noisily confirm matrix
capture noisily confirm scalar s1
capture noisily unabcmd 1x
unabcmd su
numlist "4 1 3", sort
capture noisily numlist "1(0)5"
capture noisily numlist "1/3 2", ascending
capture noisily numlist "3 2 2", descending
display "test completed"
