* Cross products with constants and weights (cross() with 4 and 5
* arguments, crossdev() with 6 and 7, and the quad forms) against numpy on
* random data with missing values; the references are numpy's products of
* the data with a column of ones appended, rows with a missing value
* removed (the generator is crossx.py beside this script).
lumo
function check(real matrix got, real matrix want, string scalar what)
{
    if (rows(got) != rows(want) | cols(got) != cols(want)) _error(3498, what + ": wrong shape")
    if (mreldif(got, want) > 1e-13) _error(3498, what + ": " + strofreal(mreldif(got, want)))
}
X = (3.511, 34.956, 5.934 \ -6.18, 12.645, 0.907 \ -4.873, 18.365, 11.639 \ 0.965, -12.761, 1.038 \ 0.819, ., 5.65 \ 18.51, 7.951, 9.097 \ 8.759, -2.193, -15.706 \ 2.838, -3.531, -17.073 \ -6.812, -10.729, -27.349 \ 5.607, 1.289, -7.473 \ 9.862, -5.617, 1.464 \ -9.708, 14.582, 8.702)
Z = (5.029, 6.376 \ -11.88, 3.187 \ -0.723, 3.195 \ -11.405, 3.746 \ -1.859, 1.287 \ 0.684, -0.153 \ 8.172, 1.014 \ -0.632, 7.288 \ -2.847, -4.558 \ ., -3.58 \ -7.156, -2.928 \ 4.007, -7.299)
w = (1.16 \ 1.82 \ . \ 1.91 \ 2.49 \ 1.97 \ 1.36 \ 2.37 \ 1.0 \ 2.99 \ 1.13 \ 1.03)
xm = (1.5, -2.25, 0.75)
zm = (0.5, 3.0)
c_X1_Z0 = (75.95968100000002, 90.50092300000001 \ 276.752103, 203.79374700000002 \ -10.268276, -3.090751000000022 \ -16.750999999999998, 9.868000000000002)
c_X0_Z1 = (75.95968100000002, 90.50092300000001, 16.872 \ 276.752103, 203.79374700000002, 53.668000000000006 \ -10.268276, -3.090751000000022, -21.347)
c_X1_Z1 = (75.95968100000002, 90.50092300000001, 16.872 \ 276.752103, 203.79374700000002, 53.668000000000006 \ -10.268276, -3.090751000000022, -21.347 \ -16.750999999999998, 9.868000000000002, 10.0)
c_X0_Z0 = (75.95968100000002, 90.50092300000001 \ 276.752103, 203.79374700000002 \ -10.268276, -3.090751000000022)
cw_X1_Z1 = (150.69999841, 123.94943508000001, 44.10413 \ 336.2744033299999, 132.03251915000004, 41.445119999999996 \ -42.39060548000004, -208.32756129000003, -50.116940000000014 \ -33.41402, 23.316939999999995, 13.749999999999998)
cw_X0_Z1 = (150.69999841, 123.94943508000001, 44.10413 \ 336.2744033299999, 132.03251915000004, 41.445119999999996 \ -42.39060548000004, -208.32756129000003, -50.116940000000014)
d_X1_Z1 = (100.15018100000003, 70.08292300000001, 1.8719999999999999 \ 200.97835299999997, -2.507252999999993, 76.168 \ 16.718473999999986, 76.04924899999999, -28.847 \ -21.750999999999998, -20.131999999999998, 10.0)
d_X0_Z1 = (100.15018100000003, 70.08292300000001, 1.8719999999999999 \ 200.97835299999997, -2.507252999999993, 76.168 \ 16.718473999999986, 76.04924899999999, -28.847)
dw_X1_Z0 = (189.08146341000003, 18.536635080000018 \ 224.90154832999994, -32.652225850000015 \ 12.884629519999985, -44.52694629 \ -40.28902000000001, -17.933059999999998)
d_X1c_Z1 = (100.15018100000003, 70.08292300000001, 1.8719999999999999 \ 200.97835299999997, -2.507252999999993, 76.168 \ 16.718473999999986, 76.04924899999999, -28.847 \ -16.31325, -15.099, 7.5)
d_X1s_Z0 = (115.71768100000004, 77.020923 \ 242.918103, 116.72174700000001 \ 105.92772399999998, 59.867248999999994 \ -36.751, -10.131999999999998)
check(cross(X, 1, Z, 0), c_X1_Z0, "cross X1 Z0")
check(cross(X, 0, Z, 1), c_X0_Z1, "cross X0 Z1")
check(cross(X, 1, Z, 1), c_X1_Z1, "cross X1 Z1")
check(cross(X, 0, Z, 0), c_X0_Z0, "cross X0 Z0")
check(cross(X, 0, Z, 0), cross(X, Z), "cross without constants")
check(quadcross(X, 1, Z, 1), c_X1_Z1, "quadcross X1 Z1")
check(cross(X, 1, w, Z, 1), cw_X1_Z1, "weighted X1 Z1")
check(cross(X, 0, w, Z, 1), cw_X0_Z1, "weighted X0 Z1")
check(quadcross(X, 1, w, Z, 1), cw_X1_Z1, "quad weighted X1 Z1")
// a scalar weight weights every row alike
check(cross(X, 1, 2, Z, 1), 2 * c_X1_Z1, "scalar weight")
check(crossdev(X, 1, xm, Z, 1, zm), d_X1_Z1, "crossdev X1 Z1")
check(crossdev(X, 0, xm, Z, 1, zm), d_X0_Z1, "crossdev X0 Z1")
check(crossdev(X, 1, xm, w, Z, 0, zm), dw_X1_Z0, "weighted crossdev X1 Z0")
check(quadcrossdev(X, 1, xm, w, Z, 0, zm), dw_X1_Z0, "quad weighted crossdev")
check(crossdev(X, 1, (xm, 0.25), Z, 1, zm), d_X1c_Z1, "centre of the ones")
check(crossdev(X, 1, 2, Z, 0, 2), d_X1s_Z0, "scalar centres")
check(crossdev(X, 0, xm, Z, 0, zm), crossdev(X, xm, Z, zm), "crossdev without constants")
// by hand: one column of ones against itself counts the rows
check(cross(J(5, 0, .), 1, J(5, 0, .), 1), 5, "count of rows")
check(cross((1 \ 2 \ 3), 1, (4 \ 5 \ 6), 1), (32, 6 \ 15, 3), "small by hand")
check(crossdev((1 \ 2 \ 3), 1, 2, (1 \ 1 \ 4), 0, 2), (3 \ 0), "small deviations by hand")
t = _korvu("lumo: cross((1, 2)', 1, (1, 2, 3)', 1)")
if (t != 3200) _error(3498, "rows differ: " + strofreal(t))
t = _korvu("lumo: cross((1, 2)', 1, (1, 2), (1, 2)', 1)")
if (t != 3200) _error(3498, "weights of the wrong shape: " + strofreal(t))
t = _korvu("lumo: crossdev((1, 2)', 1, (1, 2, 3), (1, 2)', 1, 0)")
if (t != 3200) _error(3498, "centres of the wrong length: " + strofreal(t))
t = _korvu("lumo: crossdev((1, 2)', 0, ., (1, 2)', 0, 0)")
if (t != 3351) _error(3498, "missing centre: " + strofreal(t))
t = _korvu("lumo: cross(1, 1, 1, 1, 1, 1)")
if (t != 3001) _error(3498, "six arguments: " + strofreal(t))
end
display "test completed"
