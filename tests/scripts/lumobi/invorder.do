* invsym() with an order of positions to sweep first, and the top year of
* the text-to-date functions, against values worked by hand. A = X'X for
* X = (1, 1, 2 \ 1, 2, 4 \ 1, 3, 6 \ 1, 4, 8), whose third column is twice
* the second: sweeping 2 first keeps columns 1 and 2, whose block
* (4, 10 \ 10, 30) has the inverse (1.5, -0.5 \ -0.5, 0.2); by the largest
* diagonal 3 is kept instead, and (4, 20 \ 20, 120) has the inverse
* (1.5, -0.25 \ -0.25, 0.05).
lumo
function t(real scalar ok, string scalar what)
{
    if (!ok) _error(3498, what)
}
function near(real matrix a, real matrix b)
{
    return(rows(a) == rows(b) & cols(a) == cols(b) & mreldif(a, b) < 1e-12)
}
A = (4, 10, 20 \ 10, 30, 60 \ 20, 60, 120)
keep12 = (1.5, -0.5, 0 \ -0.5, 0.2, 0 \ 0, 0, 0)
keep13 = (1.5, 0, -0.25 \ 0, 0, 0 \ -0.25, 0, 0.05)
t(near(invsym(A), keep13), "by the largest diagonal")
t(near(invsym(A, 2), keep12), "2 first")
t(near(invsym(A, (2, 1)), keep12), "2 then 1")
t(near(invsym(A, (2 \ 1)), keep12), "a column of positions")
t(near(invsym(A, 3), keep13), "3 first")
t(near(invsym(A, J(1, 0, .)), keep13), "an empty order")
B = A
_invsym(B, 2)
t(near(B, keep12), "_invsym in place")
M = (4, 2 \ 2, 3)
t(near(invsym(M, (2, 1)), (3, -2 \ -2, 4) / 8), "full rank in any order")
q = char(34)
t(_korvu("lumo: invsym(A, 4)") == 3300, "position beyond")
t(_korvu("lumo: invsym(A, (1, 1))") == 3300, "position twice")
t(_korvu("lumo: invsym(A, 1.5)") == 3300, "not a whole number")
t(_korvu("lumo: invsym(A, (1, 2 \ 3, 1))") == 3201, "a matrix of positions")
t(_korvu("lumo: invsym(A, " + q + "1" + q + ")") == 3253, "text for the order")
// two-digit years up to the top year
t(date("1jan45", "DMY", 2020) == mdy(1, 1, 1945), "45 before 2020")
t(date("1jan15", "DMY", 2020) == mdy(1, 1, 2015), "15 before 2020")
t(date("1jan20", "DMY", 2020) == mdy(1, 1, 2020), "the top year itself")
t(date("1jan21", "DMY", 2020) == mdy(1, 1, 1921), "one past the top year")
t(date("31dec2099", "DMY", 2020) == mdy(12, 31, 2099), "four digits as they stand")
t(date("1jan15", "DM19Y", 2020) == mdy(1, 1, 1915), "a century in the order wins")
t(date(("1jan45", "5 7 99" \ "nonsense", "1jan00"), "DMY", 1950) == (mdy(1, 1, 1945), mdy(7, 5, 1899) \ ., mdy(1, 1, 1900)), "a matrix")
t(monthly("45m3", "YM", 2000) == ym(1945, 3), "monthly")
t(quarterly("07q4", "YQ", 2000) == yq(1907, 4), "quarterly")
t(yearly(("99", "49"), "Y", 2050) == (1999, 2049), "yearly")
t(weekly("60w2", "YW", 2059) == yw(1960, 2), "weekly")
t(halfyearly("1h60", "HY", 2060) == yh(2060, 1), "halfyearly")
t(date("1jan45", "DMY") == ., "no top year: a year of two digits is missing")
t(_korvu("lumo: date(" + q + "1jan45" + q + ", " + q + "DMY" + q + ", 50)") == 3300, "top year below 100")
end
display "test completed"
