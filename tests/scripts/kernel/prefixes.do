* quietly, noisily and capture stack in any order.
quietly display "hidden"
quietly noisily display "shown by noisily"
noisily quietly display "hidden again"
capture display "hidden by capture"
capture noisily display "capture noisily shows"
quietly capture noisily display "still shown"
quietly: display "colon stepped over"
quietly display as error "errors pass quietly"
capture noisily error 111
capture noisily quietly error 198
* a command that changes the threshold on purpose keeps it
quietly set output proc
display "shown: output proc kept"
set output error
display "hidden under output error"
display as error "errors still shown"
set output inform
display as text "text shown under inform"
display "results hidden under inform"
set output proc
capture error 2000
error 0
display "after error 0"
display "test completed"
