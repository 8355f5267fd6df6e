#!/usr/bin/python3
"""Writes scipy_wine.csv: the merges of the wines by Ward's criterion to the letter, as SciPy has it.

    apt-get install python3-scipy
    /usr/bin/python3 tests/app/data/scipy_wine.py > tests/app/data/scipy_wine.csv

A line is a merge as scipy.cluster.hierarchy.linkage gives it: two clusters, from 0, the one of merge k being 178 + k,
and the height. The measures are scaled to unit variance.
"""
import os

import numpy
import scipy
from scipy.cluster import hierarchy

TABLE = os.path.join(os.path.dirname(__file__), "../../../examples/data/wine.csv")

measures = numpy.loadtxt(TABLE, delimiter=",", skiprows=1)[:, 2:]
print("a,b,height")
for a, b, height, _ in hierarchy.linkage(measures / measures.std(axis=0, ddof=1), "ward"):
    print(f"{int(a)},{int(b)},{float(height)!r}")
