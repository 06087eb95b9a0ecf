* References share one value; assignment copies it
* assert checks each observation: one is needed
set obs 1
.a = 5
.b = .a
.b = 6
assert `.a' == 5 & `.b' == 6
.c.ref = .a.ref
.c = 7
assert `.a' == 7 & `.c' == 7
.a = 8
assert `.c' == 8
* a third name on the same reference, and a string through a reference
.d.ref = .c.ref
.d = 9
assert `.a' == 9 & `.c' == 9
.s = "short"
.t.ref = .s.ref
.t = "a much longer string than the first one was"
assert "`.s'" == "a much longer string than the first one was"
.t = "tiny"
assert "`.s'" == "tiny"
* copies of objects are independent, references are not
global S_ADO "$S_ADO;cls"
.p = .point.new 1 2
.q = .p
.q.x = 10
assert `.p.x' == 1 & `.q.x' == 10
.r.ref = .p.ref
.r.x = 20
assert `.p.x' == 20
* a member of one object aliased to a top-level name
.m.ref = .p.y.ref
.m = 30
assert `.p.y' == 30
* the key's text form: __key( hex digits )
local k `.p.objkey'
assert regexm("`k'", "^__key\([0-9a-f]+\)$")
assert "`k'" != "`.q.objkey'"
assert "`.r.objkey'" == "`k'"
* the unique name carries the same hex digits
local u `.p.uname'
assert regexm("`u'", "^K([0-9a-f]+)$")
local hex = regexs(1)
assert "__key(`hex')" == "`k'"
* a value read through its key form
.k2 = `k'
assert `.k2.x' == 20
display "test completed"
