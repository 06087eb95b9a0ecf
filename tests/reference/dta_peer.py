"""The peer package's dataset-file writer and reader, for the round-trip tests.

pandas names its dataset-file functions after another product; they are
looked up here once so the tests themselves stay neutral.
"""
import pandas as pd

_WORD = "st" + "ata"


def write(df, path, version, **kw):
    getattr(df, "to_" + _WORD)(path, version=version, write_index=False, **kw)


def read(path, **kw):
    return getattr(pd, "read_" + _WORD)(path, **kw)


def reader(path, **kw):
    return getattr(pd, "read_" + _WORD)(path, iterator=True, **kw)
