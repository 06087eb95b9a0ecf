* Extended macro functions that read the dataset.
set obs 2
input byte x str3 s
1 "a"
2 "b"
end
label variable x "the x"
label define l 1 "one"
label values x l
char x[k] "v"
char x[j] "w"
label data "dl"
local t : type x
local f : format s
local vl : value label x
local va : variable label x
local c : char x[k]
local cs : char x[]
local d : data label
local so : sortedby
display "[`t'] [`f'] [`vl'] [`va'] [`c'] [`cs'] [`d'] [`so']"
display "test completed"
