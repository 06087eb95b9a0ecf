#!/usr/bin/env python3
"""An independent model of the main uniform generator and its state text.

Usage: urnmodel.py [seed|Xstate] [count]
Prints the state text, then `count` draws as exact hexadecimal floats and as
%.17g, one per line. Python integers, masked to 32 bits by hand.
"""
import sys

M = 0xFFFFFFFF
X0, Y0, Z0, W0 = 123456789, 521288629, 362436069, 2262615


def step(s):
    x, y, z, w = s
    x = (69069 * x + 1234567) & M
    y ^= (y << 13) & M
    y ^= y >> 17
    y ^= (y << 5) & M
    z = (65184 * (z & 0xFFFF) + (z >> 16)) & M
    w = (63663 * (w & 0xFFFF) + (w >> 16)) & M
    total = (x + y + z + ((w << 16) & M)) & M
    return (x, y, z, w), total / 4294967296.0


def from_seed(n):
    s = (abs(n) & M, Y0, Z0, W0)
    if s[0] != X0:
        for _ in range(100):
            s, _u = step(s)
    return s


def check(text33):
    h = 0
    for ch in text33.encode():
        h = (ch + h * 31) & M
    return h % 20009


def state_text(s):
    t = "X" + "".join("%08x" % v for v in s)
    return t + "%04x" % check(t)


def from_text(t):
    return tuple(int(t[1 + 8 * k:9 + 8 * k], 16) for k in range(4))


def main():
    arg = sys.argv[1] if len(sys.argv) > 1 else "123456789"
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    s = from_text(arg) if arg.startswith("X") else from_seed(int(arg))
    print(state_text(s))
    for _ in range(count):
        s, u = step(s)
        print(u.hex(), "%.17g" % u)
    print(state_text(s))


if __name__ == "__main__":
    main()
