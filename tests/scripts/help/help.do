* help pages through the markup engine, abbreviations, aliases, the
* not-found message, search through titles and keywords, and findvar
set linesize 60
input price str8 make mpg
1 "a" 20
2 "b" 30
end
help count
help cou
help keep
capture noisily help nosuchtopic
assert _rc == 111
capture noisily help r(nosuch)
assert _rc == 111
search loop
search LOOP numbers
capture noisily search zzzqqq
assert _rc == 0
capture noisily search
assert _rc == 198
_findhlpalias keep
assert "`r(name)'" == "drop"
capture _findhlpalias nosuch
assert _rc == 111
label variable mpg "Miles per gallon"
label variable make "Make and model"
findvar MILES
assert "`r(varlist)'" == "mpg"
findvar "and m" pri
assert "`r(varlist)'" == "price make"
findvar zzz
assert "`r(varlist)'" == ""
capture noisily findvar
assert _rc == 198
quietly help count
display "test completed"
