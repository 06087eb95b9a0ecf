* capture of a block: the first code stops the block and is swallowed;
* capture noisily shows what runs.
capture {
    display "hidden"
    error 459
    display "skipped"
}
display "after capture"
capture noisily {
    display "shown"
    error 601
    display "skipped too"
}
display "after capture noisily"
quietly {
    display "quiet"
}
noisily {
    display "a plain block"
    {
        display "nested"
    }
}
display "test completed"
