* Help topics of several words: the words joined by underscores, else the
* first word's topic; concept pages and their aliases.
quietly help matrix accum
quietly help reshape long
quietly help  tabstat   by
quietly help storage
quietly help missing
quietly help datatypes
capture quietly help no such thing
if !(_rc == 111) exit 9
capture quietly help nosuchtopic
if !(_rc == 111) exit 9
display "test completed"
