# R's side of the comparison in compare_pca.py:
#   Rscript r_pca_side.R FILE ROWS COLUMNS VARIANCES...
# VARIANCES are t't of each component, by which the relative limit that Kalmia stops at becomes the absolute one of
# pcaMethods: the sum of the squared changes of t. Prints the seconds of all components; with the single argument
# "versions" what it runs on.
suppressMessages(library(pcaMethods))
arguments <- commandArgs(trailingOnly = TRUE)
if (identical(arguments, "versions")) {
  cat(sprintf("R %s.%s, pcaMethods %s\n", R.version$major, R.version$minor, packageVersion("pcaMethods")))
  quit()
}
rows <- as.integer(arguments[2]); columns <- as.integer(arguments[3]); variances <- as.numeric(arguments[-(1:3)])
file <- file(arguments[1], "rb")
X <- matrix(readBin(file, "numeric", rows * columns, size = 4), nrow = rows, byrow = TRUE)
close(file)
X[is.nan(X)] <- NA
seconds <- 0
found <- numeric(0)
seconds <- seconds + system.time(X <- sweep(X, 2, colMeans(X, na.rm = TRUE)))[["elapsed"]]
for (variance in variances) {   # one component a call, each with a limit of its own
  working <- X + 0              # it is deflated in place
  seconds <- seconds + system.time(model <- nipalsPca(working, nPcs = 1, threshold = 1e-10 * variance))[["elapsed"]]
  X <- X - model@scores %*% t(model@loadings)
}
cat(sprintf("%.9f\n", seconds))
