# Reference values for tests/scripts/regress/weights_robust.do, computed with
# R's lm and plain matrix formulas (no sandwich package):
#   HC1      V = n/(n-k) (X'X)^-1 (sum e_i^2 x_i x_i') (X'X)^-1
#   HC2/HC3  e_i^2 / (1 - h_ii) and e_i^2 / (1 - h_ii)^2, no scale factor
#   cluster  V = (n-1)/(n-k) G/(G-1) (X'X)^-1 (sum_g u_g u_g') (X'X)^-1,
#            u_g the sum over the group of e_i x_i
# Weighted forms: aweights scale-free; fweights as replicated rows;
# iweights V = rss_w/(sum w - k) (X'WX)^-1; pweights robust with w_i e_i.
# Run: Rscript tests/reference/regress_ref.R
n <- 30
i <- 1:n
x1 <- i
x2 <- (i * 7) %% 11
y <- 1 + 0.5 * x1 - 2 * x2 + ((i * 13) %% 17) / 3
w <- (i %% 4) + 1
g <- i %% 6
X <- cbind(x1, x2, 1)
k <- ncol(X)
p <- function(label, v) cat(sprintf("%s %s\n", label, paste(sprintf("%.17g", v), collapse = " ")))
# plain
m <- lm(y ~ x1 + x2)
b <- coef(m)[c(2, 3, 1)]
e <- resid(m)
V0 <- solve(crossprod(X))
p("ols_b", b)
p("ols_se", sqrt(diag(V0) * sum(e^2) / (n - k)))
p("ols_rss", sum(e^2))
p("ols_r2", summary(m)$r.squared)
p("ols_F", summary(m)$fstatistic[1])
# HC1
M <- crossprod(X * e)
p("hc1_se", sqrt(diag(n / (n - k) * V0 %*% M %*% V0)))
h <- rowSums((X %*% V0) * X)
p("hc2_se", sqrt(diag(V0 %*% crossprod(X * (e / sqrt(1 - h))) %*% V0)))
p("hc3_se", sqrt(diag(V0 %*% crossprod(X * (e / (1 - h))) %*% V0)))
U <- rowsum(X * e, g)
G <- nrow(U)
Vc <- (n - 1) / (n - k) * G / (G - 1) * V0 %*% crossprod(U) %*% V0
p("cl_se", sqrt(diag(Vc)))
# Wald F of the slopes under the cluster variance
bs <- b[1:2]
p("cl_F", t(bs) %*% solve(Vc[1:2, 1:2]) %*% bs / 2)
# aweights
ma <- lm(y ~ x1 + x2, weights = w)
p("aw_b", coef(ma)[c(2, 3, 1)])
p("aw_se", summary(ma)$coefficients[c(2, 3, 1), 2])
# fweights: the rows replicated
r <- rep(i, w)
mf <- lm(y[r] ~ x1[r] + x2[r])
p("fw_se", summary(mf)$coefficients[c(2, 3, 1), 2])
p("fw_N", length(r))
# iweights
Vw <- solve(t(X) %*% (X * w))
ew <- y - X %*% coef(ma)[c(2, 3, 1)]
p("iw_se", sqrt(diag(Vw) * sum(w * ew^2) / (sum(w) - k)))
# pweights: robust with w_i e_i, the n/(n-k) factor
Mp <- crossprod(X * as.vector(w * ew))
p("pw_se", sqrt(diag(n / (n - k) * Vw %*% Mp %*% Vw)))
# no constant, HC1
X2 <- cbind(x1, x2)
m2 <- lm(y ~ x1 + x2 - 1)
e2 <- resid(m2)
V2 <- solve(crossprod(X2))
p("nc_hc1_se", sqrt(diag(n / (n - 2) * V2 %*% crossprod(X2 * e2) %*% V2)))
