# References for regress's tsscons and means options, by lm and by hand.
# Data as in tests/scripts/regress/options_tss_means.do.
n <- 30
i <- 1:n
x1 <- i
x2 <- (i * 7) %% 11
y <- 1 + 0.5 * x1 - 2 * x2 + ((i * 13) %% 17) / 3
w <- i %% 4 + 1
p <- function(...) cat(sprintf("%.17g", c(...)), "\n")
# no constant, sums of squares about the mean: compared with y ~ 1
f <- lm(y ~ x1 + x2 - 1)
f0 <- lm(y ~ 1)
rss <- sum(resid(f)^2)
tss <- sum((y - mean(y))^2)
a <- anova(f0, f)
cat("nocons tsscons: rss tss mss r2 r2_a F df_m df_r\n")
p(rss, tss, tss - rss, 1 - rss / tss, 1 - (1 - (1 - rss / tss)) * (n - 1) / f$df.residual,
  a$F[2], a$Df[2], f$df.residual)
cat("ll ll_0\n")
p(as.numeric(logLik(f)), as.numeric(logLik(f0)))
cat("coef\n")
p(coef(f))
# a fit worse than the mean: R-squared about the mean is negative
yn <- 40 - x1
f2 <- lm(yn ~ x1 - 1)
cat("yn on x1: 1 - rss/tss, rss, ll, ll_0\n")
p(1 - sum(resid(f2)^2) / sum((yn - mean(yn))^2), sum(resid(f2)^2),
  as.numeric(logLik(f2)), as.numeric(logLik(lm(yn ~ 1))))
# means, unweighted and with analytic weights, over a subsample
cat("means\n")
p(mean(x1), mean(x2))
s <- x2 > 2
cat("weighted means if x2 > 2\n")
p(weighted.mean(x1[s], w[s]), weighted.mean(x2[s], w[s]))
