# Writes tests/scripts/manage/manage_values.do: the same data built here and
# in the do-file, the expected results worked out by R (quantile type 2 for
# percentiles, reshape() for the layouts, factor() for the codes).
# Run from the top of the checkout: Rscript tests/reference/manage_ref.R
out <- file("tests/scripts/manage/manage_values.do", "w")
w <- function(...) cat(..., "\n", sep = "", file = out)
f <- function(x) if (is.na(x)) "." else formatC(x, digits = 17, format = "g")
w("* Written by tests/reference/manage_ref.R; do not edit.")
w("drop _all")
n <- 1:40
g <- n %% 3 + 1
x <- (n * 7) %% 11 - 3
y <- n * 0.5 + (n %% 4) * 1.25
ym <- ifelse(n %% 9 == 0, NA, y)
wt <- n %% 4 + 1
w("set obs 40")
w("gen n = _n")
w("gen g = mod(n, 3) + 1")
w("gen x = mod(n * 7, 11) - 3")
w("gen double y = n * 0.5 + mod(n, 4) * 1.25")
w("gen double ym = y")
w("replace ym = . if mod(n, 9) == 0")
w("gen w = mod(n, 4) + 1")
q2 <- function(v, p) unname(quantile(v, p, type = 2))
stats <- function(v) {
  v <- v[!is.na(v)]
  c(mean(v), sd(v), length(v), sum(v), q2(v, .25), q2(v, .5), q2(v, .75),
    q2(v, .75) - q2(v, .25), min(v), max(v), q2(v, .1), q2(v, .9))
}
# tabstat: overall and by g; r(StatTotal) and r(Stat#), statistics as rows
w("quietly tabstat x ym, statistics(mean sd n sum p25 p50 p75 iqr min max p10 p90) by(g)")
w("matrix T = r(StatTotal)")
for (k in 1:3) w("matrix S", k, " = r(Stat", k, ")")
chk <- function(mat, vx, vy) {
  sx <- stats(vx); sy <- stats(vy)
  for (r in seq_along(sx)) {
    w("error reldif(", mat, "[", r, ",1], ", f(sx[r]), ") > 1e-12")
    w("error reldif(", mat, "[", r, ",2], ", f(sy[r]), ") > 1e-12")
  }
}
chk("T", x, ym)
for (k in 1:3) chk(paste0("S", k), x[g == k], ym[g == k])
w("error \"`r(name2)'\" != \"2\"")
# frequency weights: the statistics of the data with each observation repeated
w("quietly tabstat x ym [fweight = w], statistics(mean sd n sum p25 p50 p75 iqr min max p10 p90)")
w("matrix T = r(StatTotal)")
chk("T", rep(x, wt), rep(ym, wt))
# skewness and kurtosis as moments about the mean
mom <- function(v) { v <- v[!is.na(v)]; m <- mean(v); m2 <- mean((v - m)^2)
  c(mean((v - m)^3) / m2^1.5, mean((v - m)^4) / m2^2, sd(v) / m, sd(v) / sqrt(length(v)), var(v)) }
w("quietly tabstat ym, statistics(skewness kurtosis cv semean variance)")
w("matrix T = r(StatTotal)")
mm <- mom(ym)
for (r in 1:5) w("error reldif(T[", r, ",1], ", f(mm[r]), ") > 1e-12")

# reshape: wide data of 6 units, three years, some values missing
w("drop _all")
id <- 1:6
inc1 <- id * 10 + 1; inc2 <- id * 10 + 2; inc3 <- id * 10 + 3
inc2[c(2, 5)] <- NA
sex <- c(1, 2, 2, 1, 1, 2)
wide <- data.frame(id = rev(id), sex = rev(sex), inc1 = rev(inc1), inc2 = rev(inc2), inc3 = rev(inc3))
w("input id sex inc1 inc2 inc3")
for (r in 1:nrow(wide)) w(paste(sapply(wide[r, ], f), collapse = " "))
w("end")
long <- reshape(wide, direction = "long", varying = c("inc1", "inc2", "inc3"), v.names = "inc",
                timevar = "year", times = 1:3, idvar = "id")
long <- long[order(long$id, long$year), ]
w("reshape long inc, i(id) j(year)")
w("error _N != ", nrow(long), " | c(k) != 4")
w("gen k = _n")
for (r in 1:nrow(long))
  w("assert id == ", f(long$id[r]), " & year == ", f(long$year[r]), " & inc == ", f(long$inc[r]),
    " & sex == ", f(long$sex[r]), " if k == ", r)
w("drop k")
w("reshape wide")
back <- wide[order(wide$id), ]
w("error _N != ", nrow(back), " | c(k) != 5")
w("gen k = _n")
for (r in 1:nrow(back))
  w("assert id == ", f(back$id[r]), " & sex == ", f(back$sex[r]), " & inc1 == ", f(back$inc1[r]),
    " & inc2 == ", f(back$inc2[r]), " & inc3 == ", f(back$inc3[r]), " if k == ", r)
w("drop k")

# encode: codes in alphabetical order of the texts, as factor() gives them
w("drop _all")
txt <- c("pear", "apple", "fig", "apple", "", "kiwi", "fig", "pear")
w("input str8 fruit")
for (t in txt) w("\"", t, "\"")
w("end")
w("encode fruit, generate(code)")
codes <- as.integer(factor(ifelse(txt == "", NA, txt)))
w("gen k = _n")
for (r in seq_along(txt)) w("assert code == ", f(codes[r]), " if k == ", r)
w("decode code, generate(back)")
w("assert back == fruit")
w("display \"test completed\"")
close(out)
