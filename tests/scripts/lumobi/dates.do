* Date functions of the matrix language against the data side's functions
* of the same names on the same values, and a few worked by hand
* (01jan1960 is day 0; 29feb2000 is day 14669).
drop _all
set obs 9
generate double d = (_n - 5) * 4567.25
generate double m = (_n - 5) * 97
generate double q = (_n - 5) * 31
generate double h = (_n - 5) * 15
generate double w = (_n - 5) * 413
foreach f in day month year dow doy week quarter halfyear mofd qofd hofd wofd {
    generate double `f'_x = `f'(d)
}
generate double dofm_x = dofm(m)
generate double dofq_x = dofq(q)
generate double dofh_x = dofh(h)
generate double dofw_x = dofw(w)
generate double ym_x = ym(year(d), month(d))
generate double mdy_x = mdy(month(d), day(d), year(d))
lumo
d = kv_data(., "d")
names = ("day", "month", "year", "dow", "doy", "week", "quarter", "halfyear", "mofd", "qofd", "hofd", "wofd")
for (k = 1; k <= cols(names); k++) {
    got = (names[k] == "day" ? day(d) : names[k] == "month" ? month(d) : names[k] == "year" ? year(d) : names[k] == "dow" ? dow(d) : names[k] == "doy" ? doy(d) : names[k] == "week" ? week(d) : names[k] == "quarter" ? quarter(d) : names[k] == "halfyear" ? halfyear(d) : names[k] == "mofd" ? mofd(d) : names[k] == "qofd" ? qofd(d) : names[k] == "hofd" ? hofd(d) : wofd(d))
    if (got != kv_data(., names[k] + "_x")) _error(3498, names[k])
}
if (dofm(kv_data(., "m")) != kv_data(., "dofm_x")) _error(3498, "dofm")
if (dofq(kv_data(., "q")) != kv_data(., "dofq_x")) _error(3498, "dofq")
if (dofh(kv_data(., "h")) != kv_data(., "dofh_x")) _error(3498, "dofh")
if (dofw(kv_data(., "w")) != kv_data(., "dofw_x")) _error(3498, "dofw")
if (ym(year(d), month(d)) != kv_data(., "ym_x")) _error(3498, "ym")
if (mdy(month(d), day(d), year(d)) != kv_data(., "mdy_x")) _error(3498, "mdy")
// by hand
if (mdy(2, 29, 2000) != 14669 | mdy(1, 1, 1960) != 0 | mdy(2, 30, 2000) != .) _error(3498, "mdy by hand")
if (dow(0) != 5 | year(14669) != 2000 | doy(14669) != 60) _error(3498, "parts by hand")
if (date("29feb2000", "DMY") != 14669 | date(("1jan1960" \ "nonsense"), "DMY") != (0 \ .)) _error(3498, "date")
end
display "test completed"
