# The data and the numpy references of crossx.do: /usr/bin/python3 crossx.py
import numpy as np
rng = np.random.default_rng(20261123)
N = 12
X = np.round(rng.normal(size=(N, 3)) * 10, 3)
Z = np.round(rng.normal(size=(N, 2)) * 5, 3)
w = np.round(rng.uniform(0.5, 3, size=(N, 1)), 2)
X[4, 1] = np.nan   # a missing value: row 5 drops out
Z[9, 0] = np.nan   # row 10 drops out
w[2, 0] = np.nan   # row 3 drops out
xm = np.array([[1.5, -2.25, 0.75]])
zm = np.array([[0.5, 3.0]])
def lit(A):
    rows = []
    for r in np.atleast_2d(A):
        rows.append(", ".join("." if np.isnan(v) else repr(float(v)) for v in r))
    return "(" + " \\ ".join(rows) + ")"
def ones(A): return np.hstack([A, np.ones((A.shape[0], 1))])
ok = ~(np.isnan(X).any(1) | np.isnan(Z).any(1))
okw = ok & ~np.isnan(w[:, 0])
X1, Z1 = ones(X), ones(Z)
out = {}
# cross(X, 1, Z, 0) etc (no weights: w missing does not drop rows)
out["c_X1_Z0"] = X1[ok].T @ Z[ok]
out["c_X0_Z1"] = X[ok].T @ Z1[ok]
out["c_X1_Z1"] = X1[ok].T @ Z1[ok]
out["c_X0_Z0"] = X[ok].T @ Z[ok]
W = np.diag(w[okw, 0])
out["cw_X1_Z1"] = X1[okw].T @ W @ Z1[okw]
out["cw_X0_Z1"] = X[okw].T @ W @ Z1[okw]
# crossdev
out["d_X1_Z1"] = (X1[ok] - np.append(xm, 0)).T @ (Z1[ok] - np.append(zm, 0))
out["d_X0_Z1"] = (X[ok] - xm).T @ (Z1[ok] - np.append(zm, 0))
out["dw_X1_Z0"] = (X1[okw] - np.append(xm, 0)).T @ W @ (Z[okw] - zm)
# constant centred too (centre of length cols+1)
xm2 = np.append(xm, 0.25)
out["d_X1c_Z1"] = (X1[ok] - xm2).T @ (Z1[ok] - np.append(zm, 0))
# scalar centre
out["d_X1s_Z0"] = (X1[ok] - np.append(np.full(3, 2.0), 0)).T @ (Z[ok] - 2.0)
print("X = " + lit(X))
print("Z = " + lit(Z))
print("w = " + lit(w))
print("xm = " + lit(xm))
print("zm = " + lit(zm))
for k, v in out.items():
    print(k + " = " + lit(v))
