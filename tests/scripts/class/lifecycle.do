* oncopy runs when an object is copied; the destructor when its last
* assert checks each observation: one is needed
set obs 1
* reference goes
global S_ADO "$S_ADO;cls"
.log = ""
.p = .point.new 1 1
.p.name = "one"
assert "`.log'" == ""
.q = .p
assert "`.log'" == " copy"
.q.name = "two"
.r = .p.copy
assert "`.log'" == " copy copy"
.r.name = "three"
* a reference keeps the object alive when one of its names goes
.s.ref = .q.ref
class free q
assert "`.log'" == " copy copy"
* a value assigned through a reference replaces the object for every name
.s2.ref = .s.ref
.s2 = 0
assert `.s' == 0
assert "`.log'" == " copy copy gone(two)"
class free r
assert "`.log'" == " copy copy gone(two) gone(three)"
* objects of a member program's .Local scope go when the program ends
program point.tmp
    .Local.t = .point.new
    .Local.t.name = "local"
end
.p.tmp
assert "`.log'" == " copy copy gone(two) gone(three) gone(local)"
* a clone shares the values it has not written yet
.c = .p._clone
.c.x = 5
assert `.p.x' == 1 & `.c.x' == 5
.c = 0
display "test completed"
