* kv_select() on matrices and on views of the dataset (writes reach the
* data), kv_vlmodify() editing value labels, and kv_tsrevar() turning
* operated names into temporary variables; the lags and differences are
* worked out by hand from the listed data.
clear
input t y x str3 s
1 3 1 "a"
2 5 0 "b"
3 4 1 "c"
4 8 1 "d"
5 7 0 "e"
6 2 1 "f"
end
char _dta[_TStvar] t
sort t
generate byte touse = x > 0 & t > 1
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
// kv_select on a plain matrix is select()
M = (1, 2 \ 3, 4 \ 5, 6)
kv_select(A, M, (1 \ 0 \ 7))
check(A, (1, 2 \ 5, 6), 0, "rows of a matrix")
kv_select(A, M, (0, 1))
check(A, (2 \ 4 \ 6), 0, "columns of a matrix")
if (isview(A)) _error(3498, "a copy became a view")
kv_select(A, ("p", "q" \ "r", "s"), (0 \ 1))
if (A != ("r", "s")) _error(3498, "strings")
// on a view: a view of the marked observations, writes go through
kv_view(V, ., "y x")
kv_select(A, V, kv_data(., "touse"))
if (!isview(A)) _error(3498, "not a view")
check(kv_viewobs(A), (3 \ 4 \ 6), 0, "observations kept")
check(A, (4, 1 \ 8, 1 \ 2, 1), 0, "values through the view")
A[2, 1] = 80
check(kv_data(., "y"), (3 \ 5 \ 4 \ 80 \ 7 \ 2), 0, "write through the selection")
kv_select(B, V, (1, 0))
check(kv_viewvars(B), kv_varindex("y"), 0, "column selection of a view")
check(kv_viewobs(B), (1::6), 0, "all observations")
kv_store(4, "y", 8)
// nothing kept: an empty view
kv_select(A, V, J(6, 1, 0))
if (rows(A) != 0 | cols(A) != 2) _error(3498, "empty selection")
if (_korvu("lumo: kv_select(A, V, (1 \ 0))", 1) != 3200) _error(3498, "marker length")
// kv_vlmodify: made, changed, emptied
if (kv_vlexists("pay")) _error(3498, "label exists before")
if (kv_vlmodify("pay", (1, 2, .a), ("low", "high", "refused")) != 3) _error(3498, "count 3")
if (kv_vlmap("pay", (1, 2, .a, 3)) != ("low", "high", "refused", "")) _error(3498, "mappings")
// 2 removed by an empty text, 3 added, 1 replaced
if (kv_vlmodify("pay", (2, 3, 1), ("", "top", "bottom")) != 3) _error(3498, "count after edit")
if (kv_vlmap("pay", (1, 2, 3, .a)) != ("bottom", "", "top", "refused")) _error(3498, "edited")
check(kv_vlsearch("pay", ("top", "bottom")), (3, 1), 0, "search")
if (kv_vlmodify("pay", (1, 3, .a), ("", "", "")) != 0 | !kv_vlexists("pay")) _error(3498, "emptied")
if (_korvu("lumo: kv_vlmodify(" + char(34) + "pay" + char(34) + ", 1.5, " + char(34) + "x" + char(34) + ")", 1) != 3300) _error(3498, "noninteger")
if (_korvu("lumo: kv_vlmodify(" + char(34) + "pay" + char(34) + ", ., " + char(34) + "x" + char(34) + ")", 1) != 3300) _error(3498, "system missing")
if (_korvu("lumo: kv_vlmodify(" + char(34) + "1pay" + char(34) + ", 1, " + char(34) + "x" + char(34) + ")", 1) != 3300) _error(3498, "bad name")
if (_korvu("lumo: kv_vlmodify(" + char(34) + "pay" + char(34) + ", (1, 2), " + char(34) + "x" + char(34) + ")", 1) != 3200) _error(3498, "lengths")
// kv_tsrevar: y is 3 5 4 8 7 2, x is 1 0 1 1 0 1, t runs 1 to 6
kv_numscalar("r(keep)", 42)
nv = kv_nvar()
v = kv_tsrevar("y L.y D.y L2.x")
check(v[1], kv_varindex("y"), 0, "a plain name is itself")
check(kv_data(., v), (3, ., ., . \ 5, 3, 2, . \ 4, 5, -1, 1 \ 8, 4, 4, 0 \ 7, 8, -1, 1 \ 2, 7, -5, 1), 0, "lags and differences")
if (kv_nvar() != nv + 3) _error(3498, "three variables made")
// asked again: the same variables, none made
check(kv_tsrevar(("L.y", "D.y")), v[2..3], 0, "found again")
if (kv_nvar() != nv + 3) _error(3498, "made again")
// list: the underlying variables, once each
check(kv_tsrevar("L.y D.y x L2.x", 1), (kv_varindex("y"), kv_varindex("x")), 0, "list")
// r() is kept
if (kv_numscalar("r(keep)") != 42) _error(3498, "r() lost")
// a name that cannot be resolved
check(_kv_tsrevar("y L.nosuch D.y"), (kv_varindex("y"), ., v[3]), 0, "missing for a bad name")
if (_korvu("lumo: kv_tsrevar(" + char(34) + "L.nosuch" + char(34) + ")", 1) != 3598) _error(3498, "abort for a bad name")
check(_kv_tsrevar("L.s"), ., 0, "operator on a string")
end
display "test completed"
