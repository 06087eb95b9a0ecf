* Extended macro functions.
local s "the quick brown fox jumps"
local n : word count `s'
local w3 : word 3 of `s'
local len : length local s
display "`n' words; third `w3'; length `len'"
local l1 "a b a c b"
local l2 "c a b"
local l3 "  a   b  "
local l4 "b c d"
local l5 "b"
local u : list uniq l1
local d : list dups l1
local o : list sort l2
local r : list retokenize l3
local un : list l2 | l4
local in : list l2 & l4
local mi : list l2 - l5
local eq : list l2 === l2
local ne : list l2 == l1
display "`u' | `d' | `o' | [`r'] | `un' | `in' | `mi' | `eq' | `ne'"
local sub : subinstr local s "o" "0", all
display "`sub'"
local p : piece 2 10 of "`s'"
display "`p'"
local f : dir . files "_*.do"
local f : list sort f
display `"`f'"'
local dq : list local (l2) | global (nosuch)
display "[`dq']"
display "test completed"
