* input naming a new variable fills observations 1 to N of the data there,
* then adds observations; each line is prompted with its observation number,
* and a line refused is asked for again under the same number (and the
* command ends with 198 to say that one was refused)
set obs 2
generate x = _n * 10
capture noisily input y str3 s
1.5 "a"
2.5
2.5 "b"
3.5 "c"
end
list
* naming only variables already there adds observations behind the data
input x y
40 4.5
end
list
display "test completed"
