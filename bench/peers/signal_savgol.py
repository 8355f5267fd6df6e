#!/usr/bin/python3
"""Times smoothing and derivatives of Kalmia beside SciPy's savgol_filter on the same signals, one core each, in turn.

    cmake --preset bench && cmake --build build/bench
    apt-get install python3-scipy
    /usr/bin/python3 bench/peers/signal_savgol.py build/bench/bench/peers/savgol_side

The signals are 1000 sums of bands with noise, of 4096 cells in float. SciPy gets them as double, which is its fastest
form, and as float. The last column is the largest difference between both results, over the largest cell of SciPy's.
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time

import numpy
import scipy
from scipy.signal import savgol_filter

SIGNALS, CELLS = 1000, 4096
CASES = [(5, 2, 0), (15, 2, 0), (15, 2, 1), (15, 3, 2), (51, 3, 0)]  # window, polynomial, derivative


def make_signals():
    random = numpy.random.default_rng(1)
    x = numpy.arange(CELLS)
    signals = random.normal(scale=0.01, size=(SIGNALS, CELLS))
    for _ in range(8):
        centres, widths, heights = (random.uniform(low, high, (SIGNALS, 1)) for low, high in
                                    ((0, CELLS), (20, 400), (0.1, 1)))
        signals += heights * numpy.exp(-(((x - centres) / widths) ** 2))
    return signals.astype(numpy.float32)


def scipy_seconds(signals, window, polynomial, derivative):
    fastest, total, passes = float("inf"), 0, 0
    while passes < 2 or total < 1:
        begin = time.perf_counter()
        result = savgol_filter(signals, window, polynomial, deriv=derivative, mode="interp")
        seconds = time.perf_counter() - begin
        fastest, total, passes = min(fastest, seconds), total + seconds, passes + 1
    return fastest, result


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("savgol_side")
    options = parser.parse_args()
    signals = make_signals()
    wide = signals.astype(float)
    print(f"SciPy {scipy.__version__}, NumPy {numpy.__version__}\n")
    print("| window | polynomial | derivative | Kalmia, ms | SciPy, ms | Kalmia / SciPy | of float | difference |")
    print("|---|---|---|---|---|---|---|---|")
    with tempfile.TemporaryDirectory() as folder:
        given, made = os.path.join(folder, "in"), os.path.join(folder, "out")
        signals.tofile(given)
        for window, polynomial, derivative in CASES:
            command = [options.savgol_side, given, made, SIGNALS, CELLS, window, polynomial, derivative]
            run = subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True)
            ours = float(run.stdout)
            result = numpy.fromfile(made, numpy.float32).reshape(signals.shape)
            theirs, expected = scipy_seconds(wide, window, polynomial, derivative)
            narrow, _ = scipy_seconds(signals, window, polynomial, derivative)
            difference = numpy.abs(result - expected).max() / numpy.abs(expected).max()
            print(f"| {window} | {polynomial} | {derivative} | {1e3 * ours:.1f} | {1e3 * theirs:.1f} | "
                  f"{ours / theirs:.3f} | {ours / narrow:.3f} | {difference:.1e} |")
            sys.stdout.flush()


if __name__ == "__main__":
    main()
