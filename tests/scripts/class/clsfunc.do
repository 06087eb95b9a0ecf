* cls() and scls(): class values inside expressions, by name
global S_ADO "$S_ADO;cls"
.log = ""
set obs 4
.k = 2.5
.p = .point.new 3 4
.p.name = "corner"
.w = {"alpha", "beta"}
* a number, with or without the leading dot, in generate
generate double y = cls(".k") * _n
generate double z = cls("p.x") ^ 2 + cls(".p.y") ^ 2
* 2.5 * 1 + 2.5 * 2 + 2.5 * 3 + 2.5 * 4 = 25; 3^2 + 4^2 = 25
summarize y, meanonly
assert r(sum) == 25
assert z == 25
* the name may come from the data, one observation at a time
generate str8 which = cond(_n <= 2, ".p.x", ".p.y")
generate double v = cls(which)
assert v == cond(_n <= 2, 3, 4)
* strings, and numbers shown as text
generate str20 s = scls(".p.name") + "/" + scls(".w[2]") + "/" + scls(".p.x")
assert s == "corner/beta/3"
* what is not there, or not a number, is missing or empty
assert cls(".nothere") == . & cls(".p.name") == . & cls(".w") == .
assert scls(".nothere") == "" & scls(".w[3]") == ""
* a class file is not read from inside an expression
assert cls(".segment.a.x") == .
capture .s = .segment.new
assert _rc == 0
display "test completed"
