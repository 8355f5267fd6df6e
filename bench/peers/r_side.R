# R's side of the comparison in compare.py:
#   Rscript r_side.R FILE ROWS COLUMNS YCOLUMNS fit|crossvalidate COMPONENTS SECONDS METHOD
# Runs for SECONDS, twice at least, and prints the seconds of each run, one a line; with the single argument "versions"
# what it runs on.
suppressMessages(library(pls))
arguments <- commandArgs(trailingOnly = TRUE)
if (identical(arguments, "versions")) {
  cat(sprintf("R %s.%s, pls %s, BLAS %s\n", R.version$major, R.version$minor, packageVersion("pls"),
              extSoftVersion()["BLAS"]))
  quit()
}
rows <- as.integer(arguments[2]); columns <- as.integer(arguments[3]); ys <- as.integer(arguments[4])
components <- as.integer(arguments[6]); limit <- as.numeric(arguments[7]); method <- arguments[8]
file <- file(arguments[1], "rb")
X <- matrix(readBin(file, "numeric", rows * columns, size = 4), nrow = rows, byrow = TRUE)
Y <- matrix(readBin(file, "numeric", rows * ys, size = 4), nrow = rows, byrow = TRUE)
close(file)
groups <- split(seq_len(rows), seq_len(rows) %% 7)   # the same interleaved groups as Kalmia's
runs <- 0; total <- 0
while (runs < 2 || total < limit) {
  elapsed <- if (arguments[5] == "fit") {
    fit <- if (method == "kernelpls") kernelpls.fit else oscorespls.fit
    system.time(fit(X, Y, components))[["elapsed"]]
  } else {
    system.time(plsr(Y ~ X, ncomp = components, method = method, validation = "CV", segments = groups))[["elapsed"]]
  }
  runs <- runs + 1; total <- total + elapsed
  cat(sprintf("%.9f\n", elapsed))
}
