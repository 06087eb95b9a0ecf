#!/usr/bin/env python3
"""A model of the observation sort, written from the description of the
algorithm and working on the observations themselves (recursive quicksort,
swaps of observation slots), used to work out the tie orders the sort tests
expect. Usage: sortmodel.py  (prints the cases the tests use)."""
import sys
sys.setrecursionlimit(100000)
M = 2147483647


class Gen:
    def __init__(self, seed=1001):
        self.s = seed

    def start(self, n1, n2):
        self.n1, self.w = n1, n2 - n1

    def next(self):
        self.s = (((self.s * 3433) & 0xFFFFFFFF & M) + ((self.s * 65536) & 0xFFFFFFFF & M)) & 0xFFFFFFFF & M
        u = self.s / 2147483646.0
        return int(u * self.w + 0.5) + self.n1


def sort(obs, key, gen, lo=1, hi=None):
    """obs: list of records (1-based positions); key(rec) -> tuple."""
    hi = len(obs) if hi is None else hi
    def cmp(i, j):
        a, b = key(obs[i - 1]), key(obs[j - 1])
        return (a > b) - (a < b)
    def exch(i, j):
        obs[i - 1], obs[j - 1] = obs[j - 1], obs[i - 1]
    if hi <= lo:
        return
    i = lo
    while i < hi and cmp(i, i + 1) == 0:
        i += 1
    if i == hi:
        return
    s = cmp(i, i + 1)
    mono = True
    while i < hi:
        d = cmp(i, i + 1)
        if d and d != s:
            mono = False
            break
        i += 1
    if mono:
        if s > 0:
            n = hi - lo + 1
            for k in range(n // 2):
                exch(lo + k, hi - k)
        return
    gen.start(lo, hi)
    for _ in range(hi - lo + 1):
        a = gen.next()
        b = gen.next()
        exch(a, b)

    def qs(lo, hi):
        if lo >= hi:
            return
        i, j = lo - 1, hi
        while True:
            while True:
                i += 1
                last = cmp(i, hi)
                if last >= 0:
                    break
            while True:
                j -= 1
                if not (j > i and cmp(j, hi) > 0):
                    break
            if i >= j:
                break
            exch(i, j)
        if last == 0 and i != hi:
            k = i + 1
            while k < hi and cmp(k, hi) == 0:
                k += 1
            exch(k, hi)
            qs(k + 1, hi)
            m = i - 1
            while m > lo and cmp(m, i) == 0:
                m -= 1
            qs(lo, m)
        else:
            exch(i, hi)
            qs(lo, i - 1)
            qs(i + 1, hi)
    qs(lo, hi)


if __name__ == "__main__":
    g = Gen()
    # case 1: 12 observations, k = mod(7n, 5), sort k
    obs = [(n, (7 * n) % 5) for n in range(1, 13)]
    sort(obs, lambda r: (r[1],), g)
    print("case1 ids:", [r[0] for r in obs])
    # case 2: then sort k again from a shuffled state: id = _n order, k = mod(n*n, 7)
    obs = [(n, (n * n) % 7) for n in range(1, 31)]
    sort(obs, lambda r: (r[1],), g)
    print("case2 ids:", [r[0] for r in obs])
