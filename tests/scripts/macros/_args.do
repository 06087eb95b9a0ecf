display `"0=[`0'] 1=[`1'] 2=[`2'] 3=[`3']"'
macro shift
display `"after shift: 1=[`1'] 2=[`2'] 3=[`3']"'
display `"all: `*'"'
