* Commands found along the ado path
global S_ADO "ado;ado2;BASE"
myado one two
program dir
* a global program and two files each with a subprogram of the same name
program define check
    display "global check: `0'"
end
shadow
twin
check typed
program dir
* a file that doesn't define its command, and a command that isn't anywhere
capture noisily nodef
capture noisily notthere
capture noisily 1x
* which
which myado
which myado, all
which display
which su
capture noisily which notthere
capture noisily which myado.xyz
capture noisily which myado.hlp
* discard forgets loaded programs; the next use reads the file again
copy ado/v1.txt ado/reload.ado
reload
copy ado/v2.txt ado/reload.ado, replace
reload
discard
reload
program dir
* codewords stand for the directories that sysdir sets
sysdir set PERSONAL "ado2"
display "`: sysdir PERSONAL'"
global S_ADO "PERSONAL"
which myado
capture noisily sysdir set NOSUCH "x"
capture noisily sysdir bogus
* the limit on ado programs
set adosize 10
capture noisily set adosize 5
set adosize 500
display "test completed"
