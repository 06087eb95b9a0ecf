* The log of changes: class set logging and class undo
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
.a = 1
* nothing is recorded before logging is on, and undo then does nothing
class undo
assert `.a' == 1
class set logging on
.a = 2
.a = 3
.s = "first"
.s = `"say "hi""'
* each line's changes follow a marker; a new name is undone by freeing it
assert `.__LOG.arrnels' == 8
assert "`.__LOG[1]'" == "<undolines>" & "`.__LOG[2]'" == ".a = 1"
assert "`.__LOG[4]'" == ".a = 2" & "`.__LOG[6]'" == "class free s"
assert `"`.__LOG[8]'"' == `".s = "first""'
class undo
assert "`.s'" == "first"
class undo
capture .s
assert _rc == 4012
class undo
assert `.a' == 2
* a number that is not a whole number comes back exactly
.a = 0.1 + 0.2
.a = 7
class undo
* (the macro form shows 18 digits at most: read the value itself)
assert cls(".a") == 0.1 + 0.2 & cls(".a") != 0.3
class undo
* members and array elements, reached again by their objects' keys
.p = .point.new 1 2
.p.x = 10
.p.name = "moved"
.arr = {1, 2}
.arr[2] = 20
.arr[5] = 50
assert `.arr.arrnels' == 5
class undo
assert `.arr.arrnels' == 2 & `.arr[2]' == 20
class undo
assert `.arr[2]' == 2
class undo
class undo
assert "`.p.name'" == "origin"
class undo
assert `.p.x' == 1
* an object replaced by a number comes back as the object it was
.p.x = 33
.p = 5
class undo
assert `.p.x' == 33 & "`.p.isa'" == "class"
* logging on records what command lines change, not what member programs do
.p.moveby 1 1
assert `.p.x' == 34
class undo
assert `.p.x' == 34 & `.p.y' == 3
* allon records the changes member programs make too, under the line's marker
class set logging allon
.p.moveby 1 1
assert `.p.x' == 35 & `.p.y' == 4
class undo
assert `.p.x' == 34 & `.p.y' == 3
* a line that cannot be replayed says so
.q = .point.new
.q.x = 9
class free q
capture noisily class undo
assert _rc == 4010
* logging off drops the log
class set logging off
capture .__LOG
assert _rc == 4012
capture noisily class set logging sometimes
assert _rc == 198
capture noisily class set colour red
assert _rc == 198
display "test completed"
