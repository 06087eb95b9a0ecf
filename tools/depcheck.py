#!/usr/bin/env python3
"""Which folders of src/ may include which.

Run from anywhere: python3 tools/depcheck.py [top of the checkout]
Every #include "a/b.h" in src/ is checked against the table below, by the
folder of the including file (the longest matching prefix wins). Headers
named *_internal.h are private to their own folder. Before the sources are
in folders by concern (src/kernel/loop/ absent) the same table is applied to
the flat tree through FLAT, which names the folder each flat file moves to.
"""
import os
import re
import sys

# Public headers of the data side: all that results, the matrix language,
# classes, graphics and the windows may include from it.
DATA_PUBLIC = [
    "data/area/dataarea.h", "data/area/storage.h", "data/area/missing.h",
    "data/area/stortype.h", "data/area/memfig.h", "data/area/areacmds.h",
    "data/area/areahooks.h",
    "data/vars/vartab.h", "data/vars/varlist.h", "data/vars/char.h",
    "data/expr/expr.h", "data/sort/sort.h", "data/sort/bystate.h",
    "data/formats/formats.h", "data/formats/dates.h", "data/labels/label.h",
    "data/dta/dta.h", "data/select/generate.h", "data/vars/varcmds.h",
    "data/groups/groups.h",
]
LOWER = ["kernel", "output"]

# folder -> what it may include (folders, or single headers)
RULES = {
    "app": ["*"],
    # the one link point, called at start-up, knows every subsystem
    "kernel/loop/startup.cpp": ["*"],
    "kernel/regex": [],
    # the built-in command table names the handlers of every subsystem
    "kernel/cmds/builtins.cpp": ["*"],
    # the loop and the ado search dispatch class commands and class files
    "kernel/loop/loop.cpp": ["kernel", "data", "output", "class/clslang.h"],
    "kernel/program/adopath.cpp": ["kernel", "data", "output", "class/clslang.h"],
    # the markup engine needs only the break flag from the kernel
    "output/ptl": ["kernel/loop/brk.h"],
    "output": ["kernel", "output"],
    # the kernel and the data side call each other (the kernel's parse fills
    # the varlist); neither reaches up except through hooks
    "kernel": ["kernel", "data", "output"],
    # uniform() draws inline in the evaluator; the generator includes nothing
    "data/expr/exp_xeq.cpp": ["kernel", "data", "output", "results/rng/rng.h"],
    # the distribution functions are numeric helpers of the evaluator, like
    # the one-line ones beside them
    "data/expr/exp_ops.h": ["kernel", "data", "output", "results/distrib/distrib.h"],
    # clear all reaches the stores, the matrix language and the dictionary
    "data/io/clear_cmd.cpp": ["kernel", "data", "output", "results/stores.h", "lumo/lumo.h",
                              "lumo/objects/mobj.h"],
    # file read puts binary values into scalars of the matrix store
    "data/io/file_cmd.cpp": ["kernel", "data", "output", "results/matrix/matrix.h"],
    "data/io": ["kernel", "data", "output"],
    # data-management commands: reshaping, recoding, conversions
    "data/manage": ["kernel", "data", "output"],
    "data": ["kernel", "data", "output"],
    "results": LOWER + ["results", "lumo/lumo.h"] + DATA_PUBLIC,
    "lumo": LOWER + ["results", "lumo"] + DATA_PUBLIC,
    # object files, libraries and matrix files of the matrix language
    "lumo/io": LOWER + ["results", "lumo"] + DATA_PUBLIC,
    "class": LOWER + ["results", "lumo", "class"] + DATA_PUBLIC,
    "graphics": LOWER + ["results", "class", "graphics"] + DATA_PUBLIC,
    "ui": LOWER + ["results", "lumo", "class", "graphics", "ui"] + DATA_PUBLIC,
}

# flat name -> new folder, for the check before the move (only what the
# table must tell apart: the markup engine and the regular expressions)
FLAT = {
    "kernel/brk.h": "kernel/loop/brk.h",
    "kernel/regex.cpp": "kernel/regex/regex.cpp",
    "kernel/regex.h": "kernel/regex/regex.h",
    "kernel/startup.cpp": "kernel/loop/startup.cpp",
    "kernel/link.h": "app/link.h",
    "kernel/link.cpp": "app/link.cpp",
    "kernel/builtins.cpp": "kernel/cmds/builtins.cpp",
    "kernel/loop.cpp": "kernel/loop/loop.cpp",
    "kernel/adopath.cpp": "kernel/program/adopath.cpp",
    "data/exp_xeq.cpp": "data/expr/exp_xeq.cpp",
}


def flat_to_new(path):
    if path in FLAT:
        return FLAT[path]
    for pub in DATA_PUBLIC:  # data/x.h of the flat tree is data/<folder>/x.h
        if path == "data/" + os.path.basename(pub):
            return pub
    base = os.path.basename(path)
    if path.startswith("output/") and (base.startswith("ptl") or base == "tpl.cpp"):
        return "output/ptl/" + base
    return path


def allowed(src, inc):
    if inc == "app/link.h":
        return True  # each subsystem declares its link function there
    keys = sorted((k for k in RULES if src == k or src.startswith(k + "/")), key=len, reverse=True)
    if not keys:
        return True  # a folder the table does not know yet
    for a in RULES[keys[0]]:
        if a == "*" or inc == a or inc.startswith(a + "/"):
            return True
    return False


def main():
    top = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")
    src = os.path.join(top, "src")
    flat = not os.path.isdir(os.path.join(src, "kernel", "loop"))
    bad = []
    for root, _, files in os.walk(src):
        for f in files:
            if not f.endswith((".cpp", ".h", ".c")):
                continue
            path = os.path.relpath(os.path.join(root, f), src)
            me = flat_to_new(path) if flat else path
            with open(os.path.join(root, f), encoding="utf-8", errors="replace") as fh:
                for n, line in enumerate(fh, 1):
                    m = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
                    if not m:
                        continue
                    inc = flat_to_new(m.group(1)) if flat else m.group(1)
                    if os.path.dirname(inc) == os.path.dirname(me):
                        continue
                    if inc.endswith("_internal.h"):
                        bad.append(f"{path}:{n}: {m.group(1)} is private to its folder")
                    elif not allowed(me, inc):
                        bad.append(f"{path}:{n}: may not include {m.group(1)}")
    if bad:
        print("include rules broken:")
        print("\n".join(sorted(bad)))
        return 1
    print("include rules hold (%s tree)" % ("flat" if flat else "folder"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
