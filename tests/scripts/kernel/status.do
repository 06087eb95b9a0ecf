* A failing command prints its status line; the do-file stops there.
capture noisily do _status
display "test completed"
