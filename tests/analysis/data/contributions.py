#!/usr/bin/python3
"""Prints what columns contribute to rows of examples/data/wine.csv, for ContributionsTest.cpp.

    /usr/bin/python3 contributions.py    # Debian 12: numpy 1.24.2

All 13 measurements, to unit variance; PCA by singular values, PLS and OPLS of alcohol on the other twelve by NIPALS for
one Y, all in double precision. The parts of T2 are x_k sum_a (t_a / var_a) r_ka with the R of T = X R from least
squares, so that no deflation has a part in them; residuals are X - T P'.
"""
import csv
from pathlib import Path

import numpy

TABLE = Path(__file__).parents[3] / "examples/data/wine.csv"
ROW = 60  # from 1


def scaled(x):
    return (x - x.mean(axis=0)) / x.std(axis=0, ddof=1)


def deflated(x, t):
    return x - numpy.outer(t, t @ x) / (t @ t)


def pls(x, y, components):
    scores = []
    for _ in range(components):
        scores.append(x @ (x.T @ y) / numpy.linalg.norm(x.T @ y))
        x = deflated(x, scores[-1])
    return numpy.array(scores).T


def opls(x, y, orthogonal):
    """One predictive component, after the orthogonal ones have left X."""
    w = x.T @ y / numpy.linalg.norm(x.T @ y)
    scores = []
    for _ in range(orthogonal):
        p = x.T @ (x @ w) / (w @ x.T @ x @ w)
        o = p - (w @ p) * w
        scores.append(x @ o / numpy.linalg.norm(o))
        x = deflated(x, scores[-1])
    return numpy.array([x @ w] + scores).T


def contributions(x, t):
    r = numpy.linalg.lstsq(x, t, rcond=None)[0]
    i = ROW - 1
    parts = x[i] * (r @ (t[i] / t.var(axis=0, ddof=1)))
    p = numpy.linalg.lstsq(t, x, rcond=None)[0]
    return parts, (x - t @ p)[i]


def tell(name, x, t):
    print(name, "T2", "%.7f" % ((t[ROW - 1] ** 2 / t.var(axis=0, ddof=1)).sum()))
    for what, numbers in zip(("t2", "residual"), contributions(x, t)):
        print(" ", what, ", ".join("%.7f" % number for number in numbers))


def main():
    with open(TABLE) as file:
        rows = list(csv.DictReader(file))
    names = [name for name in rows[0] if name not in ("sample", "cultivar")]
    x = scaled(numpy.array([[float(row[name]) for name in names] for row in rows]))
    u, s, _ = numpy.linalg.svd(x, full_matrices=False)
    tell("pca", x, u[:, :3] * s[:3])
    y, x = x[:, 0], x[:, 1:]
    tell("pls", x, pls(x, y, 3))
    tell("opls", x, opls(x, y, 2))
    print("numpy", numpy.__version__)


main()
