* A ptag document translated to text at two widths.
translate tags.ptag wide.log, ll(79)
translate tags.ptag narrow.log, ll(40)
type wide.log
type narrow.log
capture noisily translate tags.ptag narrow.log
if _rc != 602 error 9
translate tags.ptag narrow.log, replace
log html tags.ptag tags.html
type tags.html
display "test completed"
