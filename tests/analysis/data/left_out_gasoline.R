# RMSECV of the rounds of left_out_gasoline.py by the R package pls:  R --vanilla < left_out_gasoline.R
# R 4.2.2, pls 2.8-1. Its (Intercept) leaves out row by row, whatever the segments, and is no witness.
library(pls)
data(gasoline)
segments <- split(1:60, (1:60) %% 7)
for (unit in c(TRUE, FALSE)) {
  m <- plsr(octane ~ NIR, ncomp = 6, data = gasoline, validation = "CV", segments = segments, scale = unit)
  print(RMSEP(m, estimate = "CV")$val[1, 1, ], digits = 12)
}
