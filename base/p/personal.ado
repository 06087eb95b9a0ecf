*! version 1.0.0  shows where your own ado-files go
program define personal
    version 9.2
    syntax
    display `"your personal ado-directory is `: sysdir PERSONAL'"'
end
