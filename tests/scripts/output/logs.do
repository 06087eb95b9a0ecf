* A session recorded as ptag, paused and resumed, then translated to text:
* messages and codes through capture, quietly and noisily in both forms.
log using session.ptag, replace
display "in the log"
capture noisily error 198
quietly display "hidden by quietly"
quietly noisily display "shown by noisily"
capture noisily nosuchcommand
display as error "an error line" as text " then text" as result " then a result"
log off
display "not in the log"
log off
log on
display "{braces} are text here"
log query
log close
capture noisily log close
type session.ptag
translate session.ptag session.log
type session.log
log using text2, text replace
display "a text log"
log close
type text2.log
capture noisily log using text2.log
capture noisily log bogus
display "test completed"
