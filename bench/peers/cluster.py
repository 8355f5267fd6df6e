#!/usr/bin/python3
"""Clusters the same tables by Kalmia, SciPy and fastcluster: times them, or compares what they find.

    cmake --preset bench && cmake --build build/bench
    apt-get install python3-scipy python3-fastcluster
    /usr/bin/python3 bench/peers/cluster.py build/bench/bench/peers/cluster_side
    /usr/bin/python3 bench/peers/cluster.py build/bench/bench/peers/cluster_side --compare

Times include the distances on both sides; tables are N(0,1). The exponent of growth is that from one number of rows to
the next. --compare takes random tables of 2 to 500 rows, of full precision and of small whole numbers (so that many
distances are equal). Of single linkage the heights have to agree, and the clusters at every height between two distinct
ones; a difference ends the run with 1. Kalmia's lazy list for Ward's criterion may pass over a pair of clusters that
has come nearer by a merge. Its merges are followed with exact distances: up to the first such pair all heights have to
agree, and no pair of two rows, whose distance never changes, may be passed over; further on it is counted how often the
two differ.
"""
import argparse
import math
import os
import subprocess
import sys
import tempfile
import time

import fastcluster
import numpy
import scipy
from scipy.cluster import hierarchy

PEERS = {"SciPy": hierarchy.linkage, "fastcluster": fastcluster.linkage}
ROUNDING = 1e-6  # relative: heights are float here and double there


def kalmia(side, x, method, threads=1, repeats=0):
    """Seconds of the fastest repeat, bytes of memory at the peak, merges as SciPy gives them."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(x.astype(numpy.float32).tobytes())
        file.flush()
        command = [side, file.name, *map(str, x.shape), method, str(threads), str(repeats)]
        lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    seconds = [float(word) for word in lines[0].split()]
    merges = numpy.array([[float(word) for word in line.split()] for line in lines[2:]])
    if method == "ward":
        merges[:, 2] = numpy.sqrt(2 * merges[:, 2])  # SciPy's height is the root of twice the increase
    return min(seconds, default=0.0), int(lines[1]), with_sizes(merges)


def with_sizes(merges):
    """The merges with SciPy's fourth column, how many rows each has."""
    rows = len(merges) + 1
    sizes = [1.0] * rows
    for a, b, _ in merges:
        sizes.append(sizes[int(a)] + sizes[int(b)])
    return numpy.column_stack([merges, sizes[rows:]])


def seconds_of(linkage, x, method, repeats):
    best = math.inf
    for _ in range(repeats):
        begin = time.perf_counter()
        linkage(x, method)
        best = min(best, time.perf_counter() - begin)
    return best


def time_them(side, rows, columns, repeats):
    print("| method | rows | threads | Kalmia, s | grows as | / SciPy | / fastcluster | peak / pair list |")
    print("|---|---|---|---|---|---|---|---|")
    for method in ("single", "ward"):
        before = {}
        for n in rows:
            x = numpy.random.default_rng(n).normal(size=(n, columns)).astype(numpy.float32)
            wide = x.astype(float)
            peers = {name: seconds_of(linkage, wide, method, repeats) for name, linkage in PEERS.items()}
            for threads in (1, 2):
                ours, memory, _ = kalmia(side, x, method, threads, repeats)
                growth = "-"
                if threads in before:
                    earlier_rows, earlier = before[threads]
                    growth = f"n^{math.log(ours / earlier) / math.log(n / earlier_rows):.2f}"
                before[threads] = n, ours
                ratios = " | ".join(f"{ours / peers[name]:.2f}" for name in PEERS)
                print(f"| {method} | {n} | {threads} | {ours:.3f} | {growth} | {ratios} "
                      f"| {memory / (6.0 * n * (n - 1)):.2f} |")
                sys.stdout.flush()


def partition(merges, height):
    """For each row the first row of its cluster, where the tree is cut at the height."""
    labels = hierarchy.fcluster(merges, height, "distance")
    first = {}
    return [first.setdefault(label, row) for row, label in enumerate(labels)]


def tables(sizes):
    for n in sizes:
        source = numpy.random.default_rng(n)
        yield f"{n} rows, full precision", source.normal(size=(n, 5)).astype(numpy.float32).astype(float)
        yield f"{n} rows, whole numbers", source.integers(0, 5, size=(n, 3)).astype(float)


