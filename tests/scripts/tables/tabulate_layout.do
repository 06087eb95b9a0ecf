* The layouts of tabulate: one-way (labels, missing, sort, summarize), two-way
* with percentages and statistics, a string variable, and a wide table.
set obs 30
gen n = _n
gen rep = mod(n * 7, 5) + 1
replace rep = . if n == 4 | n == 22
label define replab 1 "poor" 2 "fair" 3 "average" 4 "good" 5 "excellent"
label values rep replab
label variable rep "Repair record"
gen foreign = mod(n, 3) == 0
gen double price = 1000 + n * 37.5 - mod(n, 4) * 110
gen str8 make = "m" + string(mod(n, 4))
tabulate rep
tabulate rep, missing nolabel
tabulate rep, sort
tabulate rep, summarize(price)
tabulate make
tabulate rep foreign
tabulate rep foreign, row column cell chi2 lrchi2 exact V gamma taub
tabulate foreign rep, nofreq row
gen wide = mod(n, 11)
tabulate foreign wide
by foreign, sort: tabulate rep, nolabel
display "test completed"
