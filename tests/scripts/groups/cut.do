* xgenerate cut(): interval ends and codes of at() and group(#), worked by
* hand; where the intervals fall between data values, the codes equal those
* of pandas cut(..., right=False) and qcut (which close intervals on the
* right and interpolate quantiles), noted as such.
drop _all
set obs 20
* a permutation of 1..20
generate x = mod(_n * 7, 20) + 1
* quartiles: positions 5, 10, 15 are whole: cuts 1, 5.5, 10.5, 15.5, 20
xgenerate q = cut(x), group(4)
xgenerate qi = cut(x), group(4) icodes
assert q == 1 if x <= 5
assert q == 5.5 if x > 5 & x <= 10
assert q == 10.5 if x > 10 & x <= 15
assert q == 15.5 if x > 15
assert qi == floor((x - 1) / 5)
* pandas qcut(x, 4, labels=False), in observation order
local pd 1 2 0 1 3 0 1 3 0 2 3 0 2 3 1 2 3 1 2 0
forvalues i = 1/20 {
    local c : word `i' of `pd'
    assert qi[`i'] == `c'
}
* thirds: positions 20/3 and 40/3 are not whole: the next order statistics,
* 7 and 14, so 1-6, 7-13, 14-20 (the largest value in the last group)
xgenerate t = cut(x), group(3) icodes
assert t == 0 if x <= 6
assert t == 1 if x >= 7 & x <= 13
assert t == 2 if x >= 14
assert t[17] == 2 & x[17] == 20
* one group: everything in it
xgenerate one = cut(x), group(1) icodes
assert one == 0
* labels on the codes
xgenerate lab = cut(x), group(4) label
assert lab == qi
local l0 : label lab 0
local l3 : label lab 3
assert "`l0'" == "[1, 5.5)"
assert "`l3'" == "[15.5, 20]"
* with if: quantiles of the observations taken, the others missing
xgenerate h = cut(x) if x <= 10, group(2) icodes
assert h == 0 if x <= 5
assert h == 1 if x > 5 & x <= 10
assert missing(h) if x > 10

* at(): [0, 5) and [5, 10); 10 and above missing, as pandas cut(x,
* [0, 5, 10], right=False) gives NaN there
drop _all
set obs 13
generate y = _n - 1
xgenerate a = cut(y), at(10 0 5)
xgenerate ai = cut(y), at(0 5 10) icodes
assert a == 0 & ai == 0 if y < 5
assert a == 5 & ai == 1 if y >= 5 & y < 10
assert missing(a) & missing(ai) if y >= 10
xgenerate neg = cut(y - 3), at(0(2)6)
assert missing(neg) if y < 3
assert neg == 0 if y == 3 | y == 4
assert neg == 4 if y == 7 | y == 8
assert missing(neg) if y >= 9
xgenerate al = cut(y), at(0 5 10) label
local l1 : label al 1
assert "`l1'" == "[5, 10)"

* decimals, compared with pandas qcut(z, 3): codes 1 0 0 2 0 2 1 2 2 0 1 1;
* the cuts here are 2.6 and 5.8, those of pandas 2.8 and 5.7, both
* between the same neighbours
drop _all
input double z
3.2
-1
0.5
7.75
2
9.9
4.4
6.1
8.0
1.25
5.5
3.3
.
end
xgenerate double zc = cut(z), group(3)
xgenerate zi = cut(z), group(3) icodes
local pd 1 0 0 2 0 2 1 2 2 0 1 1
forvalues i = 1/12 {
    local c : word `i' of `pd'
    assert zi[`i'] == `c'
}
assert missing(zi[13]) & missing(zc[13])
assert zc == -1 if zi == 0
assert reldif(zc, 2.6) < 1e-15 if zi == 1
assert reldif(zc, 5.8) < 1e-15 if zi == 2

* ties stay together; repeated points merge into fewer groups
drop _all
input w
1
1
1
1
2
2
3
3
end
xgenerate w2 = cut(w), group(2) icodes
assert w2 == (w > 1)
* quarters: points 1, 1, 1.5, 2.5, 3 merge to 1, 1.5, 2.5, 3: three groups
xgenerate w4 = cut(w), group(4) icodes
assert w4 == w - 1

* errors leave the data as they were
capture xgenerate e = cut(w)
assert _rc == 198
capture xgenerate e = cut(w), at(1 2) group(2)
assert _rc == 198
capture xgenerate e = cut(w), group(0)
assert _rc == 198
capture xgenerate e = cut(w), group(2) by(w)
assert _rc == 190
label define taken 1 "one"
capture xgenerate taken = cut(w), group(2) label
assert _rc == 110
capture confirm variable e taken
assert _rc == 111
display "test completed"
