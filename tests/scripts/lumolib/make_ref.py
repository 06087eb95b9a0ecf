#!/usr/bin/python3
# Prints the reference block of linalg.do: the matrices and their results
# computed here with numpy/scipy, independently of korvu.
#   /usr/bin/python3 make_ref.py > refs.txt, then paste it into linalg.do
import numpy as np
from scipy.linalg import hilbert, invhilbert

rng = np.random.default_rng(20261123)
out = []


def mat(name, a):
    a = np.atleast_2d(np.asarray(a, dtype=float))
    rows = [", ".join("%.17g" % v for v in r) for r in a]
    out.append("%s = (%s)" % (name, " \\ ".join(rows)))


def col(name, v):
    mat(name, np.asarray(v, dtype=float).reshape(-1, 1))


def row(name, v):
    mat(name, np.asarray(v, dtype=float).reshape(1, -1))


def num(name, x):
    out.append("%s = %.17g" % (name, x))


# means, variances and correlations; row 7 gets a missing value
X = rng.normal(size=(20, 3)) * [1, 10, 0.1] + [5, -3, 100]
w = rng.integers(1, 5, size=20).astype(float)
keep = np.ones(20, bool)
keep[6] = False
mat("X", X)
col("w", w)
row("m_ref", X[keep].mean(axis=0))
mat("V_ref", np.cov(X[keep], rowvar=False))
mat("R_ref", np.corrcoef(X[keep], rowvar=False))
row("mw_ref", np.average(X[keep], axis=0, weights=w[keep]))
mat("Vw_ref", np.cov(X[keep], rowvar=False, fweights=w[keep].astype(int)))

# a well-conditioned square system
A = rng.normal(size=(6, 6))
B = rng.normal(size=(6, 2))
mat("A", A)
mat("B", B)
mat("XA_ref", np.linalg.solve(A, B))
mat("Ainv_ref", np.linalg.inv(A))
num("detA_ref", np.linalg.det(A))

# the Hilbert matrix of order 8 (condition about 1.5e10) and its exact inverse
mat("H", hilbert(8))
mat("Hinv_ref", invhilbert(8, exact=True).astype(float))

# symmetric positive definite
M = rng.normal(size=(5, 5))
S = M.T @ M + np.eye(5)
BS = rng.normal(size=(5, 3))
mat("S", S)
mat("BS", BS)
mat("XS_ref", np.linalg.solve(S, BS))
mat("Sinv_ref", np.linalg.inv(S))
row("Seig_ref", np.sort(np.linalg.eigvalsh(S))[::-1])

# singular values, rank and norms of a 7 x 4 matrix and of a rank-2 one
G = rng.normal(size=(7, 4))
mat("G", G)
col("Gsv_ref", np.linalg.svd(G, compute_uv=False))
K = rng.normal(size=(6, 2)) @ rng.normal(size=(2, 5))
mat("K", K)
num("Krank_ref", np.linalg.matrix_rank(K))
num("Gfro_ref", np.linalg.norm(G, "fro"))
num("G1_ref", np.linalg.norm(G, 1))
num("G2_ref", np.linalg.norm(G, 2))
num("Ginf_ref", np.linalg.norm(G, np.inf))
v = rng.normal(size=9)
row("v", v)
num("v2_ref", np.linalg.norm(v))
num("v1_ref", np.linalg.norm(v, 1))
num("v3_ref", np.linalg.norm(v, 3))
num("vinf_ref", np.linalg.norm(v, np.inf))

print("\n".join(out))
