* collapse of string variables: first, last, firstnm, lastnm, min and max,
* against pandas on the same data (empty strings left out for the nm, min
* and max statistics; min and max by byte order, capitals first):
*   g  first  last   firstnm lastnm min    max    sum(x)
*   1  pear   apple  pear    apple  apple  pear   6
*   2  ""     ""     ""      ""     ""     ""     9
*   3  fig    Zebra  fig     Zebra  Zebra  fig    13
drop _all
input g str8 s x
1 "pear" 1
1 "" 2
1 "apple" 3
2 "" 4
2 "" 5
3 "fig" 6
3 "Zebra" 7
end
preserve
collapse (first) f=s (last) l=s (firstnm) fn=s (lastnm) ln=s (min) mi=s (max) ma=s (sum) x, by(g)
assert _N == 3
assert f == "pear" in 1
assert f == "" in 2
assert f == "fig" in 3
assert l == "apple" in 1
assert l == "" in 2
assert l == "Zebra" in 3
assert fn == "pear" in 1
assert fn == "" in 2
assert fn == "fig" in 3
assert ln == "apple" in 1
assert ln == "" in 2
assert ln == "Zebra" in 3
assert mi == "apple" in 1
assert mi == "" in 2
assert mi == "Zebra" in 3
assert ma == "pear" in 1
assert ma == "" in 2
assert ma == "fig" in 3
assert x[1] == 6 & x[2] == 9 & x[3] == 13
* the new string variables are as wide as their longest value
confirm string variable f l fn ln mi ma
list, noobs
restore
* cw leaves out the observations with an empty string: group 2 goes,
* group 1 keeps pear and apple (x 1 + 3)
preserve
collapse (first) s (sum) x, by(g) cw
assert _N == 2
assert s == "pear" in 1
assert x == 4 in 1
assert s == "fig" in 2
restore
* a numeric statistic of a string variable fails, and the data stay
capture noisily collapse (mean) s, by(g)
assert _rc == 109
assert _N == 7
display "test completed"