def same_single_linkage(ours, theirs):
    if numpy.any(abs(ours[:, 2] - theirs[:, 2]) > ROUNDING * theirs[:, 2]):
        return False
    heights = theirs[:, 2]
    gaps = [k for k in range(len(heights) - 1) if heights[k + 1] - heights[k] > 4 * ROUNDING * heights[k + 1]]
    cuts = [(heights[k] + heights[k + 1]) / 2 for k in gaps] + [2 * heights[-1] + 1]
    return all(partition(ours, cut) == partition(theirs, cut) for cut in cuts)


def compare_single(side, sizes):
    different = 0
    for name, x in tables(sizes):
        ours = kalmia(side, x, "single")[2]
        for peer, linkage in PEERS.items():
            same = same_single_linkage(ours, linkage(x, "single"))
            different += not same
            print(f"single linkage, {name}: {'as' if same else 'NOT as'} {peer}")
    return different


def first_passed_over(x, merges):
    """The first of the merges, from 0, beside which there was a nearer pair; whether the nearest was of two rows."""
    rows = len(x)
    means, sizes = [*x], [1.0] * rows
    distances = numpy.full((2 * rows - 1, 2 * rows - 1), numpy.inf)

    def add_distances(new, others):
        ours = numpy.array([sizes[other] for other in others])
        squares = ((numpy.array([means[other] for other in others]) - means[new]) ** 2).sum(axis=1)
        distances[others, new] = sizes[new] * ours / (sizes[new] + ours) * squares

    for row in range(1, rows):
        add_distances(row, list(range(row)))
    current = list(range(rows))
    for k, (a, b) in enumerate(merges[:, :2].astype(int)):
        low, high = sorted((a, b))
        nearest = distances[:rows + k, :rows + k].argmin()
        i, j = divmod(nearest, rows + k)
        if distances[i, j] < (1 - 10 * ROUNDING) * distances[low, high]:
            return k, j < rows
        distances[[low, high], :] = distances[:, [low, high]] = numpy.inf
        current = [cluster for cluster in current if cluster not in (low, high)]
        sizes.append(sizes[low] + sizes[high])
        means.append((sizes[low] * means[low] + sizes[high] * means[high]) / sizes[-1])
        if current:
            add_distances(rows + k, current)
        current.append(rows + k)
    return len(merges), False


def compare_ward(side, sizes, count):
    wrong = 0
    print("\n| rows x columns | tables | no nearer pair passed over | as exact Ward "
          "| first difference at merge, median | heights apart, at most |")
    print("|---|---|---|---|---|---|")
    for n in sizes:
        equal, faithful, first, apart = 0, 0, [], 0.0
        for seed in range(count):
            x = numpy.random.default_rng(seed).normal(size=(n, 5)).astype(numpy.float32).astype(float)
            ours, theirs = kalmia(side, x, "ward")[2], hierarchy.linkage(x, "ward")
            difference = abs(ours[:, 2] - theirs[:, 2]) / theirs[:, 2]
            others = numpy.flatnonzero(difference > 10 * ROUNDING)  # a small difference of large sums
            faithfully, passed_rows = first_passed_over(x, ours)
            faithful += faithfully == len(ours)
            wrong += passed_rows or bool(len(others) and others[0] < faithfully)
            equal += len(others) == 0
            first += [others[0] + 1] if len(others) else []
            apart = max(apart, difference.max())
        median = numpy.median(first) if first else "-"
        print(f"| {n} x 5 | {count} | {faithful} | {equal} | {median} | {100 * apart:.1f} % |")
    print(f"tables with another height before any nearer pair was passed over, or two rows passed over: {wrong}")
    return wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("cluster_side")
    parser.add_argument("--compare", action="store_true")
    parser.add_argument("--rows", type=int, nargs="+", default=[1000, 2000, 4000, 8000])
    parser.add_argument("--columns", type=int, default=50)
    parser.add_argument("--repeats", type=int, default=3)
    options = parser.parse_args()
    print(f"SciPy {scipy.__version__}, fastcluster {fastcluster.__version__}, NumPy {numpy.__version__}; "
          f"{os.cpu_count()} processors\n")
    if not options.compare:
        time_them(options.cluster_side, options.rows, options.columns, options.repeats)
        return 0
    different = compare_single(options.cluster_side, [2, 3, 4, 5, 7, 10, 20, 50, 100, 200, 500])
    different += compare_ward(options.cluster_side, [5, 10, 20, 60, 200], 100)
    return 1 if different else 0


if __name__ == "__main__":
    sys.exit(main())
