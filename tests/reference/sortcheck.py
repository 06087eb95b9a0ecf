#!/usr/bin/env python3
"""Random datasets sorted by korvu-xe and by the model of sortmodel.py; the
orders, ties included, must agree. Usage: sortcheck.py EXE WORKDIR FIRST LAST
(cases FIRST..LAST-1, each from its own seed). Exit status 1 on a difference."""
import os
import random
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from sortmodel import Gen, sort  # noqa: E402

exe, work, first, last = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
os.makedirs(work, exist_ok=True)
os.chdir(work)
INF = float("inf")  # the model's stand-in for ., which sorts after every number


def key_a(r):
    return (INF if r["a"] is None else r["a"],)


fails = 0
for case in range(first, last):
    rnd = random.Random(case)
    n = rnd.choice([2, 3, 5, 17, 60, 200, 1000, 4000])
    kind = rnd.choice(["num", "numties", "str", "multi", "stable", "range"])
    rows = []
    for i in range(1, n + 1):
        a = rnd.choice([rnd.randint(0, 3), rnd.random()]) if kind != "numties" else rnd.randint(0, 2)
        if rnd.random() < 0.05:
            a = None
        s = "".join(rnd.choice("ab") for _ in range(rnd.randint(0, 10)))
        rows.append({"id": i, "a": a, "s": s, "b": rnd.randint(0, 4)})
    # two sorts a case, so that the generator's state carries over
    if kind in ("num", "numties"):
        plan = [("a", key_a, None), ("b", lambda r: (r["b"],), None)]
    elif kind == "str":
        plan = [("s", lambda r: (r["s"].encode(),), None),
                ("s b", lambda r: (r["s"].encode(), r["b"]), None)]
    elif kind == "multi":
        plan = [("b a", lambda r: (r["b"],) + key_a(r), None), ("b", lambda r: (r["b"],), None)]
    elif kind == "stable":
        plan = [("b, stable", "stable", None), ("a", key_a, None)]
    else:
        lo = rnd.randint(1, n)
        hi = rnd.randint(lo, n)
        plan = [("b in %d/%d" % (lo, hi), lambda r: (r["b"],), (lo, hi)),
                ("b", lambda r: (r["b"],), None)]
    obs, gen = list(rows), Gen()
    for _, key, rng in plan:
        if key == "stable":
            pos = {id(r): p for p, r in enumerate(obs)}
            sort(obs, lambda r: (r["b"], pos[id(r)]), gen)
        elif rng:
            sort(obs, key, gen, rng[0], rng[1])
        else:
            sort(obs, key, gen)
    want = [r["id"] for r in obs]
    with open("c.do", "w") as f:
        f.write("input id double a str10 s b\n")
        for r in rows:
            a = "." if r["a"] is None else repr(r["a"])
            f.write('%d %s "%s" %d\n' % (r["id"], a, r["s"], r["b"]))
        f.write("end\n")
        for cmd, _, _ in plan:
            f.write("sort %s\n" % cmd)
        f.write("list id, noobs clean\n")
    subprocess.run([exe, "-q", "-b", "do", "c.do"], stdin=subprocess.DEVNULL, check=False)
    log = open("c.log").read()
    tail = log.split("list id, noobs clean", 1)[-1]
    got = [int(x) for x in tail.split() if x.isdigit()]
    if got != want:
        fails += 1
        print("case %d (%s, %d observations): orders differ" % (case, kind, n))
print("%d cases, %d differences" % (last - first, fails))
sys.exit(1 if fails else 0)
