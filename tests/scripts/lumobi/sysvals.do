* The system's values through c(), exit(), the count of instructions,
* reference counts and the in-place reordering of storage, against values
* known from the data side and worked by hand.
drop _all
set obs 7
generate double a = _n
generate double b = 2 * _n
generate str3 s = "x"
global maxvar `c(maxvar)'
global today "`c(current_date)'"
global alpha "`c(alpha)'"
save sysvals_data, replace
global filename "`c(filename)'"
global adopath "`c(adopath)'"
lumo
function t(real scalar ok, string scalar what)
{
    if (!ok) _error(3498, what)
}
t(c("pi") == 3.141592653589793, "pi")
t(c("N") == 7, "N")
t(c("k") == 3, "k")
t(c("maxvar") == strtoreal(kv_global("maxvar")), "maxvar")
t(c("current_date") == kv_global("today"), "current_date")
t(c("alpha") == kv_global("alpha"), "alpha")
t(c("filename") == kv_global("filename") & strpos(c("filename"), "sysvals_data") > 0, "filename")
t(c("adopath") == kv_global("adopath"), "adopath")
t(c("nosuchvalue") == ., "unknown name")
t(eltype(c("pi")) == "real" & eltype(c("current_date")) == "string", "types")
t(_korvu("lumo: c(1)") == 3250, "c() of a number")
// reference counts: a pointer adds one and takes it back; a temporary
// has none but the call's own
X = J(2, 2, 0)
base = sys_linkcount(X)
t(base >= 1, "linkcount of a named matrix")
p = &X
t(sys_linkcount(X) == base + 1, "linkcount with a pointer")
q2 = &X
t(sys_linkcount(X) == base + 2, "linkcount with two pointers")
p = NULL
q2 = NULL
t(sys_linkcount(X) == base, "pointers gone")
t(sys_linkcount(J(2, 2, 0)) == 0, "linkcount of a temporary")
// instructions run: the same loop twice costs the same, twice the loop more
function spin(real scalar n)
{
    real scalar i, s
    s = 0
    for (i = 1; i <= n; i++) s = s + i
    return(s)
}
c0 = opcount()
r = spin(100)
c1 = opcount()
r = spin(100)
c2 = opcount()
r = spin(200)
c3 = opcount()
t(c1 > c0 + 100, "opcount grows")
t(c2 - c1 == c1 - c0, "opcount repeats")
t(c3 - c2 > c2 - c1 + 100 & mod((c3 - c2) - (c2 - c1), 100) == 0, "opcount: 100 more turns, whole turns more")
// storage by rows to storage by columns and back, by hand
A = (1, 2, 3 \ 4, 5, 6)
_testflopin(A)
t(rows(A) == 3 & cols(A) == 2 & A == (1, 4 \ 2, 5 \ 3, 6), "flopin 2 x 3")
_testflopout(A)
t(A == (1, 2, 3 \ 4, 5, 6), "flopout back")
B = (1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)
B = (B \ B :+ 15 \ B :+ 30)
_testflopin(B)
t(rows(B) == 15 & cols(B) == 3, "flopin 3 x 15 shape")
t(B[1, .] == (1, 16, 31) & B[7, .] == (7, 22, 37) & B[15, .] == (15, 30, 45), "flopin 3 x 15")
S = ("a", "b", "c" \ "d", "e", "f")
_testflopin(S)
t(S == ("a", "d" \ "b", "e" \ "c", "f"), "flopin of strings")
Z = C((1, 2 \ 3, 4), (5, 6 \ 7, 8))
_testflopin(Z)
t(Re(Z) == (1, 3 \ 2, 4) & Im(Z) == (5, 7 \ 6, 8), "flopin of complex")
lumo_representation((1, 2, 3))
end
* exit() ends the statement with its code, silently; the rest does not run
lumo: function leave(real scalar rc) { exit(rc); kv_global("ran", "yes") }
global ran no
capture lumo: leave(459)
assert _rc == 459
assert "$ran" == "no"
lumo: leave(0)
assert "$ran" == "no"
lumo: function deeper() { leave(17); kv_global("ran", "deeper") }
capture lumo: deeper()
assert _rc == 17
assert "$ran" == "no"
capture lumo: exit(-1)
assert _rc == 3300
display "test completed"
