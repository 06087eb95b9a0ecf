* Trace shows each program line as read ("-") and, when expansion changed
* it, the line as run ("="), inside blocks and loops too; lines skipped in a
* false block carry no mark; a nested program is indented one step more and
* stands between its dividers. With traceexpand off only the "-" lines.
program define inner
    display "inner `1'"
end
program define tp
    local a 1
    display "a=`a'"
    if `a' == 1 {
        display "in `a'"
    }
    if `a' == 2 {
        display "never `a'"
    }
    foreach x in p q {
        inner `x'
    }
end
set trace on
tp
set traceexpand off
tp
set traceexpand on
* a loop typed in the do-file runs one level down, and is traced
forvalues i = 1/2 {
    display "i=`i'"
}
set trace off
tp
display "test completed"
