#!/usr/bin/python3
"""Prints what DiscriminantRuleTest.cpp expects of the irises, by scikit-learn.

    /usr/bin/python3 iris_log_odds.py     # Debian 12: python3-sklearn 1.2.1, python3-numpy 1.24.2

A PLS model of three components of all irises, to unit variance, fits their dummies; its linear discriminant analysis
with equal priors gives the logarithm of the odds for each class. The dummies add up to 1, so two of them say all.
Then the same in seven rounds, iris i (from 1) left out in round i mod 7: confusion, and AUC of the log odds.
"""
from pathlib import Path

import numpy
from sklearn.cross_decomposition import PLSRegression
from sklearn.discriminant_analysis import LinearDiscriminantAnalysis
from sklearn.metrics import balanced_accuracy_score, confusion_matrix, roc_auc_score

ROWS = (1, 51, 71, 84, 101, 107, 134, 150)


def log_odds(x, species, inside, components):
    names = sorted(set(species))
    y = numpy.array([[s == name for name in names] for s in species], dtype=float)
    pls = PLSRegression(components, scale=True, max_iter=10000, tol=1e-16).fit(x[inside], y[inside])
    f = pls.predict(x)[:, :2]
    lda = LinearDiscriminantAnalysis(priors=[1 / 3] * 3, tol=1e-12).fit(f[inside], species[inside])
    v = lda.predict_log_proba(f)
    others = numpy.array([numpy.logaddexp(*numpy.delete(v, g, axis=1).T) for g in range(3)]).T
    return v - others


def main():
    table = numpy.genfromtxt(Path(__file__).parent / "iris.csv", delimiter=",", skip_header=1, dtype=str)
    x, species = table[:, 1:5].astype(float), table[:, 5]
    odds = log_odds(x, species, numpy.full(150, True), 3)
    for row in ROWS:
        print(row, species[row - 1], odds[row - 1].tolist())
    names = sorted(set(species))
    for components in (2, 3, 4):
        left_out = numpy.zeros((150, 3))
        for g in range(7):
            out = numpy.arange(1, 151) % 7 == g
            left_out[out] = log_odds(x, species, ~out, components)[out]
        assigned = numpy.array(names)[left_out.argmax(axis=1)]
        print(components, confusion_matrix(species, assigned).tolist(), balanced_accuracy_score(species, assigned),
              [roc_auc_score(species == name, left_out[:, g]) for g, name in enumerate(names)])


if __name__ == "__main__":
    main()
