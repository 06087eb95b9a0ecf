* Date functions and literals; day numbers count from 01jan1960 (python3
* datetime: 01jan2000 is day 14610, day 15000 is 25jan2001).
error !(mdy(1,1,2000) == 14610 & mdy(1,1,1960) == 0 & mdy(2,30,2000) == .)
error !(d(1jan2000) == 14610 & d(31dec1959) == -1)
error !(dow(0) == 5 & dow(14610) == 6)
error !(year(15000) == 2001 & month(15000) == 1 & day(15000) == 25 & doy(15000) == 25)
error !(m(2000m3) == 482 & q(2000q2) == 161 & h(2000h2) == 81 & y(2000) == 2000)
error !(ym(2000,1) == 480 & yq(2000,1) == 160 & dofm(480) == 14610 & mofd(14610) == 480)
error !(qofd(14610) == 160 & dofy(2000) == 14610 & halfyear(mdy(7,1,2000)) == 2)
error !(date("1jan2000","dmy") == 14610 & monthly("2000m3","ym") == 482)
error !(week(mdy(1,1,2000)) == 1 & quarter(mdy(5,1,2000)) == 2)
capture noisily display d(32jan2000)
error _rc != 198
display "test completed"
