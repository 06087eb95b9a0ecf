* Classes read from files on the ado path, inheritance and member programs
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls"
.log = ""
.p = .point.new 3 4
* 3^2 + 4^2 = 25
assert `.p.norm2' == 25
assert "`.p.describe'" == "point origin at 3,4"
.p.moveby 1 -2
assert `.p.x' == 4 & `.p.y' == 2
* point3 overrides norm2 and describe and calls the superclass's versions
.s = .point3.new 1 2 2
assert `.s.z' == 2
* 1 + 4 + 4 = 9
assert `.s.norm2' == 9
assert "`.s.describe'" == "point origin3 at 1,2 z 2"
* inherited member program
.s.moveby 2 2
assert `.s.x' == 3 & `.s.y' == 4
* isofclass follows the superclasses; objtype and classname
assert `.s.isofclass point3' == 1
assert `.s.isofclass point' == 1
assert `.p.isofclass point3' == 0
assert "`.s.objtype'" == "point3"
assert "`.p.classname'" == "point"
assert "`.s.superclass'" == "point"
assert "`.p.x.objtype'" == "double"
assert "`.p.name.isa'" == "string"
assert "`.p.isa'" == "class"
* the classwide count is one value shared by all instances, subclasses too
assert `.p.made' == 2
.p2 = .point.new
assert `.p.made' == 3 & `.p2.made' == 3
assert `.p2.x' == 0 & "`.p2.name'" == "origin"
* members that are objects: each segment has its own two points
.g = .segment.new
.g.b.x = 3
.g.b.y = 4
assert `.g.len2' == 25
.h = .segment.new
assert `.h.b.x' == 0
* a member program's return value as the right side of an assignment
* 3^2 + 4^2 + 2^2 = 29
.n = .s.norm2
assert `.n' == 29
* an instance assigned to a member of an incompatible class is refused
capture .g.a = .s
assert _rc == 0
capture .s = .p
assert _rc == 4019
* member programs run with the object active: .name reaches the object's own
program point.scale
    .x = .x * `1'
    .y = .y * `1'
end
.p.scale 10
assert `.p.x' == 40 & `.p.y' == 20
* a named superclass: .Super(name)
program point3.both
    .Super(point).moveby 1 1
    class exit "`.Super(point).describe'"
end
.t = .point3.new 1 2 3
assert "`.t.both'" == "point origin3 at 2,3"
* an r-class member program leaves r() as other programs do
program point.stats, rclass
    return scalar sx = `.x' * 2
    return local who "`.name'"
end
.u = .point.new 3 4
.u.stats
assert r(sx) == 6 & "`r(who)'" == "origin"
display "test completed"
