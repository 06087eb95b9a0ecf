* The words of the failures of merge, append, preserve and restore.
drop _all
input id x
1 1
1 2
end
sort id
save dup, replace
drop _all
input id x
1 1
1 1
end
save dup2, replace
drop _all
input str3 id y
"a" 1
end
sort id
save strid, replace
drop _all
input id x
2 5
1 3
end
save unsorted, replace
sort id
capture noisily merge id using dup, unique
capture noisily merge id using dup, uniqusing
capture noisily merge id x using dup2, match(m:1)
capture noisily merge id using strid
capture noisily merge id using unsorted
capture noisily append using strid
capture noisily merge id using dup, match(1:1)
capture noisily merge id using dup, match(2:2)
use dup, clear
capture noisily merge id using unsorted, uniqmaster match(1:m)
capture noisily merge id using unsorted, match(1:1)
preserve
capture noisily preserve
restore
capture noisily restore
drop _all
capture noisily merge id using dup
display "test completed"
