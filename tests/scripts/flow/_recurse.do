run _recurse
