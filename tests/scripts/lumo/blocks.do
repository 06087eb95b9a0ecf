* The four forms of the command and how each treats an error.
set lumodebug off
* the interactive block reports each error and carries on to its end
lumo
x = 1 +
real scalar f() { return("a" - 1) }
function g() { return(1) }
function g() { return(2) }
lumo describe
lumo bogus
end
* the first form may read further lines
lumo function h(x,
   y) { return(x + y) }
* the colon form may not
capture noisily lumo: if (1)
display _rc
* the word end inside a function being read aborts it, and ends the block
lumo
function k() {
end
display "after the block"
* m is the short form of the command
capture noisily m: x = 1
display _rc
* the lumo: block stops at the first error with its code, skipping the rest
capture noisily do _stops.do
display _rc
* settings
set lumostrict on
capture noisily lumo: function strict1() { u = 1; return(u) }
display _rc
set lumostrict off
lumo: function strict2() { u = 1; return(u) }
capture noisily set lumostrict maybe
display _rc
display "test completed"
