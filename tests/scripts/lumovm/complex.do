* Complex values: literals, arithmetic with real operands promoted, the
* product, the conjugating transpose, joins, equality and display. Values
* worked by hand.
lumo
z = 1 + 2i
z
w = 3 - 1i
// (1+2i)+(3-i) = 4+i; (1+2i)-(3-i) = -2+3i; (1+2i)(3-i) = 3-i+6i+2 = 5+5i
z + w
z - w
z * w
// (1+2i)/(3-i) = (1+2i)(3+i)/10 = (3+i+6i-2)/10 = .1+.7i
z / w
-z
2 * z
z + 1
// conjugate transpose of (1+2i, 3) is (1-2i \ 3)
(z, 3)'
Z = (z, 1 \ 0, w)
// (1+2i, 1 \ 0, 3-i) times (1 \ 1i) = (1+2i+1i \ (3-i)i) = (1+3i \ 1+3i)
Z * (1 \ 1i)
// subscripts: reads, a row, a real value stored into a complex matrix
Z[1,1]
Z[2,.]
Z[.,2] = (1i \ 2i)
Z[1,2] = 5
Z
Z[|1,1 \ 1,2|]
z == 1 + 2i
z != w
(1, 2) :* (1i, 1i)
// i times i
c = 2i * 2i
c
// a complex local starts missing
function cl() {
    complex scalar c
    return(c)
}
cl()
// a missing part makes the result missing
z + .
z < w
end
display "test completed"
