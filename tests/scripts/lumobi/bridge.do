* The dataset bridge: reads, stores, views writing through, names by
* abbreviation and range, selection variables, and failures that leave the
* data as they were. Expected values are worked by hand from the data below.
drop _all
set obs 5
generate byte small = _n
generate double price = _n * 1.5
generate float weight = 10 - _n
generate str6 make = "m" + string(_n)
lumo
function fail(string scalar what)
{
    _error(3498, what)
}
if (kv_nobs() != 5 | kv_nvar() != 4) fail("counts")
// by number, name, abbreviation and range
if (kv_data(2, 2) != 3) fail("by number")
if (kv_data(2, "pri") != 3) fail("abbreviation")
if (kv_data(3, "small-weight") != (3, 4.5, 7)) fail("range")
if (kv_data((4, 5), "small") != (4 \ 5)) fail("observation run")
if (kv_data((5 \ 1), "small") != (5 \ 1)) fail("observation list")
if (kv_varindex("price make") != (2, 4)) fail("varindex")
if (_kv_varindex("nosuch") != .) fail("_kv_varindex")
if (kv_varname((4, 1)) != ("make", "small")) fail("varname")
if (kv_vartype("weight") != "float" | kv_isstrvar("make") != 1) fail("types")
if (kv_sdata(3, "make") != "m3") fail("sdata")
// a selection variable keeps the observations where it is not zero
kv_store(., "price", (0 \ 1 \ 0 \ 1 \ 1) :* kv_data(., "price"))
if (kv_data(., "small", "price") != (2 \ 4 \ 5)) fail("selection")
// stores, with the storage type's rules
kv_store(1, "small", 7)
if (kv_data(1, 1) != 7) fail("store")
kv_sstore(2, "make", "zz")
if (kv_sdata(2, "make") != "zz") fail("sstore")
// a string into a numeric variable: type mismatch, nothing changed
before = kv_data(., (1, 2, 3))
if (_kv_store(1, "small", "x") != 3253) fail("_kv_store code")
if (_kv_store((1, 5), "small", "x") != 3253) fail("_kv_store code, run")
if (_kv_sstore(1, "small", "x") != 3250) fail("_kv_sstore into numeric")
if (kv_data(., (1, 2, 3)) != before) fail("data changed")
// a wrong shape: conformability, nothing changed
if (_kv_store(., "small", (1, 2)) != 3200) fail("shape code")
if (kv_data(., (1, 2, 3)) != before) fail("data changed by shape")
// views: reads and writes pass through to the dataset
V = .
kv_view(V, ., ("small", "weight"))
if (!isview(V) | rows(V) != 5 | cols(V) != 2) fail("view shape")
if (V[3, 2] != 7) fail("view read")
V[3, 2] = 42
if (kv_data(3, "weight") != 42) fail("view write")
kv_store(4, "small", 9)
if (V[4, 1] != 9) fail("view sees the store")
V[., 1] = (1 \ 2 \ 3 \ 4 \ 5)
if (kv_data(., "small") != (1 \ 2 \ 3 \ 4 \ 5)) fail("view column write")
// observations not in a run: the second kind of view
W = .
kv_view(W, (5 \ 2), "price")
W[1] = 100
if (kv_data(5, "price") != 100 | W[2] != 3) fail("listed view")
// a view of a view
S = .
kv_subview(S, V, (2 \ 3), 2)
if (S != (8 \ 42)) fail("subview read")
S[2] = 6
if (kv_data(3, "weight") != 6) fail("subview write")
if (kv_viewvars(S) != 3 | kv_viewobs(S) != (2 \ 3)) fail("subview indexes")
// arithmetic on a view gives plain values; assignment copies
T = V * 2
if (isview(T) | T[1, 1] != 2) fail("view arithmetic")
T = V
if (isview(T)) fail("assignment materialises")
T[1, 1] = -1
if (kv_data(1, "small") != 1) fail("copy writes through")
// a string view
SV = .
kv_sview(SV, ., "make")
SV[1] = "first"
if (kv_sdata(1, "make") != "first") fail("string view write")
if (SV[2] != "zz") fail("string view read")
// a view of a string variable as numbers is refused
if (_kv_varindex("make") != 4) fail("make index")
// a view assigned to itself becomes a matrix of its values
U = .
kv_view(U, (1, 2), "small")
U = U
if (isview(U) | U != (1 \ 2)) fail("a = a materialises")
U[1] = 50
if (kv_data(1, "small") != 1) fail("materialised view writes through")
// swap exchanges the view kind with the contents
kv_view(U, (1, 2), "small")
P = (7 \ 8)
swap(U, P)
if (isview(U) | !isview(P) | U != (7 \ 8) | P != (1 \ 2)) fail("swap")
// views are released with their names
V = W = S = SV = .
if (isview(V)) fail("view replaced")
end
assert small[4] == 4 & weight[3] == 6 & make[1] == "first" & price[5] == 100
display "test completed"
