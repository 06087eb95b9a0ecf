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
assert _rc == 459
capture noisily merge id using dup, uniqusing
assert _rc == 459
capture noisily merge id x using dup2, match(m:1)
assert _rc == 459
capture noisily merge id using strid
assert _rc == 109
* the failure comes before anything changes
confirm new variable y _merge
assert _N == 2 & id[1] == 1 & x[2] == 5
capture noisily merge id using unsorted
assert _rc == 5
capture noisily append using strid
assert _rc == 109
* the failure comes before anything changes
confirm new variable y _merge
assert _N == 2 & id[1] == 1 & x[2] == 5
capture noisily merge id using dup, match(1:1)
assert _rc == 459
capture noisily merge id using dup, match(2:2)
assert _rc == 198
use dup, clear
capture noisily merge id using unsorted, uniqmaster match(1:m)
assert _rc == 459
capture noisily merge id using unsorted, match(1:1)
assert _rc == 459
preserve
capture noisily preserve
assert _rc == 621
* the first preserve stays good
drop in 1
restore
assert _N == 2 & x[1] == 1 & x[2] == 2
capture noisily restore
assert _rc == 622
drop _all
capture noisily merge id using dup
if _rc != 3 {
    exit 9
}
display "test completed"
