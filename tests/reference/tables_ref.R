# Reference values for tabulate and correlate, computed by R on the same
# data the script builds (R's own chisq.test, fisher.test, cor, cor.test,
# cov.wt, tapply), and gamma by counting pairs of observations directly.
# Writes tests/scripts/tables/tables_values.do.
# Run:  Rscript tests/reference/tables_ref.R   (from the top of the checkout)
n <- 1:60
x <- (n * 7) %% 4 + 1
g <- ((x >= 3) + (n %% 5 == 0) + (n %% 7 == 0) * 2) %% 3
y <- n * 1.5 - (n %% 7) * 2.25
z <- sqrt(n) + (n %% 5)
w <- (n %% 3) + 1
xm <- x; xm[c(5, 17)] <- NA        # x with two missing values
zm <- z; zm[c(9, 17, 33)] <- NA    # z with three

out <- c("* Written by tests/reference/tables_ref.R from R's own tests; do not edit.",
         "* The data, as built in R: n = 1..60",
         "set obs 60",
         "gen n = _n",
         "gen x = mod(n * 7, 4) + 1",
         "gen g = mod((x >= 3) + (mod(n, 5) == 0) + (mod(n, 7) == 0) * 2, 3)",
         "gen double y = n * 1.5 - mod(n, 7) * 2.25",
         "gen double z = sqrt(n) + mod(n, 5)",
         "gen w = mod(n, 3) + 1",
         "gen xm = x",
         "replace xm = . if n == 5 | n == 17",
         "gen double zm = z",
         "replace zm = . if n == 9 | n == 17 | n == 33")
chk <- function(expr, val, tol = 1e-12) {
  out <<- c(out, sprintf("error reldif(%s, %.17g) > %g", expr, val, tol))
}
pairs_gamma <- function(a, b) {
  P <- 0; Q <- 0
  m <- length(a)
  for (i in 1:(m - 1)) for (j in (i + 1):m) {
    s <- sign(a[i] - a[j]) * sign(b[i] - b[j])
    if (s > 0) P <- P + 1
    if (s < 0) Q <- Q + 1
  }
  (P - Q) / (P + Q)
}

# one-way
tx <- table(x)
out <- c(out, "quietly tabulate x, matcell(F)", "error r(N) != 60 | r(r) != 4")
for (k in seq_along(tx)) out <- c(out, sprintf("error F[%d,1] != %d", k, tx[[k]]))
# two-way: Pearson and likelihood-ratio chi-squared, V, gamma, tau-b, Fisher
t2 <- table(x, g)
ct <- chisq.test(t2, correct = FALSE)
E <- ct$expected
lr <- 2 * sum(t2 * log(t2 / E))
out <- c(out, "quietly tabulate x g, chi2 lrchi2 V gamma taub exact",
         "error r(N) != 60 | r(r) != 4 | r(c) != 3")
chk("r(chi2)", ct$statistic)
chk("r(p)", ct$p.value)
chk("r(chi2_lr)", lr)
chk("r(p_lr)", pchisq(lr, ct$parameter, lower.tail = FALSE))
chk("r(CramersV)", sqrt(ct$statistic / (60 * (min(dim(t2)) - 1))))
chk("r(gamma)", pairs_gamma(x, g))
chk("r(taub)", cor(x, g, method = "kendall"))
chk("r(p_exact)", fisher.test(t2)$p.value, 1e-9)
# the asymptotic standard errors by the delta method: numerical gradients of
# gamma and tau-b in the cell proportions, Var = (sum p d^2 - (sum p d)^2) / N
conc <- function(tab) {
  r <- nrow(tab); c <- ncol(tab); P <- 0; Q <- 0
  for (i in 1:r) for (j in 1:c) for (k in 1:r) for (l in 1:c) {
    if (k > i && l > j) P <- P + tab[i, j] * tab[k, l]
    if (k > i && l < j) Q <- Q + tab[i, j] * tab[k, l]
  }
  c(P, Q)
}
fgam <- function(p) { pq <- conc(p); (pq[1] - pq[2]) / (pq[1] + pq[2]) }
ftau <- function(p) {
  pq <- conc(p); s <- sum(p)
  (pq[1] - pq[2]) / sqrt((s^2 - sum(rowSums(p)^2)) * (s^2 - sum(colSums(p)^2)) / 4)
}
ase <- function(f, tab) {
  N <- sum(tab); p <- tab / N; d <- p * 0
  for (k in seq_along(p)) {
    h <- 1e-6; up <- p; dn <- p
    up[k] <- up[k] + h; dn[k] <- dn[k] - h
    d[k] <- (f(up) - f(dn)) / (2 * h)
  }
  sqrt((sum(p * d^2) - sum(p * d)^2) / N)
}
m2 <- matrix(as.numeric(t2), nrow(t2))
chk("r(ase_gam)", ase(fgam, m2), 1e-6)
chk("r(ase_taub)", ase(ftau, m2), 1e-6)
# a 2 x 2 table: signed V, both Fisher probabilities
a2 <- as.integer(x <= 2); b2 <- as.integer(g == 0)
t22 <- table(a2, b2)
ct2 <- chisq.test(t22, correct = FALSE)
out <- c(out, "gen a2 = x <= 2", "gen b2 = g == 0",
         "quietly tabulate a2 b2, chi2 V exact")
