* Arrays: initialisers, holes, growth, and the array members
* assert checks each observation: one is needed
set obs 1
.a = {10, "b", , 40}
assert `.a.arrnels' == 4
assert `.a[1]' == 10
assert "`.a[2]'" == "b"
assert "`.a[3]'" == ""
assert `.a[4]' == 40
* an element set far beyond the end leaves holes before it
.e = {}
assert `.e.arrnels' == 0
.e[3] = 1
assert `.e.arrnels' == 3
assert "`.e[1]'`.e[2]'" == ""
* growth past one block and past two levels of blocks
.e[12] = 12
.e[150] = 150
.e[1001] = 1001
assert `.e.arrnels' == 1001
assert `.e[12]' + `.e[150]' + `.e[1001]' == 1163
assert "`.e[500]'" == ""
forvalues i = 1/30 {
    .f[`i'] = `i' * `i'
}
assert `.f[30]' == 900 & `.f[11]' == 121
* push, pop, drop an element, drop all
.e.Arrpush "last"
assert `.e.arrnels' == 1002
assert "`.e[1002]'" == "last"
.e.Arrpop
assert `.e.arrnels' == 1001
.e.Arrdropel 1001
* dropping the last element takes the count back to the one before it
assert `.e.arrnels' == 150
.e.Arrdropel 12
assert `.e.arrnels' == 150 & "`.e[12]'" == ""
.e.Arrdropall
assert `.e.arrnels' == 0
* indexes of strings
.w = {"alpha", "beta", "gamma"}
assert `.w.arrindexof "beta"' == 2
assert `.w.arrindexof gamma' == 3
assert `.w.arrindexof delta' == 0
* arrays of objects
global S_ADO "$S_ADO;cls"
.log = ""
.ps = {}
forvalues i = 1/3 {
    .ps[`i'] = .point.new `i' `i'
}
assert `.ps[3].norm2' == 18
.ps[2].x = 7
assert `.ps[2].x' == 7 & `.ps[1].x' == 1
* a copy of an array is deep; a reference is not
.c = .w
.c[1] = "changed"
assert "`.w[1]'" == "alpha"
.r.ref = .w.ref
.r[1] = "changed"
assert "`.w[1]'" == "changed"
* members by their index
.q = .point.new 5 6
assert `.q.instancemv[2]' == 6
capture .q.instancemv = 1
assert _rc == 4029
* arrays of arrays
.m = {1, {2, 3}, {4, {5, 6}}}
assert `.m[2][2]' == 3
assert `.m[3][2][1]' == 5
assert `.m[3].arrnels' == 2
.m[2][5] = 7
assert `.m[2].arrnels' == 5 & `.m[2][5]' == 7
.m[6][2] = 8
assert `.m.arrnels' == 6 & `.m[6][2]' == 8
display "test completed"
