* Extreme values, deviation cross products, traces, the complex argument,
* Chebyshev series, the Fourier transform and row reordering, against hand
* counts and references from numpy (chebval, fft).
label define yn 5 "maybe" 0 "no" 1 "yes"
lumo
function check(real matrix got, real matrix want, real scalar tol, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > tol) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
// minindex by hand: 1 at 2 and 4, then 2 at 7, then 3 at 1
v = (3, 1, 4, 1, 5, 9, 2, 6)
i = w = .
minindex(v, 2, i, w)
check(i, (2 \ 4), 0, "two smallest")
check(w, (1, 2), 0, "two smallest, ties")
minindex(v', 3, i, w)
check(i, (2 \ 4 \ 7), 0, "three smallest")
check(w, (1, 2 \ 3, 1), 0, "three smallest, ties")
minindex(v, -2, i, w)
check(i, (6 \ 8), 0, "two largest")
check(w, (1, 1 \ 2, 1), 0, "two largest, runs")
// a tie at the cut brings in every tied value
minindex((5, 3, 3, 3, 1), 2, i, w)
check(i, (5 \ 2 \ 3 \ 4), 0, "tie at the cut")
check(w, (1, 1 \ 2, 3), 0, "tie at the cut, runs")
minindex((5, 3), 0, i, w)
if (rows(i) != 0 | rows(w) != 0) _error(3498, "k = 0")
// missing orders above every number
minindex((2, ., 1), -1, i, w)
check(i, (2), 0, "missing is largest")
// deviation cross products: means (2, 3) and 1.8
X = (1, 2 \ 3, 5 \ 4, -1 \ 2, 2 \ 0, 7)
Z = (1 \ 0 \ 2 \ 5 \ 1)
check(crossdev(X, (2, 3), Z, 1.8), (1 \ -10), 1e-14, "crossdev")
check(crossdev(X, (2, 3), X, (2, 3)), (10, -13 \ -13, 38), 1e-14, "crossdev of X")
check(crossdev(X, (2, 3), (1 \ 2 \ 1 \ 3 \ 0.5), Z, 1.8), (-1.6 \ -18.4), 1e-14, "crossdev weighted")
check(quadcrossdev(X, (2, 3), Z, 1.8), (1 \ -10), 1e-15, "quadcrossdev")
// a missing row drops out: the rest as worked by hand
check(crossdev((1 \ . \ 3), 2, (1 \ 5 \ 5), 0), (4), 0, "crossdev missing")
// traces: AV and (BV)' with A, B, V worked through numpy
AV = (4, 7, 2 \ 5, 4, 3)
BVt = (1, 3 \ 5, 3 \ 3, 0)
check(trace_AVBV(AV, BVt), 72, 1e-15, "trace_AVBV")
check(trace_ABBAV((1, 2 \ 0, 3 \ 4, 1), (2, 1, 0 \ 1, 3, 1 \ 0, 1, 1)), 72, 1e-15, "trace_ABBAV")
// the argument of real values
check(arg((2, -3, 0, .)), (0, 3.141592653589793, 0, .), 0, "arg of reals")
// Chebyshev series
c = (0.5, -1.0, 2.0, 0.25)
check(chebyeval(c, (-0.9, 0.0, 0.3, 1.0)), (2.5860000000000003, -1.5, -1.638, 1.75), 1e-14, "chebyeval")
check(chebyeval(c', (1, 2.5, 4), (1, 4)), (3.25, -1.5, 1.75), 1e-14, "chebyeval on [1, 4]")
check(chebyeval(c, .), ., 0, "chebyeval missing")
// mreldifre on real arguments is the largest relative difference
if (mreldifre((1, 2), (1, 2.5)) != 0.5 / 3.5) _error(3498, "mreldifre")
// Fourier transforms: a power of two and a prime length
h = (1, 2, 0, -1, 3, 0.5, 2, 1)
H = h
_fft(H)
check(Re(H), (8.5, 0.4748737341529168, 2.0, -4.474873734152917, 3.5, -4.474873734152917, 2.0, 0.4748737341529168), 1e-14, "fft 8, real")
check(Im(H), (0.0, 2.353553390593274, -2.5, -1.6464466094067263, 0.0, 1.6464466094067263, 2.5, -2.353553390593274), 1e-14, "fft 8, imaginary")
_invfft(H)
check(Re(H), h, 1e-15, "inverse fft 8")
check(Im(H), J(1, 8, 0), 1e-15, "inverse fft 8, imaginary")
if (mreldifre(H, h) > 1e-15) _error(3498, "mreldifre of a near-real result")
h = (1, -2, 3, 0.5, 4)'
H = h
_fft(H)
check(Re(H), (6.5, -1.2135254915624212, 0.4635254915624212, 0.4635254915624212, -1.2135254915624212)', 1e-14, "fft 5, real")
check(Im(H), (0.0, 4.2368759670397385, 5.9043528044927225, -5.9043528044927225, -4.2368759670397385)', 1e-14, "fft 5, imaginary")
check(arg(H[1]), 0, 0, "arg of a positive value")
_invfft(H)
check(Re(H), h, 1e-14, "inverse fft 5")
// reordering rows in place
Y = (1, 2 \ 3, 4 \ 5, 6)
_collate(Y, (3 \ 1 \ 2))
check(Y, (5, 6 \ 1, 2 \ 3, 4), 0, "collate")
s = ("a" \ "b" \ "c")
_collate(s, (2, 3, 1))
if (s != ("b" \ "c" \ "a")) _error(3498, "collate strings")
// the generator's state: seeding by number agrees with the command
korvu("set seed 12345")
a = uniform(1, 3)
uniformseed(12345)
check(uniform(1, 3), a, 0, "uniformseed(n) as set seed n")
st = uniformseed()
if (strlen(st) != 37) _error(3498, "state text length")
a = uniform(2, 2)
uniformseed(st)
check(uniform(2, 2), a, 0, "state restored")
if (_korvu("lumo: uniformseed(" + char(34) + "not a state" + char(34) + ")") != 3300) _error(3498, "bad state taken")
// a value label loaded in the label's order of values
vv = tt = .
kv_vlload("yn", vv, tt)
check(vv, (0 \ 1 \ 5), 0, "label values")
if (tt != ("no" \ "yes" \ "maybe")) _error(3498, "label texts")
kv_vlload("nosuch", vv, tt)
if (rows(vv) != 0 | rows(tt) != 0) _error(3498, "no label")
// the store: a million doubles take 8 MB
big = 1
m0 = sys_memory()
big = J(1000, 1000, 0)
if (sys_memory() - m0 < 7999992) _error(3498, "memory of a big matrix")
big = 1
// display levels
displayas("text")
printf("as text\n")
displayas("result")
if (_korvu("lumo: displayas(" + char(34) + "loud" + char(34) + ")") != 3300) _error(3498, "bad level taken")
end
display "test completed"
