* help files in the older layout, redirects, included pages, an alias
* file on the ado path, and search through keywords
help hredir
help hold
help hinc
help hx
capture noisily help hcyca
if _rc != 111 error 9
search zebra
set linesize 40
help hinc
display "test completed"
