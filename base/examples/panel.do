* The synthetic panel: 500 firms observed yearly 2001-2010 (5000
* observations), with a fixed seed so that every build gives the same data.
*   firm    1..500, in 10 regions (region = mod(firm - 1, 10) + 1)
*   year    2001..2010
*   size    firm effect: 50 + 50 * uniform(), drawn once per firm
*   x       uniform() * 10
*   y       2 + 0.5 * x + size / 25 + 0.2 * (year - 2000) + noise, the noise
*           a sum of 12 uniforms less 6 (close to a standard normal)
clear
set seed 20261123
set obs 5000
generate int firm = int((_n - 1) / 10) + 1
generate int year = 2001 + mod(_n - 1, 10)
generate byte region = mod(firm - 1, 10) + 1
generate double u = uniform()
generate double size = 50 + 50 * u[_n - mod(_n - 1, 10)]
drop u
generate double x = 10 * uniform()
generate double e = 0
forvalues k = 1/12 {
    quietly replace e = e + uniform()
}
generate double y = 2 + 0.5 * x + size / 25 + 0.2 * (year - 2000) + e - 6
drop e
label variable firm "Firm"
label variable year "Year"
label variable region "Region"
label variable size "Firm size (fixed per firm)"
label variable x "Regressor"
label variable y "Outcome"
label data "Synthetic firm panel, 500 firms x 10 years"
save panel.dta, replace
