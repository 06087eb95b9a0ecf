*! version 1.0.0  Wald tests of linear hypotheses after an estimation
program define test
    version 9.2
    _test `0'
end
