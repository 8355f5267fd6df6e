#!/usr/bin/python3
"""Times PLS of Kalmia beside R's pls package and scikit-learn, on the same tables, in turn.

    cmake --preset bench && cmake --build build/bench
    apt-get install r-cran-pls python3-sklearn libopenblas0-pthread
    /usr/bin/python3 bench/peers/compare.py build/bench/bench/peers/kalmia_side

Each round runs every package once, so that a machine that slows down slows all of them; the table shows medians over
the rounds and the ratio of Kalmia's to each of the others'. All packages centre the table and form the coefficients;
of "refit" they scale it too, anew in each group, and only scikit-learn takes part, for one number of components.
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
from sklearn.cross_decomposition import PLSRegression
from sklearn.model_selection import PredefinedSplit, cross_val_predict
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import StandardScaler

HERE = os.path.dirname(os.path.abspath(__file__))
CASES = [  # task, rows, columns, Y columns
    ("fit", 1000, 5000, 1),
    ("fit", 1000, 5000, 6),
    ("crossvalidate", 60, 401, 1),
    ("crossvalidate", 1000, 5000, 1),
    ("refit", 60, 401, 1),
    ("refit", 60, 401, 6),
    ("refit", 1000, 5000, 1),
    ("refit", 1000, 5000, 6),
]
COMPONENTS = {"fit": 5, "crossvalidate": 5, "refit": 10}
LIMIT = "0.5"  # seconds for which each side repeats a task, twice at least; the best run counts: the first ones pay for
#                page faults and sleeping threads


def make_table(rows, columns, ys, seed=1):
    """Spectra-like: ten smooth latent bands with noise; Y depends on the bands."""
    random = numpy.random.default_rng(seed)
    scores = random.normal(size=(rows, 10)) * numpy.linspace(2.0, 0.2, 10)
    channel = numpy.linspace(0, 1, columns)
    bands = numpy.exp(-((channel - random.uniform(size=(10, 1))) / 0.08) ** 2)
    x = scores @ bands + 0.05 * random.normal(size=(rows, columns))
    y = scores @ random.normal(size=(10, ys)) + 0.2 * random.normal(size=(rows, ys))
    return x.astype(numpy.float32), y.astype(numpy.float32)


def seconds_of(command):
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()
    return min(float(line) for line in lines)


def sklearn_seconds(task, x, y):
    runs = []
    while len(runs) < 2 or sum(runs) < float(LIMIT):
        runs.append(sklearn_run(task, x, y))
    return min(runs)


def sklearn_run(task, x, y):
    model = PLSRegression(n_components=COMPONENTS[task], scale=False)
    if task == "refit":
        model = make_pipeline(StandardScaler(), model)
    begin = time.perf_counter()
    if task == "fit":
        model.fit(x, y)
    else:
        cross_val_predict(model, x, y, cv=PredefinedSplit(numpy.arange(1, len(x) + 1) % 7))
    return time.perf_counter() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kalmia_side")
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--case", type=int, nargs="+", choices=range(len(CASES)), help="these alone")
    options = parser.parse_args()

    r_versions = subprocess.run(["Rscript", f"{HERE}/r_side.R", "versions"], check=True, capture_output=True, text=True)
    loaded = (line.split()[-1] for line in open("/proc/self/maps"))
    blas = sorted({os.path.realpath(path) for path in loaded if "/libopenblas" in path or "/libblas" in path})
    print(f"{r_versions.stdout.strip()}; scikit-learn {sklearn.__version__}, NumPy {numpy.__version__}, "
          f"BLAS {', '.join(blas) or 'unknown'}; {os.cpu_count()} processors; "
          f"medians of {options.rounds} rounds\n")
    print("| task | components | X | Y | Kalmia, ms | / scikit-learn | / R oscorespls | / R kernelpls |")
    print("|---|---|---|---|---|---|---|---|")
    for task, rows, columns, ys in CASES if options.case is None else [CASES[case] for case in options.case]:
        x, y = make_table(rows, columns, ys)
        x64, y64 = x.astype(float), y.astype(float)
        with tempfile.NamedTemporaryFile() as file:
            file.write(x.tobytes() + y.tobytes())
            file.flush()
            shape = [file.name, str(rows), str(columns), str(ys), task, str(COMPONENTS[task])]
            methods = [] if task == "refit" else ["oscorespls", "kernelpls"]
            times = {name: [] for name in ["kalmia", "sklearn", *methods]}
            for _ in range(options.rounds):
                times["kalmia"].append(seconds_of([options.kalmia_side, *shape, LIMIT]))
                times["sklearn"].append(sklearn_seconds(task, x64, y64))
                for method in methods:
                    times[method].append(seconds_of(["Rscript", f"{HERE}/r_side.R", *shape, LIMIT, method]))
        median = {name: statistics.median(values) for name, values in times.items()}
        ratios = " | ".join(f"{median['kalmia'] / median[name]:.3f}" if name in median else "-"
                            for name in ("sklearn", "oscorespls", "kernelpls"))
        print(f"| {task} | {COMPONENTS[task]} | {rows} x {columns} | {ys} | {1000 * median['kalmia']:.2f} | {ratios} |")
        sys.stdout.flush()


if __name__ == "__main__":
    main()
