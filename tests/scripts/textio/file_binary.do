* file: binary values; the bytes are read back one at a time and compared
* with their encodings worked out by hand (IEEE 754, two's complement).
file open b using bin.dat, write binary replace
* 1.5 = 0x3FF8000000000000; -2.25f = 0xC0100000; -5 as 4 bytes; 65535 as 2
* unsigned bytes; 100 as one byte; "ab" in 4 bytes
file write b %8z (1.5) %4z (-2.25) %4bs (-5) %2bu (65535) %1bs (100) %4s ("ab")
file set b byteorder hilo
* 258 = 0x00000102, high byte first; . = 0x7FE0000000000000
file write b %4bs (258) %8z (.)
file close b
local want 0 0 0 0 0 0 248 63  0 0 16 192  251 255 255 255  255 255  100  97 98 0 0  0 0 1 2  127 224 0 0 0 0 0 0
file open b using bin.dat, read binary
local i 0
foreach x of local want {
    local ++i
    file read b %1bu byte
    if r(eof) != 0 exit 9
    if byte != `x' exit 9
}
file read b %1bu byte
if !(r(eof) == 1) exit 9
file seek b 0
file read b %8z a %4z c %4bs d %2bu e %2bs e2
if !(a == 1.5 & c == -2.25 & d == -5 & e == 255 + 256 * 255) exit 9
* the same two bytes signed
file seek b 16
file read b %2bs e2 %1bs f %4s g
if !(e2 == -1 & f == 100 & "`g'" == "ab") exit 9
file set b byteorder 1
file read b %4bs d %8z z
if !(d == 258 & z == .) exit 9
file close b
display "test completed"
