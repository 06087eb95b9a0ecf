* The programs that ship with the system load from BASE along the default path
echo hello "quoted words" and `"compound"'
adopath
personal
which echo
which adopath.hlp
display "test completed"
