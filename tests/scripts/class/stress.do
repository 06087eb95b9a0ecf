* 100,000 objects made and released leave the store as it was
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
* load the class first, so that its definition is counted before
.p = .point.new 1 1
.p = 0
.log = ""
class _dmm
local before $S_CLSNODES
forvalues i = 1/100000 {
    .o = .point.new `i' 2
    .o.name = "n`i'"
    .o.tags[3] = `i'
}
.o = 0
.log = ""
class _dmm
assert $S_CLSNODES == `before'
* arrays and references in a loop
forvalues i = 1/2000 {
    .a[`i'] = .point.new `i' `i'
    .r.ref = .a[`i'].ref
}
class free a r
.log = ""
class _dmm
assert $S_CLSNODES == `before'
display "test completed"
