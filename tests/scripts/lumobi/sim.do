* Halton sequences against radical inverses worked by hand, and the GHK
* simulator of normal orthant probabilities against scipy's
* multivariate_normal.cdf (integrated to 1e-8), to a tolerance that fits
* a few thousand Halton draws; exact where GHK is exact (one dimension, a
* diagonal variance).
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
// base 2: 1/2, 1/4, 3/4, 1/8, 5/8, 3/8, 7/8, 1/16
check(ghalton(8, 2, 0), (1/2, 1/4, 3/4, 1/8, 5/8, 3/8, 7/8, 1/16)', 0, "base 2")
check(ghalton(9, 3, 0), (1/3, 2/3, 1/9, 4/9, 7/9, 2/9, 5/9, 8/9, 1/27)', 1e-15, "base 3")
check(ghalton(6, 5, 0), (.2, .4, .6, .8, .04, .24)', 1e-15, "base 5")
// a start on the sequence continues it: 3/8 is point 6 of base 2
check(ghalton(3, 2, 3/8), (7/8, 1/16, 9/16)', 0, "continued from 3/8")
check(ghalton(2, 3, 4/9), (7/9, 2/9)', 1e-15, "continued from 4/9")
// a start off the sequence: add 1/2 with the carry to the right; 0.3 is
// 0.010011.. in binary, so 0.110011.. = 0.8, then 0.001011.. = 0.175
check(ghalton(3, 2, 0.3), (0.8, 0.175, 0.675)', 1e-14, "from 0.3")
check(ghalton(0, 7, 0), J(0, 1, .), 0, "no points")
if (_korvu("lumo: ghalton(3, 1, 0)", 1) != 3300) _error(3498, "base 1 accepted")
if (_korvu("lumo: ghalton(3, 2, 1)", 1) != 3300) _error(3498, "start 1 accepted")
// a long run stays exact: 1000 is 1111101000 in binary, mirrored 0.0001011111
h = ghalton(1000, 2, 0)
check(h[1000], 0.0927734375, 0, "point 1000")
// GHK
R = 4000
U = ghalton(R, 2, 0), ghalton(R, 3, 0), ghalton(R, 5, 0)
V = (1, 0.5, 0.3 \ 0.5, 2, -0.4 \ 0.3, -0.4, 1.5)
p = .
if (_ghk((0.5, 1.0, -0.2), V, U, p) != 0) _error(3498, "ghk status")
if (abs(p - 0.2530661986315442) > 5e-4) _error(3498, "ghk 3: " + strofreal(p, "%12.8f"))
if (_ghk((0.3, -0.5), (1, 0.7 \ 0.7, 1), U, p) != 0) _error(3498, "ghk 2 status")
if (abs(p - 0.28323259571179427) > 5e-4) _error(3498, "ghk 2: " + strofreal(p, "%12.8f"))
V4 = (1, .3, .2, .1 \ .3, 1, .4, .2 \ .2, .4, 1, .5 \ .1, .2, .5, 1)
_ghk((1, 0.5, 0, 1.5), V4, U, p)
if (abs(p - 0.3566615619587197) > 5e-4) _error(3498, "ghk 4: " + strofreal(p, "%12.8f"))
// no bound in the middle: the marginal of the first and third
_ghk((0.5, ., -0.2), V, U, p)
if (abs(p - 0.3347306754992022) > 5e-4) _error(3498, "ghk open bound: " + strofreal(p, "%12.8f"))
// exact cases: one dimension Phi(0.7 / sqrt(2)); diagonal, the product
_ghk(0.7, 2, J(0, 0, .), p)
check(p, 0.6896910267811551, 1e-14, "ghk 1")
_ghk((0.3, -1), (1, 0 \ 0, 4), U[|1, 1 \ 10, 1|], p)
check(p, 0.19064886935285358, 1e-14, "ghk diagonal")
// not positive definite: 506 and missing
if (_ghk((0, 0), (1, 2 \ 2, 1), U, p) != 506 | p != .) _error(3498, "ghk not pd")
end
display "test completed"
