* macro shift and the arguments of a do-file.
do _args.do first second "third word"
display "test completed"
