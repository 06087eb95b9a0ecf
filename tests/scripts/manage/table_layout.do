* The layouts of table and tabdisp with one, two and three classifying
* variables; the values checked by hand in the comments.
drop _all
input a b c x
1 1 1 10
1 2 1 20
2 1 1 30
2 2 1 40
1 1 2 15
2 2 2 45
1 1 1 12
end
label define al 1 "low" 2 "high"
label values a al
* freq by a: 4 and 3
table a
* a x b: (1,1) 10 15 12: n 3, mean 12.33333, sd 2.516611; (2,2) 40 45: sd 3.535534
table a b, contents(freq mean x sd x)
* sums by a, b and c: (1,1,1) 22, (1,1,2) 15, (2,2,2) 45
table a b c, contents(sum x)
* with totals: low 3 1 | 4, high 1 2 | 3, Total 4 3 | 7
table a b, row col
capture noisily tabdisp a b, cellvar(x)
assert _rc == 459
keep in 1/4
tabdisp a b, cellvar(x)
display "test completed"
