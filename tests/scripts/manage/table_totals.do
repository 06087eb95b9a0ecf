* table with row, column and supercolumn totals, and the alignment options;
* every value checked against pandas (groupby over the same data, each total
* taken over all the rows, columns or supercolumns; blank = no observations):
*   a b  freq mean               sd                 sum n
*   1 1  3    12.333333333333334 2.516611478423583  37  3
*   1 2  1    20                 .                  20  1
*   1 T  4    14.25              4.349329450233296  57  4
*   2 1  2    30                 .                  30  1
*   2 2  2    42.5               3.5355339059327378 85  2
*   2 T  4    38.333333333333336 7.637626158259733  115 3
*   3 1  (blank)
*   3 2  1    7                  .                  7   1
*   3 T  1    7                  .                  7   1
*   T 1  5    16.75              9.069178573608527  67  4
*   T 2  4    28                 17.682382946499793 112 4
*   T T  9    22.375             14.332156651589958 179 8
drop _all
input a b c x
1 1 1 10
1 2 1 20
2 1 1 30
2 2 1 40
1 1 2 15
2 2 2 45
1 1 1 12
2 1 2 .
3 2 1 7
end
table a b, row col
table a b, contents(freq mean x sd x sum x n x) row col format(%20.15g)
* only the total row, then only the total column
table a b, contents(n x) row
table a b, contents(n x) col
* sum of x by a (rows), c (supercolumns) and b (columns), pandas:
*   a  c=1: b1 b2 T    c=2: b1 b2 T    c=T: b1 b2 T
*   1       22 20 42        15 .  15        37 20  57
*   2       30 40 70        0  45 45        30 85  115
*   3       .  7  7         .  .  .         .  7   7
*   T       52 67 119       15 45 60        67 112 179
* (a=2, b=1, c=2 holds one observation whose x is missing: its sum is 0)
table a b c, contents(sum x) row col scol
table a b c, contents(sum x) scol
* on a narrow line the columns go out in panels, a supercolumn split where
* one does not fit: the same sums as above
set linesize 40
table a b c, contents(sum x) row col scol
set linesize 80
* one classifying variable: freq, mean and median by a, pandas:
*   1: 4 14.25 13.5; 2: 4 38.333333333333336 40; 3: 1 7 7; T: 9 22.375 17.5
table a, contents(freq mean x median x) row format(%20.15g)
* col and scol need a column or supercolumn variable: nothing to add up
table a, col scol
* frequency weights: a=1 weighs 2+1+1+1 = 5 (obs 1 2 5 7), a=2 weighs 4, a=3 weighs 1
generate w = cond(_n == 1, 2, 1)
table a [fw=w], row
* the alignment of the cells
table a b, contents(freq) row col center
table a b, contents(freq) row col left
capture noisily table a b, center left
display _rc
display "test completed"
