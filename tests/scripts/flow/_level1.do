display "level 1"
do _level2
display "not reached in level 1"
