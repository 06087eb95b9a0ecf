* abbreviation, ambiguity, set varabbrev, wildcards and ranges
input price mpg mpg2 weight length turn
1 2 3 4 5 6
end
list pri w
list mpg
capture noisily list mp
assert _rc == 111
capture noisily list xyz
assert _rc == 111
list w~t l~
capture noisily list m~
assert _rc == 111
capture noisily list m~*
assert _rc == 198
list m*
list *e*
list ?pg
list mpg-weight
list price-price
capture noisily list m*-length
assert _rc == 198
capture noisily list weight-mpg
assert _rc == 198
capture noisily list q*
assert _rc == 111
set varabbrev off
capture noisily list pri
assert _rc == 111
list mpg price
set varabbrev on
list pri
capture noisily set varabbrev maybe
assert _rc == 198
capture noisily list float
assert _rc == 111
display "test completed"
