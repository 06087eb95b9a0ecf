* include runs in the caller's scope; do gets a scope of its own, and
* c_local reaches one scope up.
do _setlocal
display "after do: [`fromfile'] [`upone']"
local upone
include _setlocal
display "after include: [`fromfile']"
do _args first "second word" `"third "quoted""' "" fifth
capture noisily include _setlocal extra
if _rc != 198 exit 9
display "test completed"
