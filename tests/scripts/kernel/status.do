* A failing command prints its status line; the do-file stops there.
display "before"
error 459
display "never"
