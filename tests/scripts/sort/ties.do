* The order of ties after a sort is the algorithm's own and reproducible from
* a fresh start: the checksums below come from an independent model of the
* algorithm working on observation slots (tests/reference/sortmodel.py).
set obs 1000
gen id = _n
gen k = mod(_n*_n, 13)
gen str1 s = char(65 + mod(_n*37, 11))
sort k
run _cks
assert $c1 == 250616293 & $c2 == 167084596719
assert id[1] == 520 & id[2] == 702 & id[5] == 585
* two keys, a string first; the generator has moved on since the first sort
sort s k
run _cks
assert $c1 == 250616575 & $c2 == 167114872705
assert id[1] == 286 & id[3] == 858
* a range: only observations 101 to 600 move, and no order is declared
sort k in 101/600
run _cks
assert $c1 == 250554306 & $c2 == 167049846198
assert id[101] == 650 & id[105] == 559
local srt : sortedby
assert "`srt'" == ""
* a reversed list with ties is turned round whole, ties reversed too
drop _all
set obs 1000
gen id = _n
gen k = floor((1000 - _n)/10)
sort k
assert id[1] == 1000 & id[2] == 999 & id[1000] == 1
run _cks
assert $c1 == 167167000 & $c2 == 83667083500
* set sortseed starts the generator again: the first sort repeats exactly
drop _all
set sortseed 1001
set obs 1000
gen id = _n
gen k = mod(_n*_n, 13)
sort k
run _cks
assert $c1 == 250616293 & $c2 == 167084596719
* keys without ties are ordered by a faster route; the generator must still
* move on exactly as the pre-shuffle would have moved it, as the tie order
* of the sorts that follow shows
drop _all
set sortseed 1001
set obs 1000
gen id = _n
gen u = mod(_n*389, 1009)
gen k = mod(_n*_n, 13)
gen v = mod(_n*7, 10)
sort u
run _cks
assert $c1 == 249957071 & $c2 == 166554904607
sort k
run _cks
assert $c1 == 250573732 & $c2 == 167086549560
sort v, stable
run _cks
assert $c1 == 250263440 & $c2 == 166902926760
sort k
run _cks
assert $c1 == 249470413 & $c2 == 166098589023
* the same through the general comparison: a string key and a second key
gen str1 s = char(65 + mod(_n*37, 11))
replace s = char(65 + mod(id*37, 11))
sort s u
run _cks
assert $c1 == 250656373 & $c2 == 167229695435
sort k
run _cks
assert $c1 == 250743002 & $c2 == 167395031512
* two numeric keys with ties and missing values in a byte key, then a range
drop _all
set sortseed 1001
set obs 3000
gen id = _n
gen byte a = mod(_n*_n, 7)
replace a = . if mod(_n, 70) == 0
replace a = .a if mod(_n, 50) == 0
gen b = mod(_n*13, 5)
sort a b
run _cks
assert $c1 == 6755165439 & $c2 == 13514051422975
sort b in 1001/2500
run _cks
assert $c1 == 6752409875 & $c2 == 13507136153815
display "test completed"
