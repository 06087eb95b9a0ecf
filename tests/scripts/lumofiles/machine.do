* Kronecker products with complex operands, and rings of pointers released
* once nothing outside reaches them.
* (1+2i, 3) # (1, i) = (1+2i, (1+2i)i, 3, 3i) = (1+2i, -2+i, 3, 3i)
lumo: (1+2i, 3) # (1, 1i)
* a missing element makes its whole block missing
lumo: (1+2i \ .) # (2, 1i)
* real # complex: (1 # (i \ 1), 2 # (i \ 1))
lumo: (1, 2) # (1i \ 1)
cap noi lumo: (1+1i) # "a"
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
display "test completed"
