* a lumo: block stops at its first error, and the do-file with it
lumo:
x = 1 +
y = 2
end
display "not reached"
