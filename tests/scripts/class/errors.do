* Messages and return codes of the class language
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
.p = .point.new 1 2
* an attribute declared twice
.p.Declare double extra = 3
assert `.p.extra' == 3
capture noisily .p.Declare double extra = 4
assert _rc == 4017
capture noisily .p.Declare string x
assert _rc == 4017
capture noisily .p.Declare double
assert _rc == 198
* undefined members, objects and member programs
capture noisily .p.nosuch = 1
assert _rc == 4012
capture noisily .nosuch.x = 1
assert _rc == 4012
capture noisily .p.nosuch
assert _rc == 4023
* the class command
capture noisily class bogus
assert _rc == 198
capture noisily class exit
assert _rc == 198
capture noisily class {
assert _rc == 198
* a class defined in a do-file, and defined again
class pair {
    double first = 1
    double second = 2
}
.pp = .pair.new
assert `.pp.first' + `.pp.second' == 3
capture noisily class pair {
}
assert _rc == 110
* a reference may only be assigned to a reference
capture noisily .q = .p.ref
assert _rc == 4009
* not an array, and a bad element form
capture noisily .p.x.Arrpush 1
assert _rc == 4020
capture noisily .p.instancemv.x = 1
assert _rc == 4029
* a class that inherits from a class nowhere to be found is not made
capture noisily class orphan {
    double a
}, inherit(nowhere)
assert _rc == 4018
capture noisily .o = .orphan.new
assert _rc == 4012
* a class block inside a block that does not run is passed over whole
if 0 {
    class skipped {
        double a = 1
    }
    display "not shown"
}
capture noisily .k = .skipped.new
assert _rc == 4012
display "test completed"
