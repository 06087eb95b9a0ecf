* The library's largest and smallest elements: missing values passed over,
* missing where nothing is left; values worked by hand.
lumo: X = (1, ., 3 \ -4, 5, .)
lumo: if (max(X) != 5 | min(X) != -4) exit(9)
lumo: if (colmax(X) != (1, 5, 3) | colmin(X) != (-4, 5, 3)) exit(9)
lumo: if (rowmax(X) != (3 \ 5) | rowmin(X) != (1 \ -4)) exit(9)
lumo: if (max(J(0, 0, .)) != . | min((., .a)) != .) exit(9)
lumo: if (colmax((1, . \ 2, .)) != (2, .)) exit(9)
lumo: if (rowmin(J(2, 0, .)) != (. \ .)) exit(9)
lumo: if (max(-1e300) != -1e300 | min((2, -0, 0)) != 0) exit(9)
cap noi lumo: max("a")
if _rc != 3253 & _rc != 3251 exit 9
display "test completed"
