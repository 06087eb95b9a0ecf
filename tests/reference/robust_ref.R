# Reference values for tests/scripts/regress/robust_scores.do: the sandwich
# V M V of _robust computed with plain matrix formulas in R.
#   V = (X'X)^-1, u_i = e_i x_i (w_i e_i x_i under pweights)
#   no strata:  M = sum_c u_c u_c', scale (N-1)/(N-m) * n/(n-1), n the PSUs
#               (observations, or clusters), m the minus() number
#   strata:     M = sum_h (1-f_h) n_h/(n_h-1) sum_i (u_hi - ubar_h)(u_hi - ubar_h)'
#               scale (N-1)/(N-m); f_h = fpc when <= 1, else n_h / fpc
# Run: Rscript tests/reference/robust_ref.R
n <- 30
i <- 1:n
x1 <- i
x2 <- (i * 7) %% 11
y <- 1 + 0.5 * x1 - 2 * x2 + ((i * 13) %% 17) / 3
w <- (i %% 4) + 1
g <- i %% 6
st <- i %% 3
fpc <- ifelse(st == 0, 100, ifelse(st == 1, 50, 0.25))
X <- cbind(x1, x2, 1)
p <- function(label, v) cat(sprintf("%s %s\n", label, paste(sprintf("%.17g", v), collapse = " ")))
A <- solve(crossprod(X))
b <- A %*% crossprod(X, y)
e <- as.vector(y - X %*% b)
U <- X * e
sw <- function(M, s) sqrt(diag(A %*% M %*% A) * s)
N <- n
# minus(3), no clusters: the HC1 form
p("hc1", sw(crossprod(U), (N - 1) / (N - 3) * N / (N - 1)))
# default minus(1)
p("m1", sw(crossprod(U), N / (N - 1)))
# cluster, minus(3)
Uc <- rowsum(U, g)
G <- nrow(Uc)
p("cl3", sw(crossprod(Uc), (N - 1) / (N - 3) * G / (G - 1)))
strat <- function(U, s, fp) {
  M <- matrix(0, ncol(U), ncol(U))
  for (h in unique(s)) {
    Uh <- U[s == h, , drop = FALSE]
    nh <- nrow(Uh)
    d <- sweep(Uh, 2, colMeans(Uh))
    f <- 0
    if (!is.null(fp)) { F <- fp[s == h][1]; f <- if (F <= 1) F else nh / F }
    M <- M + (1 - f) * nh / (nh - 1) * crossprod(d)
  }
  M
}
# strata, observations as PSUs, minus(1)
p("st", sw(strat(U, st, NULL), 1))
# strata and fpc
p("stfpc", sw(strat(U, st, fpc), 1))
# strata and clusters (the clusters of g lie within the strata, two in each), minus(3)
gc <- g
Uc <- rowsum(U, gc)
sc <- as.vector(tapply(st, gc, function(v) v[1]))
p("stcl", sw(strat(Uc, sc, NULL), (N - 1) / (N - 3)))
# pweights: weighted fit, u_i = w_i e_i x_i
Aw <- solve(crossprod(X, X * w))
bw <- Aw %*% crossprod(X, w * y)
ew <- as.vector(y - X %*% bw)
Uw <- X * (w * ew)
p("pw", sqrt(diag(Aw %*% crossprod(Uw) %*% Aw) * N / (N - 3)))
