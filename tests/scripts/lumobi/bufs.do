* Binary buffers: numbers and text put into a string and read back, in both
* byte orders, with the bytes worked by hand (258 is 00 00 01 02; 1.0 as a
* double is 3F F0 00 .. 00; 1.5 as a float 3F C0 00 00; the dataset's
* missing codes: . of an int 32741 = 7F E5, .a of a byte 102; float(0.1)
* is 13421773 / 2^27).
lumo
function t(real scalar ok, string scalar what)
{
    if (!ok) _error(3498, what)
}
C = bufio()
t(bufbyteorder(C) == byteorder(), "bufio in the machine's order")
bufbyteorder(C, 1)
t(C[1] == 1, "bufbyteorder sets")
B = "        "
bufput(C, B, 0, "%4bu", 258)
t(ascii(B) == (0, 0, 1, 2, 32, 32, 32, 32), "4bu hilo, the rest untouched")
t(bufget(C, B, 0, "%4bu") == 258, "4bu hilo back")
bufbyteorder(C, 2)
t(bufget(C, B, 0, "%4bu") == 33619968, "hilo bytes read lohi")
bufput(C, B, 0, "%4bu", 258)
t(ascii(bufsub(B, 0, 4)) == (2, 1, 0, 0), "4bu lohi")
t(bufget(C, B, 0, "%4bu") == 258, "4bu lohi back")
bufbyteorder(C, 1)
bufput(C, B, 0, "%2bs", -1)
bufput(C, B, 2, "%2bs", .)
bufput(C, B, 4, "%1bs", .a)
bufput(C, B, 5, "%1bs", 101)
t(ascii(bufsub(B, 0, 6)) == (255, 255, 127, 229, 102, 101), "signed and missing codes")
t(bufget(C, B, 0, "%2bs") == -1 & bufget(C, B, 2, "%2bs") == . & bufget(C, B, 4, "%1bs") == .a & bufget(C, B, 5, "%1bs") == ., "signed back")
bufput(C, B, 0, "%4bs", 2147483620)
bufput(C, B, 4, "%4bs", -2147483647)
t(ascii(B) == (127, 255, 255, 228, 128, 0, 0, 1), "4bs extremes")
t(bufget(C, B, 0, "%4bs", 2) == (2147483620, -2147483647), "4bs back")
bufput(C, B, 0, "%4bs", 2147483621)
t(bufget(C, B, 0, "%4bs") == ., "4bs out of range is missing")
bufput(C, B, 0, "%8z", 1)
t(ascii(B) == (63, 240, 0, 0, 0, 0, 0, 0), "8z 1")
bufput(C, B, 0, "%8z", -2)
t(ascii(B) == (192, 0, 0, 0, 0, 0, 0, 0), "8z -2")
bufput(C, B, 0, "%8z", .b)
t(bufget(C, B, 0, "%8z") == .b, "8z missing")
bufput(C, B, 0, "%4z", 1.5)
bufput(C, B, 4, "%4z", .)
t(ascii(B) == (63, 192, 0, 0, 127, 0, 0, 0), "4z 1.5 and missing")
t(bufget(C, B, 4, "%4z") == ., "4z missing back")
bufput(C, B, 0, "%4z", 0.1)
t(bufget(C, B, 0, "%4z") == 13421773 / 134217728, "4z 0.1")
bufbyteorder(C, 2)
bufput(C, B, 0, "%8z", 1)
t(ascii(B) == (0, 0, 0, 0, 0, 0, 240, 63), "8z lohi")
t(bufget(C, B, 0, "%8z") == 1, "8z lohi back")
// matrices row by row
M = "            "
bufbyteorder(C, 1)
bufput(C, M, 0, "%2bs", (1, 2 \ 3, -4))
t(ascii(bufsub(M, 0, 8)) == (0, 1, 0, 2, 0, 3, 255, 252), "a matrix of 2bs")
t(bufget(C, M, 0, "%2bs", 2, 2) == (1, 2 \ 3, -4), "r x c back")
t(bufget(C, M, 2, "%2bs", 3) == (2, 3, -4), "a row back")
t(bufget(C, M, 0, "%2bs", 0) == J(1, 0, .), "no elements")
// text
S = "xxxxxxxx"
bufput(C, S, 1, "%3s", "abcdef")
bufput(C, S, 4, "%3s", "z")
t(ascii(S) == (120, 97, 98, 99, 122, 0, 0, 120), "text cut and padded")
t(bufget(C, S, 1, "%3s") == "abc" & bufget(C, S, 4, "%3s") == "z", "text back")
t(strlen(bufget(C, S, 4, "%3S")) == 3 & ascii(bufget(C, S, 4, "%3S")) == (122, 0, 0), "bytes back")
t(bufget(C, S, 1, "%1s", 1, 3) == ("a", "b", "c"), "a row of text")
// the machine's own order without C
N = "  "
bufput(N, 0, "%1bu", 200)
bufput(N, 1, "%1bs", -5)
t(ascii(N) == (200, 251), "native bytes")
t(bufget(N, 0, "%1bu") == 200 & bufget(N, 1, "%1b") == -5, "native back")
P = "    "
bufput(P, 0, "%2bu", 258)
t(ascii(bufsub(P, 0, 2)) == (byteorder() == 1 ? (1, 2) : (2, 1)), "native order")
// formats
t(bufbfmtlen("%8z") == 8 & bufbfmtlen("%4z") == 4 & bufbfmtlen("%12s") == 12, "lengths")
t(bufbfmtlen("%2bu") == 2 & bufbfmtlen("%1bs") == 1 & bufbfmtlen("%4b") == 4, "integer lengths")
t(bufbfmtisnum("%4z") == 1 & bufbfmtisnum("%2bu") == 1 & bufbfmtisnum("%5S") == 0 & bufbfmtisnum("%5s") == 0, "isnum")
t(bufsub("abcdef", 2, 3) == "cde" & bufsub("abc", 3, 0) == "", "bufsub")
// failures leave the buffer as it was
q = char(34)
G = "abcdefgh"
t(_korvu("lumo: bufput(C, G, 6, " + q + "%4bu" + q + ", 1)") == 3300, "too short")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%2bu" + q + ", (1, 2, 3, 4, 5))") == 3300, "too many")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%1bu" + q + ", -1)") == 3300, "unsigned below 0")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%2bu" + q + ", 65536)") == 3300, "unsigned too large")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%1bu" + q + ", .)") == 3300, "unsigned missing")
t(G == "abcdefgh", "buffer unchanged by failures")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%3z" + q + ", 1)") == 3302, "bad format")
t(_korvu("lumo: bufbfmtlen(" + q + "%8q" + q + ")") == 3302, "bad format letter")
t(_korvu("lumo: bufget(C, G, 0, " + q + "%8z" + q + ", 2)") == 3300, "read beyond")
t(_korvu("lumo: bufget(C, G, 0, " + q + "%1000s" + q + ", 2147483647, 2147483647)") == 3300, "a huge read")
t(_korvu("lumo: bufput(C, G, 9, " + q + "%1bu" + q + ", J(1, 0, .))") == 3300, "offset beyond the end")
t(_korvu("lumo: bufget(G, 8, " + q + "%1bu" + q + ", 0)") == 0, "no elements at the end")
t(_korvu("lumo: bufget(3, G, 0, " + q + "%1bu" + q + ")") == 3300, "byte order 3")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%4s" + q + ", 1)") == 3250, "number for text")
t(_korvu("lumo: bufput(C, G, 0, " + q + "%4z" + q + ", " + q + "a" + q + ")") == 3253, "text for number")
t(_korvu("lumo: bufsub(" + q + "abc" + q + ", 2, 2)") == 3300, "bufsub beyond")
t(_korvu("lumo: bufbyteorder(C, 3)") == 3300, "bufbyteorder 3")
end
display "test completed"
