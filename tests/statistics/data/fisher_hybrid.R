# Writes tests/statistics/FisherHybridReference.h:
#   Rscript tests/statistics/data/fisher_hybrid.R > tests/statistics/FisherHybridReference.h
# Random tables of many shapes, and p of fisher.test(t, hybrid = TRUE) at its usual hybridPars. Their counts are near
# those that decide about the approximation, so that parts of most tables are judged by chi-square and others are not.
# Some have empty rows or columns, some equal margins. No two have the same margins and cells, transposed or not.
set.seed(20)
shapes <- list(c(2, 3), c(2, 4), c(2, 5), c(2, 7), c(3, 3), c(3, 3), c(3, 4), c(3, 5), c(4, 4), c(2, 6))
mostExact <- 30  # of 100 tables that no approximation takes part in

draw <- function(number) {
  shape <- shapes[[sample(length(shapes), 1)]]
  rows <- if (number %% 3 == 0) rep(1, shape[1]) else sample(c(2, 3, 4), shape[1], replace = TRUE)
  columns <- if (number %% 4 == 0) rep(1, shape[2]) else sample(c(1, 2, 3), shape[2], replace = TRUE)
  total <- round(prod(shape) * runif(1, 4.5, if (prod(shape) > 12) 5.5 else 9))
  cells <- sample(prod(shape), total, replace = TRUE, prob = outer(rows, columns))
  t <- matrix(tabulate(cells, prod(shape)), shape[1])
  if (number %% 7 == 0) t <- rbind(t, 0)[sample(shape[1] + 1), ]
  if (number %% 11 == 0) t <- cbind(t, 0)[, sample(shape[2] + 1)]
  if (number %% 13 == 0) t[, 1] <- t[, 2]
  t
}

p <- function(t, hybrid) fisher.test(t, hybrid = hybrid, workspace = 2e8)$p.value

line <- function(t) {
  cells <- paste(as.vector(t(t)), collapse = " ")
  sprintf("    {%d, %d, \"%s\", %.10g, %.10g},", nrow(t), ncol(t), cells, p(t, TRUE), p(t, FALSE))
}

lines <- character(0)
tables <- list()
exact <- 0
for (number in 1:1000) {
  t <- draw(number)
  if (min(dim(t)) < 2 || sum(rowSums(t) > 0) < 2 || sum(colSums(t) > 0) < 2 || all(dim(t) == 2)) next
  if (any(sapply(tables, function(other) identical(other, t) || identical(other, t(t))))) next
  isExact <- abs(p(t, TRUE) - p(t, FALSE)) <= 1e-6 * p(t, FALSE)
  if (isExact && exact == mostExact) next
  exact <- exact + isExact
  tables <- c(tables, list(t))
  lines <- c(lines, line(if (number %% 2 == 0) t(t) else t))
  if (length(lines) >= 100) break
}

cat("#pragma once

/// Random tables and p of fisher.test(t, hybrid = TRUE) and fisher.test(t), by data/fisher_hybrid.R.
/// ", R.version.string, ".
struct FisherHybridReference {
  int rows, columns;
  const char* cells;  ///< row after row
  double hybrid, exact;
};

constexpr FisherHybridReference kFisherHybridReferences[] = {
", paste(lines[1:100], collapse = "\n"), "\n};\n", sep = "")
