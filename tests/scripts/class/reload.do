* Class files are read from the ado path on first use and again after discard
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;ado"
mkdir ado
copy cls/counter_v1.txt ado/counter.class
.c = .counter.new
assert `.c.step' == 1
.c.bump
assert `.c.n' == 1
* a second instance comes from the loaded definition, not from the file
copy cls/counter_v2.txt ado/counter.class, replace
.d = .counter.new
assert `.d.step' == 1
discard
* discard forgets objects and classes; the next use reads the new file
capture .c.bump
assert _rc == 4012
.e = .counter.new
assert `.e.step' == 5
.e.bump
.e.bump
assert `.e.n' == 10
display "test completed"
