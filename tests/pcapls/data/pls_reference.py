"""Reference components of PLS on gasoline.csv (one Y) and oliveoil.csv (six Y) by scikit-learn's PLSRegression (NIPALS),
on columns centred and scaled to unit variance. From the repository's root:
  /usr/bin/python3 tests/pcapls/data/pls_reference.py > tests/pcapls/data/pls_reference_sklearn.csv
Written with scikit-learn 1.2.1, NumPy 1.24.2 (Debian 12).
"""
import csv

import numpy as np
from sklearn.cross_decomposition import PLSRegression


def read(name):
    with open(f"examples/data/{name}.csv", newline="") as file:
        return np.array([[float(cell) for cell in row[1:]] for row in list(csv.reader(file))[1:]])


def write_rows(table, quantity, values):
    for a, column in enumerate(np.atleast_2d(values.T), start=1):
        for i, value in enumerate(column, start=1):
            print(f"{table},{quantity},{a},{i},{value:.9g}")


def reference(table, X, Y, components, keep):
    X, Y = ((M - M.mean(axis=0)) / M.std(axis=0, ddof=1) for M in (X, Y))
    fit = PLSRegression(n_components=components, scale=False, tol=1e-24, max_iter=100000).fit(X, Y)
    write_rows(table, "t", fit.x_scores_)
    write_rows(table, "u", fit.y_scores_)
    write_rows(table, "w", fit.x_weights_[keep])
    write_rows(table, "p", fit.x_loadings_[keep])
    write_rows(table, "c", fit.y_loadings_)
    write_rows(table, "b", (fit.x_rotations_ @ fit.y_loadings_.T)[keep])


print("table,quantity,component,index,value")
gasoline = read("gasoline")
reference("gasoline", gasoline[:, 1:], gasoline[:, :1], 3, np.arange(0, 401, 20))
olive = read("oliveoil")
reference("oliveoil", olive[:, :5], olive[:, 5:], 3, np.arange(5))
