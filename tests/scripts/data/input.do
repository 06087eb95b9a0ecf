* input: new and existing variables, strings and numbers, bad values
input str10 name byte age double income
"Ann Lee" 34 52000.5
Bob 28 .
"" .a 0
end
list
input
"Carl" 51 1e5
end
list, noobs
input name age
"Dee" 40
end
list in l
capture noisily input name2 long(a b)
x 1 2
end
assert _rc == 198
describe
capture noisily input x1-x3
1 2 3
4 5
6 7 8 9
end
assert _rc == 198
list x1-x3
capture noisily input str3 s byte k
abc 1
abcd 2
1 300
a 1.5
b q
c -127
end
assert _rc == 198
list s k
input float(p q)
1 2
end
list p q
capture noisily input mpg float mpg
assert _rc == 110
* a refused input leaves no new variable behind
confirm new variable mpg
capture noisily input str1 age
assert _rc == 110
display "test completed"
