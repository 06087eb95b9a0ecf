local stop_c exit
foreach w in a b c d {
    display "`w'"
    `stop_`w''
}
display "not reached"
