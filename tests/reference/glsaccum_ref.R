# Reference for tests/scripts/matrix/glsaccum.do: sum over groups of
# X_g' W[r_g, r_g] X_g, by plain matrix products in R.
# Run: Rscript tests/reference/glsaccum_ref.R
i <- 1:9
g <- c(1, 1, 2, 2, 2, 3, 3, 3, 3)
r <- c(1, 2, 1, 2, 3, 1, 2, 3, 4)
x1 <- i^2 / 3
x2 <- (i * 5) %% 7
W <- matrix(c(4, 1, 0.5, 0, 1, 3, 1, 0.25, 0.5, 1, 2, 1, 0, 0.25, 1, 5), 4, 4)
X <- cbind(x1, x2, 1)
A <- matrix(0, 3, 3)
for (h in unique(g)) {
  Xh <- X[g == h, , drop = FALSE]
  Wh <- W[r[g == h], r[g == h]]
  A <- A + t(Xh) %*% Wh %*% Xh
}
cat(sprintf("%.17g", A), "\n")
