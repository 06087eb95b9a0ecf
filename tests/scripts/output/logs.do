* In batch the session log is the unnamed log: log query shows it, and a
* second unnamed log is refused with 604.
log query
capture noisily log using other.log, replace
if _rc != 604 error 9
* A session recorded as ptag, paused and resumed, then translated to text:
* messages and codes through capture, quietly and noisily in both forms.
log using session.ptag, replace name(s)
display "in the log"
capture noisily error 198
quietly display "hidden by quietly"
quietly noisily display "shown by noisily"
capture noisily nosuchcommand
display as error "an error line" as text " then text" as result " then a result"
log off s
display "not in the log"
log off s
log on s
display "{braces} are text here"
log query s
log close s
capture noisily log close s
if _rc != 111 error 9
type session.ptag
translate session.ptag session.log
type session.log
log using text2, text replace name(t)
display "a text log"
log close t
type text2.log
capture noisily log using text2.log, name(t)
if _rc != 602 error 9
capture noisily log bogus
if _rc != 198 error 9
display "test completed"
