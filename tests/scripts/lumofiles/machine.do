* Kronecker products with complex operands, and rings of pointers released
* once nothing outside reaches them.
* (1+2i, 3) # (1, i) = (1+2i, (1+2i)i, 3, 3i) = (1+2i, -2+i, 3, 3i)
lumo: (1+2i, 3) # (1, 1i)
* a missing element makes its whole block missing
lumo: (1+2i \ .) # (2, 1i)
* real # complex: (1 # (i \ 1), 2 # (i \ 1))
lumo: (1, 2) # (1i \ 1)
cap noi lumo: (1+1i) # "a"
if _rc != 3000 exit 9
lumo: a = NULL
lumo: b = &a
lumo: a = &b
lumo: c = &a
lumo memory
* a and b point at each other: c still reaches them
lumo drop a b
lumo memory
lumo: rows(**(*c))
* now nothing does: all three go
lumo drop c
lumo memory
* arrays of structures: S(n) is 1 x n, S(r, c) is r x c, one instance each
lumo:
struct lf_pt {
    real scalar x, y
}
function lf_arr(real scalar n) {
    struct lf_pt rowvector a
    a = lf_pt(n)
    return(a)
}
function lf_el() {
    struct lf_pt rowvector a
    struct lf_pt scalar b
    a = lf_pt(3)
    b = a[2]
    b.x = 7
    return(b.x + rows(a) * 10 + cols(a) * 100)
}
end
lumo: cols(lf_arr(3))
lumo: s = lf_pt(2, 3)
lumo: (rows(s), cols(s))
lumo: rows(lf_pt(0, 2))
* 7 + 10 + 300
lumo: lf_el()
cap noi lumo: lf_pt(-1)
if _rc != 3300 exit 9
cap noi lumo: lf_pt("a")
if _rc != 3253 exit 9
lumo drop s
lumo memory
display "test completed"
