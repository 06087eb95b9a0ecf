* Run-time errors: codes, texts and the traceback.
lumo
// conformability and shape
(1,2) + (1,2,3)
(1,2\3,4)^2
2/(1,2)
(1,2) * (3,4)
(1,2) \ (1,2,3)
"a" + 1
sa = "a"
sa + 1
sa * 2
sa / 2
// comparison of unequal shapes is an answer
(1,2) == (1,2,3)
(1,2) != (1,2,3)
// subscripts
v = (10, 20, 30)
v[4]
v[0]
v[1.5]
// late binding: h is looked up when called
h(3)
function h(x) { return(x * 2) }
h(3)
// a failure three calls deep
function k3(x) { return(x + "a") }
function k2(x) { return(k3(x)) }
function k1(x) { return(k2(x)) }
k1(1)
// argument counts
k1(1, 2)
// deep recursion ends in a stack overflow, and the session goes on
function r(n) { return(r(n + 1)) }
r(1)
1 + 1
// types asserted on arguments
real scalar sq(real scalar z) { return(z * z) }
sq((1,2))
sq("a")
sq(3)
// a function without a return value used as a real scalar
real scalar noret() { }
noret()
// dereferencing NULL and non-pointers
np = NULL
*np
*v
end
display "test completed"
