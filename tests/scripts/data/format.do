* format: both orders, listing, wrong kinds
input double x float y str8 s
1.23456 2 "ab"
end
format x y %9.3f
format
format %-8s s
format s
format %12.2e x
list
capture noisily format x %9s
capture noisily format s %9.2f
capture noisily format x %q
capture noisily format x
capture noisily format x %9.2f extra
capture noisily format zz %9.2f
capture noisily format x-s %10.0g
format x-y %10.0g
format
* time-series operators need a time variable
capture noisily list L.x
capture noisily tsrevar L.x
capture noisily tsrevar x, list substitute
display "test completed"
