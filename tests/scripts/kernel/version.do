* Version numbers: the forms #, #.#, #.##, ##.#, ##.##; more digits are an
* invalid number (198), however many there are, and a number above this
* edition's is refused with 9. The version in force is unchanged by a
* refusal.
version 8.2
foreach t in 9999999999 99999999999999999999 123 1.234 {
    capture version `t'
    if _rc != 198 {
        display as error "version `t' gave " _rc
        exit 9
    }
}
foreach t in 10 9.3 92 {
    capture version `t'
    if _rc != 9 {
        display as error "version `t' gave " _rc
        exit 9
    }
}
version
display "test completed"
