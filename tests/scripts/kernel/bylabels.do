* The headers of by show the value label of a labelled variable, whole even
* when longer than the display format, and the formatted value where the
* label has no text for it; unlabelled variables show their values.
input g h
1 5
1 5
2 6
3 7
end
label define gl 1 "first group, a label longer than the format" 2 "second"
label values g gl
sort g
by g: list h, noobs
by g h, sort: list h, noobs
label values g
by g: list h, noobs
display "test completed"
