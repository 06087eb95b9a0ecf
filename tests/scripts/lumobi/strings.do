* String functions on edge cases worked by hand, display formats through
* the data side's engine (compared with the same format in display), and
* the frame's errors.
lumo
function t(real scalar ok, string scalar what)
{
    if (!ok) _error(3498, what)
}
t(strlen(("", "abc")) == (0, 3), "strlen")
t(substr("hello", 2, 3) == "ell", "substr")
t(substr("hello", -3, .) == "llo", "substr from the end")
t(substr("hello", 9, 2) == "", "substr past the end")
t(substr("hello", 0, 2) == "", "substr at 0")
t(strupper("aBc1") == "ABC1" & strlower("aBc1") == "abc1", "case")
t(strtrim("  a  b  ") == "a  b" & stritrim("  a  b  ") == " a b " & strltrim(" a ") == "a ", "trims")
t(strreverse("abc") == "cba" & strreverse("") == "", "reverse")
t(strproper("hELLO wORLD-x") == "Hello World-X", "proper")
t(strpos("banana", "an") == 2 & strpos("banana", "x") == 0 & strpos("", "") == 0, "strpos")
t(indexnot("aab", "a") == 3 & indexnot("aa", "a") == 0, "indexnot")
t(subinstr("aaa", "a", "bb") == "bbbbbb" & subinstr("aaa", "a", "b", 2) == "bba", "subinstr")
t(subinword("a ab a", "a", "x") == "x ab x", "subinword")
t(strmatch("abc", "a*") & strmatch("abc", "?b?") & !strmatch("abc", "b*") & strmatch("", "*"), "strmatch")
t(ascii("AZ") == (65, 90) & char((72, 105)) == "Hi", "ascii and char")
q = char(34)
t(tokens("a  bb " + q + "c d" + q + " e") == ("a", "bb", "c d", "e"), "tokens")
t(tokens("x=1,y", "=,") == ("x", "=", "1", ",", "y"), "tokens with parsing characters")
t(cols(tokens("   ")) == 0, "no tokens")
x = .
t(_strtoreal(("1.5", " 2 ", ".", "abc", "1e3"), x) == 4, "strtoreal position")
t(x[(1, 2, 3, 5)] == (1.5, 2, ., 1000) & x[4] == ., "strtoreal values")
t(regexm("abc123", "[0-9]+") & regexs(0) == "123", "regexm")
t(regexr("a1b2", "[0-9]", "#") == "a#b2", "regexr")
// formats: the same engine as display
t(strofreal(1/3) == ".3333333" & strofreal(1234567, "%12.0fc") == "1,234,567", "strofreal")
t(strofreal(., "%9.2f") == "." & strofreal(-0.001, "%9.2f") == "0.00", "strofreal edges")
t(sprintf("%9.3f|%-5s|%5s|%g", 3.14159, "ab", "cd", 0.25) == "    3.142|ab   |   cd|.25", "sprintf")
t(sprintf("%%|%td", 14669) == "%|29feb2000", "sprintf date")
t(_korvu("lumo: sprintf(" + char(34) + "%9.2f" + char(34) + ", " + char(34) + "x" + char(34) + ")") == 3250, "string for a number")
t(_korvu("lumo: sprintf(" + char(34) + "%9.2f %9.2f" + char(34) + ", 1)") == 3001, "too few arguments")
t(_korvu("lumo: sprintf(" + char(34) + "%q" + char(34) + ", 1)") == 3302, "invalid format")
// the frame: a function where a matrix is needed, types, shapes
t(_korvu("lumo: strlen(1)") == 3250, "type")
t(_korvu("lumo: substr(" + char(34) + "a" + char(34) + ", (1, 2))") == 3204, "scalar required")
t(args() == 0, "args at the prompt")
end
lumo: function ff() { return(1) }
lumo: p = &ff()
capture noisily lumo: rows(*p)
if _rc != 3102 {
    error 9
}
display %9.3f 3.14159 "|" %21.15g 1/3
lumo: printf("%9.3f|%21.15g\n", 3.14159, 1/3)
display "test completed"
