* Values, aliasing and the order of evaluation of the machine, with the
* values worked by hand.
lumo
// value semantics: b is a copy
a = (1,2,3)
b = a
b[2] = 9
a[2]
b
// pointer aliasing: writing through p changes x
x = 5
p = &x
*p = 42
x
// a pointer to a local outlives its function
function mk(v) { real scalar y; y = v + 1; return(&y) }
q = mk(10)
*q
// a line starting with * is a statement inside the block
*q = 7
*q
// no short-circuit: the right side of & runs
w = 0
t = 0 & (w = 5)
t, w
u = 1 | (w = 6)
u, w
// postponed increments: both operands read 1, x ends at 3
x = 1
y = x++ + x++
y, x
--x
x
// missing values: 1/0, 1 + . and an overflowing product are missing
1/0
1 + .
1e300 * 1e300
(1, ., 3) :* 2
-(.)
end
display "test completed"
