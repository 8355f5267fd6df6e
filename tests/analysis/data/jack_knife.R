# The numbers of JackKnifeTest.cpp:  R --vanilla < jack_knife.R      R 4.2.2, pls 2.8-1
# Coefficients of oliveoil's yellow on its five chemical measures in the rounds of a cross-validation, their standard
# errors by the jack-knife and p-values.
library(pls)
data(oliveoil)
options(digits = 12)
m <- plsr(sensory[, 1] ~ chemical, ncomp = 2, data = oliveoil, validation = "CV", segments = split(1:16, (1:16) %% 7),
          jackknife = TRUE)
b <- drop(coef(m, ncomp = 2))
print(b)
print(t(m$validation$coefficients[, 1, 2, ]))
v <- drop(var.jack(m, ncomp = 2, use.mean = FALSE))  # about the model of all rows, as Martens & Martens have it
print(sqrt(v))
print(2 * pt(-abs(b / sqrt(v)), 6))
print(qt(0.975, 6))
