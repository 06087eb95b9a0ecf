* The classes coded for the graphics layer: style and grid
set obs 1
class holder {
}
class textbox {
    string color = "black"
    double size = 10
}, inherit(style)
* a scheme: styles by class, each an object with the attributes to take
.__SCHEME = .holder.new
.__SCHEME.Declare holder textbox
.__SCHEME.textbox.Declare textbox heading
.__SCHEME.textbox.heading.color = "blue"
.__SCHEME.textbox.heading.size = 14
.__SCHEME.textbox.Declare textbox small
.__SCHEME.textbox.small.size = 6
.t = .textbox.new
assert "`.t.color'" == "black" & `.t.size' == 10
.t.setstyle heading
assert "`.t.color'" == "blue" & `.t.size' == 14
assert "`.t.stylename'" == "heading"
* the scheme changes; restyling reads it again
.__SCHEME.textbox.heading.size = 16
.t._restyle
assert `.t.size' == 16
.t.setstyle , style(small)
assert `.t.size' == 6 & "`.t.color'" == "black"
* a style the scheme does not have leaves the attributes as they are
.t.setstyle nosuch
assert `.t.size' == 6 & "`.t.stylename'" == "nosuch"
.t._populate_stylenames
assert `.t.stylenames.arrnels' == 2
assert "`.t.stylenames[1]'" == "heading" & "`.t.stylenames[2]'" == "small"
* grid: cells by row and column
.g = .grid.new
.g.dims 2 3
assert `.g.nrows' == 2 & `.g.ncols' == 3
.g.put 2 3 7
.g.put 1 1 "corner"
assert `.g.get 2 3' == 7
assert "`.g.get 1 1'" == "corner"
assert "`.g.get 1 2'" == ""
* row 2, column 3 is the sixth cell row-wise
assert `.g.cells[6]' == 7
capture .g.put 3 1 0
assert _rc == 4001
display "test completed"
