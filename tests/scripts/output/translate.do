* A ptag document translated to text at two widths.
translate tags.ptag wide.log, ll(79)
translate tags.ptag narrow.log, ll(40)
type wide.log
type narrow.log
capture noisily translate tags.ptag narrow.log
translate tags.ptag narrow.log, replace
log html tags.ptag tags.html
type tags.html
display "test completed"
