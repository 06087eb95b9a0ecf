# Two-stage least squares by hand in R for tests/scripts/regress/iv.do:
# b = (X'PzX)^-1 X'Pz y, V = s^2 (X'PzX)^-1, s^2 = RSS/(n - 3) with the residuals
# y - Xb. Prints b, the standard errors and the RSS.
n <- 30; i <- 1:n
z1 <- (i * 7) %% 11; z2 <- (i * 5) %% 13
x1 <- z1 + 0.5 * z2 + ((i * 3) %% 7) / 4
x2 <- i
y <- 1 + 2 * x1 - x2 + ((i * 13) %% 17) / 3
X <- cbind(x1, x2, 1); Z <- cbind(z1, z2, x2, 1)
Pz <- Z %*% solve(crossprod(Z)) %*% t(Z)
A <- t(X) %*% Pz %*% X
b <- solve(A, t(X) %*% Pz %*% y)
e <- y - X %*% b
s2 <- sum(e^2) / (n - 3)
cat(sprintf("%.17g", b), "\n")
cat(sprintf("%.17g", sqrt(diag(s2 * solve(A)))), "\n")
cat(sprintf("%.17g", sum(e^2)), "\n")
