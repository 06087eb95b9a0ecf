* Files and directories.
mkdir sub
copy system.do sub/copy.do
capture noisily copy system.do sub/copy.do
copy system.do sub/copy.do, replace
quietly cd sub
type copy.do
erase copy.do
capture noisily erase copy.do
quietly cd ..
rmdir sub
capture noisily type nosuchfile.txt
shell echo from the shell
! echo bang
sleep 10
display "test completed"
