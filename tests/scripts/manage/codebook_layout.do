* The per-variable description: a labelled categorical variable, a
* continuous one with percentiles, a text variable with its table and one
* with examples, and inspect.
drop _all
set obs 24
gen g = mod(_n, 3) + 1
label define grp 1 "north" 2 "south" 3 "west"
label values g grp
label variable g "region"
gen double price = 1000 + _n * 125
replace price = . in 5
label variable price "price in dollars"
gen str6 kind = "a"
replace kind = "bb" if mod(_n, 4) == 0
replace kind = "" in 7
gen str8 code = "k" + string(_n * 7)
codebook
codebook price, tabulate(30)
inspect g price
display "test completed"
