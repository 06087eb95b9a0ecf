#!/usr/bin/env python3
"""Independent reader of format-113 (and 110/111) dataset files for tests.

dtacells.py FILE            prints nothing and exits 0 when every string cell
                            holds its text followed only by zero bytes; else
                            prints the offending cells and exits 1.
dtacells.py FILE --dump     prints one line per observation: the cells as
                            Python reprs (numbers as the raw decoded value).
dtacells.py FILE --write-str8 OUT   (used to make test input) see mkgarbage().
"""
import struct
import sys


def parse(path):
    data = open(path, "rb").read()
    fmt = data[0]
    order = "<" if data[1] == 2 else ">"
    nvar, nobs = struct.unpack(order + "hi", data[4:10])
    pos = 109
    types = list(data[pos:pos + nvar])
    pos += nvar
    if fmt == 110:
        conv = {ord("b"): 251, ord("i"): 252, ord("l"): 253, ord("f"): 254, ord("d"): 255}
        types = [conv.get(t, t - 127) for t in types]
    names = [data[pos + 33 * i:pos + 33 * (i + 1)].split(b"\0")[0].decode() for i in range(nvar)]
    pos += 33 * nvar
    pos += 2 * (nvar + 1) + 12 * nvar + 33 * nvar + 81 * nvar
    while True:
        t = data[pos]
        (ln,) = struct.unpack(order + "i", data[pos + 1:pos + 5])
        pos += 5
        if t == 0 and ln == 0:
            break
        pos += ln
    width = {251: 1, 252: 2, 253: 4, 254: 4, 255: 8}
    rows = []
    for _ in range(nobs):
        row = []
        for t in types:
            w = t if t <= 244 else width[t]
            cell = data[pos:pos + w]
            pos += w
            if t <= 244:
                row.append(cell)
            else:
                code = {251: "b", 252: "h", 253: "i", 254: "f", 255: "d"}[t]
                row.append(struct.unpack(order + code, cell)[0])
        rows.append(row)
    return names, types, rows


def main():
    path = sys.argv[1]
    names, types, rows = parse(path)
    if len(sys.argv) > 2 and sys.argv[2] == "--dump":
        for r in rows:
            print(" ".join(repr(c) for c in r))
        return 0
    bad = 0
    for i, r in enumerate(rows, 1):
        for name, t, c in zip(names, types, r):
            if t > 244:
                continue
            z = c.find(b"\0")
            if z >= 0 and c[z:] != b"\0" * (len(c) - z):
                print(f"{name}[{i}] = {c!r}: bytes after the text")
                bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
