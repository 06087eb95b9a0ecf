* Objects made and released in loops leave the store as it was (the store's
* own loop of 100,000 stands in the unit tests; this one goes through the
* language, programs new and destructor included)
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
* load the class first, so that its definition is counted before
.p = .point.new 1 1
.p = 0
.o = 0
.log = ""
class _dmm
local before $S_CLSNODES
forvalues i = 1/5000 {
    .o = .point.new `i' 2
    .o.name = "n`i'"
    .o.tags[3] = `i'
    * the destructor of the object replaced writes to the log: keep it short
    .log = ""
}
.o = 0
.log = ""
class _dmm
assert $S_CLSNODES == `before'
* arrays and references in a loop
forvalues i = 1/1000 {
    .a[`i'] = .point.new `i' `i'
    .r.ref = .a[`i'].ref
}
class free a r
.log = ""
class _dmm
assert $S_CLSNODES == `before'
display "test completed"
