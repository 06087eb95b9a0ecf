* leaves in r-free locals the checksums sum(id*_n) and sum(id*_n^2) of the
* present order, through running sums
capture drop c1
capture drop c2
quietly gen double c1 = id*_n
quietly gen double c2 = id*_n*_n
quietly replace c1 = c1 + c1[_n-1] in 2/l
quietly replace c2 = c2 + c2[_n-1] in 2/l
global c1 = c1[_N]
global c2 = c2[_N]
drop c1 c2
