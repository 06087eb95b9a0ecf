* Width against length in the smallest data area. set memory 100k is a block
* of 102400 bytes: (102400 - 16) / 204 = 501 slots of 200 bytes. With 501
* observations the record cannot widen: a wider record w leaves room for
* 102384 / (w + 4) observations, 497 at w = 202. So variables fit only in
* the 200 bytes there are, one byte held back; a promotion may take the last
* byte, and compress gives bytes back.
quietly set memory 100k
set obs 501
generate double x = _n
generate str189 s = "s" + string(_n)
generate byte b = mod(_n, 7)
generate byte c = mod(_n, 11)
quietly memory
assert r(N_cur) == 501 & r(w_cur) == 200 & r(width) == 199
* 199 bytes used: a byte more reaches the held-back byte
capture noisily generate byte d = 1
assert _rc == 902
* promotion from byte to int takes the last byte; the next finds no room
replace b = 1000 in 1
quietly memory
assert r(width) == 200
capture noisily replace c = 1000 in 1
assert _rc == 903
assert c[1] == 1 & c[501] == mod(501, 11)
* x holds 1..501: compress makes it an int and gives back 6 bytes
compress x
quietly memory
assert r(width) == 194
generate str5 t = "t"
capture noisily generate byte d = 1
assert _rc == 902
* the cells came through every change intact
assert x == _n
assert s == "s" + string(_n)
assert b == cond(_n == 1, 1000, mod(_n, 7))
assert c == mod(_n, 11)
assert t == "t"
* one more observation: no room at this width
capture noisily set obs 502
assert _rc == 901
display "test completed"
