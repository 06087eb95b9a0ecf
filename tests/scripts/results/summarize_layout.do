* the summary table: one and several variables, every weight kind, format,
* the separator, and the detail table
set obs 10
generate x = _n
generate double big = 1234567.5 + _n
generate w = mod(_n, 3) + 1
generate str5 s = "a"
label variable x "the first ten"
format big %9.1f
summarize x
summarize
summarize x big [aweight=w]
summarize x [fweight=w]
summarize x [iweight=w]
summarize x big, format
summarize x big w, separator(2)
summarize x if x > 20
summarize x, meanonly
summarize x, detail
summarize x [fweight=w], detail
display "test completed"
