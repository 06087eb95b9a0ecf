#!/usr/bin/env python3
"""Filip (NIST StRD, tests/reference/nist/Filip.dat) on the columns that the
sweep keeps at its 1e-9 relative tolerance (x7 and x9 are explained by the
powers before them to within it): the least-squares fit of y on x, x^2 to
x^6, x^8, x^10 and a constant in 50-digit arithmetic, from the doubles the
test enters. Prints power, coefficient, standard error; then the RSS."""
import sys
import os
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import nist_to_do as n
from mpmath import mp, mpf, matrix, lu_solve, sqrt
mp.dps = 50
est, rsd, r2, ss, cols, data = n.parse("Filip")
pw = [1,2,3,4,5,6,8,10]
y = [mpf(r[0]) for r in data]; x=[mpf(r[1]) for r in data]
# x^p of the double value of x, as the test computes it from the typed double
import struct
xd = [mpf(float(r[1])) for r in data]
yd = [mpf(float(r[0])) for r in data]
X = [[xi**p for p in pw]+[mpf(1)] for xi in xd]
# the powers are doubles in the test: round them
X = [[mpf(float(v)) for v in row] for row in X]
k=len(pw)+1
A = matrix(k,k); c = matrix(k,1)
for row,yi in zip(X,yd):
    for i in range(k):
        c[i]+=row[i]*yi
        for j in range(k): A[i,j]+=row[i]*row[j]
b = lu_solve(A,c)
res=[yi-sum(row[i]*b[i] for i in range(k)) for row,yi in zip(X,yd)]
rss=sum(r*r for r in res); N=len(yd); dfr=N-k
Ainv = A**-1
for i,p in enumerate(pw+[0]):
    print(p, mp.nstr(b[i],17), mp.nstr(sqrt(Ainv[i,i]*rss/dfr),17))
print("rss", mp.nstr(rss,17))
