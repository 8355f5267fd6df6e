#!/usr/bin/python3
"""Writes scipy_trees.csv: what SciPy makes of tables that the tests can make again.

    apt-get install python3-scipy
    /usr/bin/python3 tests/cluster/data/scipy_trees.py > tests/cluster/data/scipy_trees.csv

A line of five words names a method and a table: its cells, rows, columns and seed. `whole` are small whole numbers, and
thus many equal distances, as WholeNumbers makes them, `random` are floats, as RandomMatrix<float> does, both without
holes. Below it are the merges as scipy.cluster.hierarchy.linkage gives them: two clusters, from 0, the one of merge k
being rows + k, and the height.
"""
from random import Random

import numpy
import scipy
from scipy.cluster import hierarchy


def mersenne_twister(seed):
    """The numbers of std::mt19937, 32 bits each."""
    state = [seed]
    for k in range(1, 624):
        state.append((1812433253 * (state[-1] ^ state[-1] >> 30) + k) & 0xFFFFFFFF)
    source = Random()
    source.setstate((3, (*state, 624), None))
    return lambda: source.getrandbits(32)


def whole(rows, columns, seed, largest=4):
    number = mersenne_twister(seed)

    def cell():
        number()  # whether it is a hole
        return number() % (largest + 1)

    return numpy.array([[cell() for _ in range(columns)] for _ in range(rows)], dtype=float)


def random(rows, columns, seed):
    number = mersenne_twister(seed)

    def uniform():
        return (number() >> 12) * 2.0**-20

    def cell():
        uniform()  # whether it is a hole
        magnitude = 0.0625 + 2.9375 * uniform()
        return -magnitude if uniform() < 0.5 else magnitude

    return numpy.array([[cell() for _ in range(columns)] for _ in range(rows)], dtype=numpy.float32).astype(float)


def write(method, make, rows, columns, seed):
    print(f"{method},{make.__name__},{rows},{columns},{seed}")
    for a, b, height, _ in hierarchy.linkage(make(rows, columns, seed), method):
        print(f"{int(a)},{int(b)},{float(height)!r}")


print(f"# SciPy {scipy.__version__}, NumPy {numpy.__version__}")
for size in (2, 7, 50, 500):
    write("single", whole, size, 3, size)
    write("single", random, size, 5, size)
for size in (2, 3, 8, 12, 20, 30):
    for seed in range(1, 7):
        write("ward", random, size, 4, seed)
