# R's side of the comparison in fisher.py: the same file of tables, the same two numbers a line.
arguments <- commandArgs(trailingOnly = TRUE)
if (arguments[1] == "version") {
  cat(R.version.string, "\n")
  quit()
}
for (line in readLines(arguments[1])) {
  numbers <- as.integer(strsplit(line, " ")[[1]])
  counts <- matrix(numbers[-(1:2)], nrow = numbers[1], byrow = TRUE)
  seconds <- system.time(p <- fisher.test(counts, workspace = 2e8)$p.value)[["elapsed"]]
  cat(format(seconds, digits = 9), format(p, digits = 9), "\n")
}
