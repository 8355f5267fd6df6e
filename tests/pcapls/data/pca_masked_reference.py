"""The first principal component of wine.csv (columns scaled to unit variance) with 5, 10 and 30 % of its cells removed,
as the solution of the masked least-squares problem min over p, t of the sum of (x_ik - t_i p_k)^2 over present cells,
by SciPy's least_squares. From the repository's root:
  /usr/bin/python3 tests/pcapls/data/pca_masked_reference.py > tests/pcapls/data/pca_masked_reference_scipy.csv
Written with SciPy 1.10.1, NumPy 1.24.2 (Debian 12).

The seed of the holes is the first with which neither a row nor a column has less than 0.35 of the square of p or t
on its present cells: with less than a third, NIPALS as it is here departs from least squares on purpose.
"""
import csv

import numpy as np
from scipy.optimize import least_squares

MASK = 0xFFFFFFFF


def is_hole(i, k, percent, seed):
    """Of the cell in row i and column k, from 0; the same hash stands in NCPCAMaskedReferenceTest.cpp."""
    h = ((i * 13 + k) * 0x9E3779B1 + seed * 0x85EBCA6B) & MASK
    for _ in range(2):
        h = ((h ^ (h >> 16)) * 0x45D9F3B) & MASK
    h ^= h >> 16
    return h % 100 < percent


def read(name):
    with open(f"examples/data/{name}.csv", newline="") as file:
        return np.array([[float(cell) for cell in row[2:]] for row in list(csv.reader(file))[1:]])


def start_of(X):
    """p and t from the singular vectors of the table with zeros for holes."""
    U, s, Vt = np.linalg.svd(np.nan_to_num(X), full_matrices=False)
    return Vt[0], U[:, 0] * s[0]


def fit(X):
    """p of unit length and t of the masked problem."""
    rows, columns = X.shape
    i, k = np.nonzero(~np.isnan(X))
    x = X[i, k]
    at = np.arange(len(x))

    def residuals(v):
        return v[i] * v[rows + k] - x

    def jacobian(v):
        J = np.zeros((len(x), rows + columns))
        J[at, i] = v[rows + k]
        J[at, rows + k] = v[i]
        return J

    start = np.concatenate(start_of(X)[::-1])
    v = least_squares(residuals, start, jacobian, ftol=1e-15, xtol=1e-15, gtol=1e-13).x
    p, t = v[rows:], v[:rows]
    norm = np.linalg.norm(p)
    return p / norm, t * norm


def smallest_share(X, p, t):
    present = ~np.isnan(X)
    return min((present @ p**2).min() / (p @ p), (t**2 @ present).min() / (t @ t))


def holed(X, percent, seed):
    holes = np.array([[is_hole(i, k, percent, seed) for k in range(X.shape[1])] for i in range(X.shape[0])])
    X = np.where(holes, np.nan, X)
    return (X - np.nanmean(X, axis=0)) / np.nanstd(X, axis=0, ddof=1)


wine = read("wine")
print("percent,quantity,index,value")
for percent in (5, 10, 30):
    for seed in range(1000):
        X = holed(wine, percent, seed)
        if smallest_share(X, *start_of(X)) < 0.35:
            continue
        p, t = fit(X)
        if smallest_share(X, p, t) >= 0.35:
            break
    print(f"{percent},seed,0,{seed}")
    for quantity, v in (("p", p), ("t", t)):
        for index, value in enumerate(v, start=1):
            print(f"{percent},{quantity},{index},{value:.12g}")
