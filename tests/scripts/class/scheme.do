* Schemes: styles read from a file on the ado path the first time a style is
* asked for, with included schemes and classes' defaults behind them
* assert checks each observation: one is needed
set obs 1
global S_ADO "$S_ADO;cls;schemes"
.t = .textbox.new
assert "`.t.color'" == "black" & `.t.size' == 10 & "`.t.font'" == "sans"
* the first style read loads default.scheme, which includes basestyles.scheme
.t.setstyle heading
* color from the included file, size from the including file's later line
assert "`.t.color'" == "blue" & `.t.size' == 16 & "`.t.font'" == "sans"
* a style names some attributes: the others are the class's defaults
.t.setstyle small
assert "`.t.color'" == "black" & `.t.size' == 6
* a quoted value keeps its blank; `.' is a missing value
.t.setstyle note
assert "`.t.color'" == "dark gray" & `.t.size' == .
* a level that is no class's holds its values as they are
assert `.__SCHEME.system.naturally_white' == 1
assert "`.__SCHEME.textbox.heading.classname'" == "textbox"
* the style names, in the order the scheme gave them
.t._populate_stylenames
assert `.t.stylenames.arrnels' == 3
assert "`.t.stylenames[1]'`.t.stylenames[2]'`.t.stylenames[3]'" == "headingsmallnote"
* a scheme changed by hand is what restyling reads
.__SCHEME.textbox.note.size = 9
.t._restyle
assert `.t.size' == 9
* after discard the scheme is read again from its file
discard
.u = .textbox.new
.u.setstyle note
assert `.u.size' == . & "`.u.color'" == "dark gray"
display "test completed"
