# The error of filled cells: `kalmia fill` beside column means and R's pcaMethods, on tables of which cells are removed.
#
#   cmake --preset release && cmake --build build/release --target kalmia_command
#   apt-get install r-base-core r-bioc-pcamethods
#   Rscript bench/peers/fill.R build/release/app/kalmia
#
# Prints the lines of the table in docs/filling.md. Errors are root mean squares over the removed cells, each in standard
# deviations of its column, and divided by the error of column means: 1 is no better than means. Each is the mean over
# the masks. Every method works at unit variance. "n" is given the number of components that Kalmia has chosen from the
# holed table (8 where it is more); "best" the number from 1 to 8 that turns out best on the removed cells, which nobody
# knows beforehand.
suppressMessages(library(pcaMethods))
arguments <- commandArgs(trailingOnly = TRUE)
if (length(arguments) != 1) stop("usage: Rscript fill.R KALMIA")
kalmia <- arguments[1]
script <- sub("^--file=", "", grep("^--file=", commandArgs(), value = TRUE))
data <- file.path(dirname(script), "..", "..", "examples", "data")
masks <- 5
most <- 8
methods <- c("nipals", "ppca", "svdImpute")

FillByKalmia <- function(x, components) {
  input <- tempfile(fileext = ".csv")
  output <- tempfile(fileext = ".csv")
  on.exit(unlink(c(input, output)))
  write.csv(x, input, row.names = FALSE, na = "")
  said <- system2(kalmia, c("fill", input, "--out", output, "--components", components, "--json"), stdout = TRUE,
                  stderr = FALSE)
  chosen <- as.integer(sub(".*: ([0-9]+).*", "\\1", grep("\"components\":", said, value = TRUE)[1]))
  list(cells = as.matrix(read.csv(output, check.names = FALSE)), components = chosen)
}

FillByPcaMethods <- function(x, method, components) {
  tryCatch({
    capture.output(model <- suppressWarnings(pca(x, method = method, nPcs = components, scale = "uv", center = TRUE)))
    completeObs(model)
  }, error = function(e) matrix(NA, nrow(x), ncol(x)))
}

FillByMeans <- function(x) {
  hole <- is.na(x)
  x[hole] <- colMeans(x, na.rm = TRUE)[col(x)[hole]]
  x
}

Error <- function(filled, truth, hole) {
  deviations <- apply(truth, 2, sd)[col(truth)]
  sqrt(mean(((filled - truth)[hole] / deviations[hole])^2))
}

# The errors of one mask, over that of means.
Compare <- function(truth, share) {
  hole <- matrix(runif(length(truth)) < share, nrow(truth))
  x <- truth
  x[hole] <- NA
  means <- Error(FillByMeans(x), truth, hole)
  kalmia <- FillByKalmia(x, "auto")
  ofKalmia <- sapply(1:most, function(n) Error(FillByKalmia(x, n)$cells, truth, hole))
  result <- c(components = kalmia$components, kalmia = Error(kalmia$cells, truth, hole) / means,
              kalmiaBest = min(ofKalmia) / means)
  for (method in methods) {
    errors <- sapply(1:most, function(n) Error(FillByPcaMethods(x, method, n), truth, hole)) / means
    chosen <- if (kalmia$components == 0) 1 else errors[min(kalmia$components, most)]
    result[[method]] <- chosen
    result[[paste0(method, "Best")]] <- min(errors, na.rm = TRUE)
  }
  result
}

tables <- list(
  wine = as.matrix(read.csv(file.path(data, "wine.csv"))[, -(1:2)]),
  gasoline = as.matrix(read.csv(file.path(data, "gasoline.csv"), check.names = FALSE)[, -(1:2)])
)
cat(sprintf("R %s.%s, pcaMethods %s, %s\n\n", R.version$major, R.version$minor, packageVersion("pcaMethods"),
            system2(kalmia, "--version", stdout = TRUE)))
cat("| table | removed | components | Kalmia | Kalmia, best |",
    paste(sapply(methods, function(m) paste0(" ", m, ", n | ", m, ", best |")), collapse = ""), "\n", sep = "")
cat("|---|---|---|---|---|", strrep("---|", 2 * length(methods)), "\n", sep = "")
for (name in names(tables)) {
  for (share in c(0.05, 0.1, 0.3)) {
    set.seed(1)
    results <- sapply(seq_len(masks), function(i) Compare(tables[[name]], share))
    numbers <- sprintf("%.3f", rowMeans(results)[-1])
    cat(sprintf("| %s | %g %% | %s | %s |\n", name, 100 * share, paste(sort(unique(results[1, ])), collapse = ", "),
                paste(numbers, collapse = " | ")))
  }
}
