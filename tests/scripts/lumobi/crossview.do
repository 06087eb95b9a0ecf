* Cross products of views over the dataset, read block by block (more rows
* than a block, so several blocks and a short last one): cross() with and
* without weights, views of a run of observations and of chosen ones, stored
* doubles side by side and other storage types, and X'*X, against exact sums
* of the same numbers (rational arithmetic, rounded once at the end).
set obs 10007
generate double x1 = mod(_n * 7919, 1009) / 1009
generate double x2 = (mod(_n * 31, 101) - 50) / 8
generate double x5 = mod(_n * 13, 29) / 16
replace x5 = . if mod(_n, 997) == 0
replace x5 = .a if mod(_n, 2003) == 1
generate float x3 = mod(_n, 17) / 3
generate byte x4 = mod(_n, 5) - 2
generate double w = 1 + mod(_n, 3)
lumo
function t(real scalar ok, string scalar what)
{
    if (!ok) _error(3498, what)
}
function amax(real matrix x)
{
    return(colmaxabs(colmaxabs(x)')[1])
}
function near(real matrix a, real matrix b)
{
    if (rows(a) != rows(b) || cols(a) != cols(b)) return(0)
    if ((a :>= .) != (b :>= .)) return(0)
    // relative to the largest element: a sum that cancels keeps the
    // absolute error of the large terms
    real matrix a0, b0
    a0 = editmissing(a, 0)
    b0 = editmissing(b, 0)
    return(amax(a0 - b0) <= 1e-14 * (amax(b0) + 1))
}
RAA = (3326.5734710695906, 31.081764122893954, 4369.270626858275 \ 31.081764122893954, 132516.4375, 68.6015625 \ 4369.270626858275, 68.6015625, 10383.8671875)
RAB = (3326.5734710695906, 31.081764122893954, 4369.270626858275, 13294.953474883961, -3.5411298315163533 \ 31.081764122893954, 132516.4375, 68.6015625, 105.3333347812295, 30.875 \ 4369.270626858275, 68.6015625, 10383.8671875, 23299.354263860732, -2.0625)
RBwB = (6653.464223377118, 53.011025768087215, 8729.278431615461, 26556.100209668944, -4.7195242814668 \ 53.011025768087215, 264987.6875, 118.90625, 149.87501019239426, 5.125 \ 8729.278431615461, 118.90625, 20769.734375, 46609.375194735825, -3.5 \ 26556.100209668944, 149.87501019239426, 46609.375194735825, 195331.11311274118, -6.33333346247673 \ -4.7195242814668, 5.125, -3.5, -6.33333346247673, 39960.0)
RA2A = (6653.146942139181, 62.16352824578791, 8738.54125371655 \ 62.16352824578791, 265032.875, 137.203125 \ 8738.54125371655, 137.203125, 20767.734375)
RKK = (996.9951555917456, 42.784192269573836, 1313.1253716551041, 4022.075339303144, -6.827552031714569 \ 42.784192269573836, 39688.0625, 36.578125, 152.04166631028056, 2.5 \ 1313.1253716551041, 36.578125, 3109.0625, 6974.354195594788, -1.5 \ 4022.075339303144, 152.04166631028056, 6974.354195594788, 29207.778077238156, -20.333333760499954 \ -6.827552031714569, 2.5, -1.5, -20.333333760499954, 5989.0)
RtAA = (3332.068286315136, 2.4077056491575815, . \ 2.4077056491575815, 132886.171875, . \ ., ., .)
RtBB = (3332.068286315136, 2.4077056491575815, ., 13318.564971473781, -2.737363726461844 \ 2.4077056491575815, 132886.171875, ., -74.16666577383876, 17.0 \ ., ., ., ., . \ 13318.564971473781, -74.16666577383876, ., 97794.88988980326, -9.000000894069672 \ -2.737363726461844, 17.0, ., -9.000000894069672, 20011.0)
RtKK = (999.1007306884226, 31.77093657086224, ., 4033.376297360487, -5.717542120911794 \ 31.77093657086224, 39805.921875, ., 42.16666619107127, -7.75 \ ., ., ., ., . \ 4033.376297360487, 42.16666619107127, ., 29312.000299672305, -9.00000074505806 \ -5.717542120911794, -7.75, ., -9.00000074505806, 5996.0)
A = .
kv_view(A, ., ("x1", "x2", "x5"))
B = .
kv_view(B, ., ("x1", "x2", "x5", "x3", "x4"))
W = .
kv_view(W, ., "w")
t(near(cross(A, A), RAA), "cross(A, A)")
t(near(cross(A, B), RAB), "cross(A, B)")
t(near(cross(B, A), RAB'), "cross(B, A)")
t(near(cross(B, W, B), RBwB), "cross(B, w, B), w a view")
wp = kv_data(., "w")
t(near(cross(B, wp, B), RBwB), "cross(B, w, B), w a plain column")
t(near(cross(A, 2, A), RA2A), "cross(A, 2, A)")
t(near(cross(A, ., A), J(3, 3, 0)), "a missing weight drops every row")
// a view of chosen observations
idx = select((1::10007), (mod((1::10007), 3) :== 0) :& ((1::10007) :< 9000))
K = .
kv_view(K, idx, (1..5))
t(near(cross(K, K), RKK), "cross(K, K)")
// the matrix product: missing values make their rows and columns missing
t(near(A'*A, RtAA), "A'*A")
t(near(B'*B, RtBB), "B'*B")
t(near(K'*K, RtKK), "K'*K")
// the same as the products of the values
Bp = B
t(near(Bp'*Bp, RtBB), "values: B'*B")
t(near(cross(Bp, Bp), cross(B, B)), "values: cross(B, B)")
// a block read twice gives the same bits
t(cross(A, A) == cross(A, A), "cross(A, A) twice")
t(cross(B, W, A) == cross(B, W, A), "cross(B, w, A) twice")
// writes through a view reach the next product
A[2, 1] = 1000
t(near(cross(A, A)[1, 1], RAA[1, 1] + 1000^2 - (mod(2 * 7919, 1009) / 1009)^2), "after a write")
end
* a view whose blocks are clean but for one (a missing value in the second
* block, one at 1e200 in the third, whose square is too large to hold): the
* sums of the data side's own accumulation, which drops the same rows
generate double x6 = x2
replace x6 = . in 5000
replace x6 = 1e200 in 9000
quietly matrix accum M = x1 x6 if x6 < 1e100, noconstant
lumo
C = .
kv_view(C, ., ("x1", "x6"))
G = cross(C, C)
G[2, 2] = .
M = kv_matrix("M")
t(near(G[1, 1], M[1, 1] + (mod(9000 * 7919, 1009) / 1009)^2), "clean blocks: x1'x1")
t(near(G[1, 2], M[1, 2] + 1e200 * mod(9000 * 7919, 1009) / 1009), "clean blocks: x1'x6")
end
display "test completed"
