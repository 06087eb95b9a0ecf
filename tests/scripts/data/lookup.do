* abbreviation, ambiguity, set varabbrev, wildcards and ranges
input price mpg mpg2 weight length turn
1 2 3 4 5 6
end
list pri w
list mpg
capture noisily list mp
capture noisily list xyz
list w~t l~
capture noisily list m~
capture noisily list m~*
list m*
list *e*
list ?pg
list mpg-weight
list price-price
capture noisily list m*-length
capture noisily list weight-mpg
capture noisily list q*
set varabbrev off
capture noisily list pri
list mpg price
set varabbrev on
list pri
capture noisily set varabbrev maybe
capture noisily list float
display "test completed"
