#!/usr/bin/python3
"""Times principal components of Kalmia beside scikit-learn and R's pcaMethods, on the same tables, in turn.

    cmake --preset bench && cmake --build build/bench
    apt-get install r-bioc-pcamethods python3-sklearn libopenblas0-pthread
    /usr/bin/python3 bench/peers/compare_pca.py build/bench/bench/peers/kalmia_pca_side

Tables have the singular values 0.6^a and noise of one hundredth of their length; holes are taken out at random.
scikit-learn works on complete tables, pcaMethods (NIPALS too) on those with holes, each component to the relative
change at which Kalmia stops. The last columns say how often Kalmia went over the table and how far the explained
variances of scikit-learn, t't of each component, lie from its own at most (those of pcaMethods have no like: there a
hole shortens the score). One case alone: --case 2000 5000 10 0.05
"""
import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

import numpy
import sklearn
from sklearn.decomposition import PCA

HERE = os.path.dirname(os.path.abspath(__file__))
SHAPES = [(2000, 5000, 10), (200, 50000, 10), (500, 1000, 3)]  # rows, columns, components
CASES = [(*shape, holes) for shape in SHAPES for holes in (0.0, 0.05, 0.1)]


def make_table(rows, columns, holes, seed=1):
    random = numpy.random.default_rng(seed)
    rank = 30
    u = numpy.linalg.qr(random.normal(size=(rows, rank)))[0]
    v = numpy.linalg.qr(random.normal(size=(columns, rank)))[0]
    x = (u * 0.6 ** numpy.arange(1, rank + 1)) @ v.T
    noise = random.normal(size=x.shape)
    x += noise * (0.01 * numpy.linalg.norm(x) / numpy.linalg.norm(noise))
    x *= numpy.sqrt(x.size)  # cells of about 1
    x[random.uniform(size=x.shape) < holes] = numpy.nan
    return x.astype(numpy.float32)


def numbers_of(command):
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return [[float(number) for number in line.split()] for line in lines]


def best_of(run):
    """The fastest of as many runs as fit half a second, two at least: the first ones pay for page faults."""
    runs = []
    while len(runs) < 2 or sum(seconds for seconds, _ in runs) < 0.5:
        runs.append(run())
    return min(runs, key=lambda timed: timed[0])


def sklearn_run(x, components, solver):
    model = PCA(n_components=components, svd_solver=solver, random_state=1)
    begin = time.perf_counter()
    model.fit(x)
    return time.perf_counter() - begin, model.singular_values_ ** 2


def gap(ours, theirs):
    return max(abs(a - b) / b for a, b in zip(ours, theirs))


def compare(case, kalmia_side, rounds):
    rows, columns, components, holes = case
    x = make_table(rows, columns, holes)
    peers = ["pcaMethods"] if holes else ["arpack", "randomized"]
    times = {name: [] for name in ["kalmia", *peers]}
    with tempfile.NamedTemporaryFile() as file:
        file.write(x.tobytes())
        file.flush()
        x = x.astype(float)
        shape = [file.name, str(rows), str(columns)]
        for _ in range(rounds):
            seconds, loops, ours = numbers_of([kalmia_side, *shape, str(components), "0.5"])
            times["kalmia"].append(min(seconds))
            gaps = {}
            for name in peers:
                if name == "pcaMethods":
                    ((took,),) = numbers_of(["Rscript", f"{HERE}/r_pca_side.R", *shape, *map(repr, ours)])
                    gaps[name] = "-"
                else:
                    took, theirs = best_of(lambda: sklearn_run(x, components, name))
                    gaps[name] = f"{gap(ours, theirs):.0e}"
                times[name].append(took)
    median = {name: statistics.median(values) for name, values in times.items()}
    # Two passes centre, and each component has one for the start column, one for its first loadings, one for each round
    # and, but for the last, one for the deflation.
    passes = int(2 + sum(loops) + 3 * components - 1)
    for name in peers:
        print(f"| {rows} x {columns} | {components} | {100 * holes:.0f} % | {1000 * median['kalmia']:.1f} | {name} "
              f"| {1000 * median[name]:.1f} | {median['kalmia'] / median[name]:.3f} | {passes} | {gaps[name]} |")
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kalmia_pca_side")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--case", nargs=4, type=float, help="rows, columns, components, share of holes")
    options = parser.parse_args()
    versions = ["Rscript", f"{HERE}/r_pca_side.R", "versions"]
    r_versions = subprocess.run(versions, check=True, capture_output=True, text=True)
    loaded = (line.split()[-1] for line in open("/proc/self/maps"))
    blas = sorted({os.path.realpath(path) for path in loaded if "/libopenblas" in path or "/libblas" in path})
    print(f"{r_versions.stdout.strip()}; scikit-learn {sklearn.__version__}, NumPy {numpy.__version__}, "
          f"BLAS {', '.join(blas) or 'unknown'}; {os.cpu_count()} processors; medians of {options.rounds} rounds\n")
    print("| X | components | holes | Kalmia, ms | peer | ms | ratio | passes | variances differ by |")
    print("|---|---|---|---|---|---|---|---|---|")
    cases = CASES if options.case is None else [(*map(int, options.case[:3]), options.case[3])]
    for case in cases:
        compare(case, options.kalmia_pca_side, options.rounds)


if __name__ == "__main__":
    main()
