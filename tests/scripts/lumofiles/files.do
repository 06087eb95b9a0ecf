* Functions saved to object files and libraries come back by autoload;
* matrices saved to a file come back with their values.
set obs 1
lumo:
real scalar lf_sq(real scalar x) {
    return(x * x)
}
string scalar lf_tw(string scalar s) {
    return(s + s)
}
real scalar lf_which() {
    return(1)
}
real scalar lf_both(real scalar x) {
    return(lf_sq(x) + strlen(lf_tw("abc")))
}
end
lumo mosave lf_sq()
cap noi lumo mosave lf_sq()
assert _rc == 602
lumo mosave lf_sq(), replace
lumo mosave lf_tw(), replace
cap noi lumo mosave nosuch()
assert _rc == 111
lumo llib create lfiles
lumo llib add lf_both() lf_which(), library(lfiles)
cap noi lumo llib add lf_both(), library(lfiles)
assert _rc == 602
cap noi lumo llib create files
assert _rc == 198
cap noi lumo llib create l-x
assert _rc == 198
cap noi lumo llib create lfiles
assert _rc == 602
cap noi lumo llib frob
assert _rc == 198
lumo llib describe lfiles
* an object file of the same name as a library member
lumo drop lf_which()
lumo:
real scalar lf_which() {
    return(2)
}
end
lumo mosave lf_which()
lumo clear
lumo which lf_both()
lumo which lf_sq()
lumo which strlen()
cap noi lumo which lf_none()
assert _rc == 111
* 3^2 + 6 = 15
lumo: lf_both(3)
lumo: lf_tw("xy")
* libraries first
lumo: lf_which()
lumo clear
set lumolofirst on
lumo which lf_which()
lumo: lf_which()
set lumolofirst off
lumo clear
* matrices
lumo: x = (1.5, -2 \ ., 1e300)
lumo: s = ("one", "" \ "three", "f o u r")
lumo: c = (1+2i, -3i)
lumo: p = &x
lumo matsave mats x s c
cap noi lumo matsave mats x
assert _rc == 602
lumo matsave mats2 p
cap noi lumo matsave mats3 nosuch
assert _rc == 111
lumo matdescribe mats
lumo clear
lumo matuse mats
lumo: x
lumo: s
lumo: c
cap noi lumo matuse mats
assert _rc == 110
lumo matuse mats, replace
lumo matuse mats2
* the pointer's target came with it
lumo: *p
cap noi lumo matuse nosuch
assert _rc == 601
display "test completed"
