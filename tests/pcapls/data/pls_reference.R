# Reference components of PLS on gasoline.csv (one Y) and oliveoil.csv (six Y) by the package pls, method oscorespls
# (NIPALS), on columns centred and scaled to unit variance. From the repository's root:
#   Rscript tests/pcapls/data/pls_reference.R > tests/pcapls/data/pls_reference_r.csv
# Written with R 4.2.2, pls 2.8-1 (Debian 12).
suppressMessages(library(pls))

write_rows <- function(table, quantity, values) {
  values <- as.matrix(values)
  for (a in seq_len(ncol(values)))
    cat(sprintf("%s,%s,%d,%d,%.9g\n", table, quantity, a, seq_len(nrow(values)), values[, a]), sep = "")
}

# How far the weights may still be from their limit, as a sine, when the loop ends at |u - u_old| <= 1e-5 |u|.
# With s the singular values of X'Y = P S Q' and rho = (s2 / s1)^2, an iterate c = q1 + e q2 has the change
# e (1 - rho) |Y q2| of u = Y c, and gives the weights p1 + e (s2 / s1) p2. `amplified` = |w error| / |u change|.
stop_amplification <- function(X, Y) {
  s <- svd(crossprod(X, Y))
  rho <- (s$d[2] / s$d[1])^2
  sqrt(rho) / (1 - rho) * sqrt(sum((Y %*% s$v[, 1])^2) / sum((Y %*% s$v[, 2])^2))
}

reference <- function(table, X, Y, components, keep) {
  X <- scale(X)
  Y <- scale(Y)
  fit <- plsr(Y ~ X, ncomp = components, method = "oscorespls", scale = FALSE, tol = 1e-14, maxit = 100000)
  write_rows(table, "t", unclass(fit$scores))
  write_rows(table, "u", unclass(fit$Yscores))
  write_rows(table, "w", unclass(fit$loading.weights)[keep, , drop = FALSE])
  write_rows(table, "p", unclass(fit$loadings)[keep, , drop = FALSE])
  write_rows(table, "c", unclass(fit$Yloadings))
  write_rows(table, "b", matrix(fit$coefficients[keep, , components], nrow = length(keep)))
  if (ncol(Y) > 1) {
    for (a in seq_len(components)) {
      cat(sprintf("%s,amplification,%d,1,%.9g\n", table, a, stop_amplification(X, Y)))
      X <- X - fit$scores[, a] %*% t(fit$loadings[, a])
      Y <- Y - fit$scores[, a] %*% t(fit$Yloadings[, a])
    }
  }
}

cat("table,quantity,component,index,value\n")
gasoline <- read.csv("examples/data/gasoline.csv", row.names = 1, check.names = FALSE)
reference("gasoline", as.matrix(gasoline[, -1]), as.matrix(gasoline[, 1]), 3, seq(1, 401, by = 20))
olive <- read.csv("examples/data/oliveoil.csv", row.names = 1)
reference("oliveoil", as.matrix(olive[, 1:5]), as.matrix(olive[, 6:11]), 3, 1:5)
