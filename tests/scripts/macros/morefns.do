* The extended macro functions label, display, log, properties, tsnorm and
* permname, each result compared with the text worked out by hand.
program define chk
    args got want
    if `"`got'"' != `"`want'"' {
        display as error `"got [`got'], want [`want']"'
        exit 9
    }
end
set obs 2
generate g = _n
label define gl 1 "one" 2 "two, longer" .a "refused"
label values g gl
* label: the text of a value, cut to a length; an unlabelled value is itself
* unless strict; through a variable's label; the longest text
local a : label gl 2
chk "`a'" "two, longer"
local a : label gl 2 3
chk "`a'" "two"
local a : label gl 7
chk "`a'" "7"
local a : label gl 7, strict
chk "`a'" ""
local a : label (g) 1
chk "`a'" "one"
local a : label gl .a
chk "`a'" "refused"
local a : label gl maxlength
chk "`a'" "11"
generate h = 5
local a : label (h) 5
chk "`a'" "5"
capture local a : label nolab 1
chk "`=_rc'" "111"
* display: what display shows, nothing printed
local d : display %5.2f 3.14159 " and " 2+2
chk "`d'" " 3.14 and 4"
local d : di "x" "y"
chk "`d'" "xy"
quietly {
    local d : display "under quietly"
}
chk "`d'" "under quietly"
* log: the batch log is the unnamed log
local l : log
chk "`l'" "on"
local l : log filename
local here : pwd
chk "`l'" "`here'/morefns.log"
local l : log type
chk "`l'" "text"
local l : log status nosuchlog
chk "`l'" ""
log using named.log, name(second) text
local l : log type second
chk "`l'" "text"
log off second
local l : log status second
chk "`l'" "off"
log close second
* properties of a program; 111 for none
program define pp, properties(swml svyb)
    display "pp"
end
local p : properties pp
chk "`p'" "swml svyb"
capture local p : properties nosuch
chk "`=_rc'" "111"
* tsnorm: lags and leads summed, counts of one left out, then a dot
local t : tsnorm l2.d
chk "`t'" "L2D."
local t : tsnorm ld.gnp, varname
chk "`t'" "LD.gnp"
local t : tsnorm l.l.f
chk "`t'" "L."
local t : tsnorm fd2s12
chk "`t'" "FD2S12."
capture local t : tsnorm q.x
chk "`=_rc'" "198"
* permname: the suggestion when free, else a number added within the length
generate x = 1
generate x0 = 1
local n : permname x
chk "`n'" "x1"
local n : permname newname
chk "`n'" "newname"
local n : permname abcdefgh, length(4)
chk "`n'" "abcd"
generate abcd = 1
local n : permname abcdefgh, length(4)
chk "`n'" "abc0"
local n : permname _n
chk "`n'" "_n0"
display "test completed"
