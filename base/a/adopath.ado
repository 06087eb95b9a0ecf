*! version 1.0.0  shows the ado path and the directories behind its codewords
program define adopath
    version 9.2
    syntax
    display `"  S_ADO:  $S_ADO"'
    sysdir list
end
