* Bad input: a clear message, the right return code, the data as they were.
drop _all
input id year inc str4 s
1 1 10 "1"
1 2 11 "2"
1 2 12 "x3"
2 1 20 "4,5"
2 2 21 ""
end
* reshape wide with a repeated (id, year) pair
capture noisily reshape wide inc, i(id) j(year)
assert _rc == 9
assert _N == 5 & c(k) == 4
assert inc[3] == 12 & year[3] == 2 & s[3] == "x3"
* reshape long when i does not identify the observations
rename inc inc1
capture noisily reshape long inc, i(id) j(t)
assert _rc == 9
assert _N == 5 & c(k) == 4
rename inc1 inc
* reshape without arguments before any reshape, and a stub with no variables
capture noisily reshape long zz, i(id) j(t)
assert _rc == 111
* encode of a numeric variable
capture noisily encode inc, generate(e)
assert _rc == 108
capture confirm variable e
assert _rc == 111
* decode of a variable without a value label
capture noisily decode inc, generate(d)
assert _rc == 182
* destring of texts that are not numbers, without force
capture noisily destring s, replace
assert _rc == 7
confirm string variable s
assert s[3] == "x3" & s[4] == "4,5"
capture noisily destring s, generate(s2) ignore(",")
assert _rc == 7
capture confirm variable s2
assert _rc == 111
* tostring that would change values
gen double r = 1/3
capture noisily tostring r, replace format(%5.2f)
assert _rc == 7
confirm numeric variable r
* recode with a bad rule and with a text variable
capture noisily recode inc (10/ = 1)
assert _rc == 198
capture noisily recode s (1 = 2)
assert _rc == 108
assert inc[1] == 10
* xpose without clear
capture noisily xpose
assert _rc == 198
assert _N == 5
* order with its anchor among the variables
capture noisily order id year, after(year)
assert _rc == 198
display "test completed"
