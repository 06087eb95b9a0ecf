* set scheme reads a scheme file from the ado path; c(scheme) names it
set obs 1
assert "`c(scheme)'" == "default"
shell mkdir -p myado
shell printf 'textbox.heading.size 21\ntextbox.heading.color red\n' > myado/mine.scheme
global S_ADO "$S_ADO;myado"
set scheme mine
assert "`c(scheme)'" == "mine"
assert `.__SCHEME.textbox.heading.size' == 21
assert "`.__SCHEME.textbox.heading.color'" == "red"
* a scheme that does not exist leaves the current one
capture set scheme nosuch
assert _rc == 601
assert "`c(scheme)'" == "mine"
capture set scheme
assert _rc == 198
capture set scheme mine extra
assert _rc == 198
capture set scheme bad-name
assert _rc == 198
assert "`c(scheme)'" == "mine"
display "test completed"
