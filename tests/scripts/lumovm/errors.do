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
// a function with many locals fills the 65536 entries of the stack before
// the call depth limit: also a stack overflow
function big(n) {
    real scalar a0, a1, a2, a3, a4, a5, a6, a7, a8, a9, a10, a11, a12, a13, a14, a15, a16, a17, a18, a19, a20, a21, a22, a23, a24, a25, a26, a27, a28, a29
    a0 = n; a1 = n; a2 = n; a3 = n; a4 = n; a5 = n; a6 = n; a7 = n; a8 = n; a9 = n; a10 = n; a11 = n; a12 = n; a13 = n; a14 = n; a15 = n; a16 = n; a17 = n; a18 = n; a19 = n; a20 = n; a21 = n; a22 = n; a23 = n; a24 = n; a25 = n; a26 = n; a27 = n; a28 = n; a29 = n
    return(big(n + 1) + a0)
}
big(1)
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
