*! version 1.0.0  shows the help file of a topic in the results
program define help
    version 9.2
    chelp `0'
end
