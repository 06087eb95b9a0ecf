* Data of every storage type, extended missing values, labels and
* characteristics, reshaped by sort, drop, order, compress and promotion, then
* saved whole and read back in part. colmix_ref.dta and colmix_ref_sub.dta are
* what a build that kept observations as records wrote from this file.
args out
drop _all
set obs 600
generate long id = _n
generate byte b = mod(_n * 7, 230) - 127
generate int i = mod(_n * 977, 65000) - 32000
generate long l = (_n - 300) * 7000001
generate float f = (_n - 301) / 7
generate double d = (_n * 1.25 - 200) ^ 3 / 11
generate str5 s = substr("abcdefghij", mod(_n, 7) + 1, mod(_n, 5) + 1)
generate str1 c = substr("xyz", mod(_n, 3) + 1, 1)
generate str20 t = "row " + string(_n)
replace b = .a if mod(_n, 17) == 0
replace i = .z if mod(_n, 19) == 0
replace l = .b if mod(_n, 23) == 0
replace f = .c if mod(_n, 29) == 0
replace d = .q if mod(_n, 31) == 0
replace d = . if mod(_n, 37) == 0
label define yn 0 "no" 1 "yes" 2 "maybe"
generate byte k = mod(_n, 3)
label values k yn
label variable d "a double"
char d[note] "cubic"
char _dta[src] "made by hand"
sort c s id
drop if mod(id, 13) == 0
generate w = mod(id, 5) * 1000
replace w = 40000 in 3
replace k = 300 in 5
order t
order t id b k
drop l
compress
generate str3 u = "u" + string(mod(_n, 100))
replace u = "longer string" in 7
sort d, stable
save `out', replace
use t id k d using `out' if mod(id, 2) == 1 in 10/400, clear
save `out'_sub, replace
