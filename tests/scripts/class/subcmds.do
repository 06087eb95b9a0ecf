* The class subcommands that work on objects by name: new, nameof,
* nameoflocal, modify, try and korvu
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
* class new: an instance under a top-level name of its own, in r(name)
class new point 3 4
local nm `r(name)'
assert regexm("`nm'", "^K[0-9a-f]+$")
assert `.`nm'.x' == 3 & `.`nm'.y' == 4
* its name carries the hex digits of its key
assert "`.`nm'.uname'" == "`nm'"
capture noisily class new nosuchclass
assert _rc == 4018
* class nameof: a name that reaches the object from the top level
.box = {}
.box[2] = .point.new 5 6
.box[2].Declare string label = "second"
class nameof `.box[2].objkey'
assert "`r(name)'" == ".box[2]"
class nameof `.box[2].label.objkey'
assert "`r(name)'" == ".box[2].label"
class nameof .`nm'
assert "`r(name)'" == ".`nm'"
* a member that was written has a value of its own: its name is found
.box[2].x = 50
class nameof `.box[2].x.objkey'
assert "`r(name)'" == ".box[2].x"
capture noisily class nameof .nothere
assert _rc == 4012
* class modify: an assignment, the name with or without its dot
class modify box[2].y = 6 * 7
assert `.box[2].y' == 42
class modify .box[2].label = "changed"
assert "`.box[2].label'" == "changed"
capture noisily class modify box[2].y
assert _rc == 198
* names may be key forms
local k `.box[2].objkey'
class modify `k'.y = 41
class nameof `k'
assert "`r(name)'" == ".box[2]" & `.box[2].y' == 41
class modify box[2].y = 42
* class try: a call runs when its object and member are there, and does
* nothing when they are not
class try .box[2].moveby 1 1
assert `.box[2].x' == 51 & `.box[2].y' == 43
capture noisily class try .box[2].nosuchprogram 1 1
assert _rc == 0
capture noisily class try .box[7].moveby 1 1
assert _rc == 0
capture noisily class try .nosuchobject.moveby 1 1
assert _rc == 0
assert `.box[2].x' == 51 & `.box[2].y' == 43
* a failure of a call that is there still counts
capture class try .box[2].moveby "a" 1
assert _rc != 0
* class nameoflocal and class korvu inside a member program
program point.keeper
    .Local.tmp = .point.new 8 9
    .Local.tmp.name = "kept"
    class nameoflocal tmp
    * the key reaches the local object from the top level
    .Global.copied = `r(name)'
    * .x here is the active object's; class korvu sees the top level only
    .x = 100
    class korvu .x = 200
    capture noisily class nameoflocal nosuch
    .Global.rcnolocal = _rc
end
.box[2].keeper
assert `.copied.x' == 8 & `.copied.y' == 9 & "`.copied.name'" == "kept"
assert `.box[2].x' == 100 & `.x' == 200
assert `.rcnolocal' == 4012
* the local object went when the program ended; the copy stays
assert "`.log'" == " copy gone(kept)"
display "test completed"
