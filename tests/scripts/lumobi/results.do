* The results bridge: macros, scalars, matrices with their names, the r, e
* and s stores, and running commands from the language, nested.
drop _all
set obs 4
generate double y = _n * _n
generate double x = _n
quietly regress y x
lumo
function fail(string scalar what)
{
    _error(3498, what)
}
// e() scalars and matrices of the regression: y = -5 + 5x exactly on
// 1, 4, 9, 16 (least squares by hand: slope 5, intercept -5)
if (kv_numscalar("e(N)") != 4) fail("e(N)")
if (mreldif(kv_matrix("e(b)"), (5, -5)) > 1e-14) fail("e(b)")
if (kv_matrixcolstripe("e(b)") != ("", "x" \ "", "_cons")) fail("e(b) names")
if (rows(kv_matrix("e(V)")) != 2) fail("e(V)")
if (kv_global("e(depvar)") != "y") fail("e(depvar)")
// r() written and read back
kv_numscalar("r(answer)", 42)
kv_global("r(word)", "forty-two")
kv_matrix("r(M)", (1, 2 \ 3, 4))
if (kv_numscalar("r(answer)") != 42 | kv_global("r(word)") != "forty-two") fail("r()")
if (kv_matrix("r(M)") != (1, 2 \ 3, 4)) fail("r(M)")
if (kv_dir("r", "numscalar") != "answer") fail("kv_dir")
// plain macros, scalars, matrices
kv_local("loc", "inside")
kv_global("glob", "everywhere")
kv_numscalar("sc", 2.5)
kv_strscalar("ss", "text")
kv_matrix("A", (1, 2, 3 \ 4, 5, 6))
kv_matrixrowstripe("A", ("eq1", "a" \ "eq1", "b"))
if (kv_matrixrowstripe("A") != ("eq1", "a" \ "eq1", "b")) fail("row names")
if (kv_matrixcolstripe("A") != ("", "c1" \ "", "c2" \ "", "c3")) fail("default names")
if (rows(kv_matrix("nosuch")) != 0) fail("absent matrix")
if (rows(kv_numscalar("nosuch")) != 0) fail("absent scalar")
// a command run from the language sees what the language wrote
if (_korvu("assert sc == 2.5") != 0) fail("scalar seen by a command")
if (_korvu("assert y[3] == 10") != 9) fail("_korvu code")
// nested: a command that runs the language again, which runs a command
q = char(34)
korvu("lumo: kv_numscalar(" + q + "deep" + q + ", _korvu(" + q + "display 1" + q + "))")
if (kv_numscalar("deep") != 0) fail("nested run")
// a failing command through korvu() aborts with 3598
kv_local("rc", strofreal(_korvu("lumo: korvu(" + q + "nosuchcmd" + q + ")")))
if (kv_local("rc") != "3598") fail("korvu() failure code " + kv_local("rc"))
kv_rclear()
if (rows(kv_numscalar("r(answer)")) != 0) fail("kv_rclear")
end
assert "`loc'" == "inside" & "$glob" == "everywhere" & ss == "text"
matrix list A
return list
display "test completed"
