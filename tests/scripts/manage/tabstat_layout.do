* The layouts of tabstat: statistics in rows or columns, with and without
* groups, long variable names, a format of the user's.
drop _all
input g price mpg weight_in_pounds
1 4099 22 2930
1 4749 17 3350
1 3799 22 2640
2 4816 20 3250
2 7827 15 4080
2 5788 18 3670
3 4453 26 2230
3 5189 20 3280
3 10372 16 3880
3 . 19 3400
end
label define origin 1 "domestic" 2 "foreign" 3 "other"
label values g origin
tabstat price mpg
tabstat price mpg weight_in_pounds, statistics(mean sd n p50 min max)
tabstat price mpg, statistics(mean sd n) columns(statistics)
tabstat price mpg, by(g)
tabstat price mpg, by(g) statistics(mean n) format(%8.2f)
tabstat price, by(g) statistics(mean p25 p75) columns(statistics) nototal
* a narrow line: the variables go out in panels that fit it
set linesize 40
tabstat price mpg weight_in_pounds, by(g) statistics(mean n)
set linesize 80
display "test completed"
