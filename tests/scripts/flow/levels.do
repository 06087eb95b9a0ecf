* Frames nest 64 deep: the 65th do-file fails with 1000.
capture noisily run _recurse
display "test completed"
