* Precedence and associativity. Each check fails the script through
* -error- when its test is false; the values were worked out by hand.
* power chains to the left: (2^3)^2
error !(2^3^2 == 64)
error !(1-2+3 == 2)
error !(10-5-2 == 3)
error !(8/2/2 == 2)
* the * row splits before the / row: 8/2*4 is (8/2)*4
error !(8/2*4 == 16)
* 49*1/49 is 49*(1/49), one unit in the last place below 1
error !(49*1/49 != 1)
error !(1 - 49*1/49 < 2e-16)
error !((49*1)/49 == 1)
* the < row splits before != : (2!=0)<1
error !((2!=0<1) == 0)
error !(-2^2 == -4)
error !(- 2 ^ 2 == -4)
error !(2*-3 == -6)
error !(2 - -3 == 5)
error !(2^-1 == .5)
error !(1 | 0 & 0)
error !(!0 + 1 == 2)
error !(1e-5*100000 == 1)
error !(3 - 1e-5 == 2.99999)
error !(1.0x+1 == 2)
error !(1.8x+1 == 3)
error !((1 + 2) * 3 == 9)
error !(((((1)))) == 1)
error !(1 < 2 < 3)
error !("ab" < "b")
error !("a" + "b" == "ab")
display "test completed"