chk("r(chi2)", ct2$statistic)
chk("r(CramersV)", (t22[1,1]*t22[2,2] - t22[1,2]*t22[2,1]) / sqrt(prod(rowSums(t22)) * prod(colSums(t22))))
chk("r(p_exact)", fisher.test(t22)$p.value, 1e-9)
e11 <- sum(t22[1, ]) * sum(t22[, 1]) / 60
alt <- if (t22[1, 1] >= e11) "greater" else "less"
chk("r(p1_exact)", fisher.test(t22, alternative = alt)$p.value, 1e-9)
# frequency weights: the same as the data expanded
xe <- rep(x, w); ge <- rep(g, w)
cte <- chisq.test(table(xe, ge), correct = FALSE)
out <- c(out, "quietly tabulate x g [fweight = w], chi2 taub",
         sprintf("error r(N) != %d", length(xe)))
chk("r(chi2)", cte$statistic)
chk("r(taub)", cor(xe, ge, method = "kendall"))
# summarize(): means and standard deviations by category
out <- c(out, "quietly tabulate x, summarize(y)", "error r(N) != 60")
# correlations, casewise and pairwise
C <- cor(cbind(y, z, xm, zm), use = "complete.obs")
out <- c(out, "quietly correlate y z xm zm", "matrix C = r(C)",
         sprintf("error r(N) != %d", sum(complete.cases(cbind(xm, zm)))))
for (i in 1:4) for (j in 1:i) chk(sprintf("C[%d,%d]", i, j), C[i, j])
V <- cov(cbind(y, z, xm, zm), use = "complete.obs")
out <- c(out, "quietly correlate y z xm zm, covariance", "matrix C = r(C)")
for (i in 1:4) for (j in 1:i) chk(sprintf("C[%d,%d]", i, j), V[i, j])
cw <- cov.wt(cbind(y, z), wt = w / sum(w), cor = TRUE)
out <- c(out, "quietly correlate y z [aweight = w]")
chk("r(rho)", cw$cor[1, 2])
ye <- rep(y, w); ze <- rep(z, w)
out <- c(out, "quietly correlate y z [fweight = w], covariance",
         sprintf("error r(N) != %d", length(ye)))
chk("r(cov_12)", cov(ye, ze))
chk("r(Var_1)", var(ye))
Pc <- cor(cbind(y, xm, zm), use = "pairwise.complete.obs")
out <- c(out, "quietly correlate y xm zm, pairwise sig", "matrix C = r(C)", "matrix P = r(P)", "matrix Nobs = r(Nobs)")
vars <- list(y, xm, zm)
P <- matrix(0, 3, 3)
for (i in 1:3) for (j in 1:3) if (i != j) P[i, j] <- cor.test(vars[[i]], vars[[j]])$p.value
for (i in 1:3) for (j in 1:i) chk(sprintf("C[%d,%d]", i, j), Pc[i, j])
for (i in 2:3) for (j in 1:(i - 1)) chk(sprintf("P[%d,%d]", i, j), P[i, j], 1e-10)
out <- c(out, "quietly correlate y xm zm, pairwise bonferroni", "matrix P = r(P)")
for (i in 2:3) for (j in 1:(i - 1)) chk(sprintf("P[%d,%d]", i, j), min(1, 3 * P[i, j]), 1e-10)
out <- c(out, "quietly correlate y xm zm, pairwise sidak", "matrix P = r(P)")
for (i in 2:3) for (j in 1:(i - 1)) chk(sprintf("P[%d,%d]", i, j), 1 - (1 - P[i, j])^3, 1e-10)
out <- c(out, sprintf("error Nobs[3,2] != %d", sum(!is.na(xm) & !is.na(zm))))
out <- c(out, 'display "test completed"')
writeLines(out, "tests/scripts/tables/tables_values.do")
