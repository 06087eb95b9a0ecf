* recode, destring, tostring, ds, order and list options, each worked by hand.
drop _all
input x y
1 5
2 .
3 7
4 .a
5 9
-1 10
end
recode x (1 2 = 10 "low") (3/4 = 20 "mid") (min/0 = .) (else = 30), generate(rx)
assert rx == 10 if x == 1 | x == 2
assert rx == 20 if x == 3 | x == 4
assert rx == 30 if x == 5
assert rx == . if x == -1
assert "`: value label rx'" == "rx"
assert "`: label rx 10'" == "low"
recode y (missing = 0) (9/max = 1)
assert y == 0 if _n == 2 | _n == 4
assert y[5] == 1 & y[6] == 1 & y[1] == 5
* in place with if: other observations keep their values
recode x (5 = 50) if _n > 3
assert x[5] == 50 & x[1] == 1
* destring and tostring
drop _all
input str10 a str6 b
"1,234" "5%"
"-2.5" "12.5%"
"" "100%"
".a" "0%"
end
destring a, generate(na) ignore(",")
assert na[1] == 1234 & na[2] == -2.5 & na[3] == . & na[4] == .a
destring b, replace percent
assert reldif(b[1], .05) < 1e-15 & reldif(b[2], .125) < 1e-15 & b[3] == 1 & b[4] == 0
confirm numeric variable b
tostring na, generate(sa)
assert sa[1] == "1234" & sa[2] == "-2.5" & sa[3] == "." & sa[4] == ".a"
gen c = "x" in 1
destring c, replace force
assert c == .
* ds by type, format and labels
drop _all
input byte k int m str3 t double d
1 2 "a" 3
end
label variable m "count of things"
format d %10.3f
ds, has(type string)
assert "`r(varlist)'" == "t"
ds, not(type byte int)
assert "`r(varlist)'" == "t d"
ds, has(format %10*)
assert "`r(varlist)'" == "d"
ds, has(varlabel *thing*)
assert "`r(varlist)'" == "m"
* order
order d, first
order t, before(k)
describe, varlist
assert "`r(varlist)'" == "d t k m"
order _all, alphabetic
describe, varlist
assert "`r(varlist)'" == "d k m t"
order d, last
describe, varlist
assert "`r(varlist)'" == "k m t d"
* xpose with names: variables become observations
drop _all
input a b
1 2
3 4
5 6
end
xpose, clear varname
assert _N == 2 & c(k) == 4
assert v1[1] == 1 & v2[1] == 3 & v3[1] == 5 & v1[2] == 2 & v3[2] == 6
assert _varname[1] == "a" & _varname[2] == "b"
* inspect counts
drop _all
input z
-2
-1.5
0
0
3
.
7.25
end
inspect z
assert r(N) == 6 & r(N_neg) == 2 & r(N_0) == 2 & r(N_pos) == 2
assert r(N_negint) == 1 & r(N_posint) == 1 & r(N_miss) == 1 & r(N_unique) == 5
* reshape with a text j: wide and back, the missing combination filled in
drop _all
input str3 school str5 subj score rank
"a" "math" 10 1
"a" "read" 12 2
"b" "math" 9 1
"b" "read" 8 3
"c" "math" 7 2
end
reshape wide score rank, i(school) j(subj)
assert _N == 3 & c(k) == 5
assert scoremath[1] == 10 & scoreread[1] == 12 & rankread[2] == 3 & scoreread[3] == .
reshape long
assert _N == 6 & c(k) == 4
assert school[6] == "c" & subj[6] == "read" & score[6] == . & score[4] == 8
capture noisily reshape wide score, i(school) j(subj)
assert _rc == 9 & _N == 6
display "test completed"
