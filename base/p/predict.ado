*! version 1.0.0  predictions after an estimation, by the estimator's own program
program define predict
    version 9.2
    if `"`e(predict)'"' == "" {
        error 301
    }
    `e(predict)' `0'
end
