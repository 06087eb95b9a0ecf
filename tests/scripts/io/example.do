* The shipped example datasets: list, load, labels, and values checked
* against sums and means computed in R from its own copies of the data.
example
example iris
assert _N == 150
summarize sepal_length
assert abs(r(mean) - 5.8433333333) < 1e-9
summarize petal_width
assert abs(r(sum) - 179.9) < 1e-9
assert species[1] == 1 & species[51] == 2 & species[150] == 3
local lab : value label species
assert "`lab'" == "species"
example airquality
summarize ozone
assert r(N) == 116 & abs(r(mean) - 42.1293103448) < 1e-9
summarize solar
assert r(N) == 146
summarize wind
assert abs(r(sum) - 1523.5) < 1e-9
example longley
summarize gnpdefl
assert abs(r(sum) - 1626.9) < 1e-9
example panel
assert _N == 5000
assert firm[1] == 1 & firm[5000] == 500 & year[1] == 2001 & year[10] == 2010
assert size == size[_n - 1] if year != 2001
* a changed dataset is kept without clear
replace x = 0 in 1
capture example iris
assert _rc == 4
assert _N == 5000
example iris, clear
capture example nosuch
assert _rc == 601
display "test completed"
