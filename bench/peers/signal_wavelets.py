#!/usr/bin/python3
"""Times wavelet transforms of Kalmia beside PyWavelets' wavedec and waverec on the same tables, and compares them.

    cmake --preset bench && cmake --build build/bench
    apt-get install python3-pywt
    /usr/bin/python3 bench/peers/signal_wavelets.py build/bench/bench/peers/signal_wavelets_side

Rows are signals, transformed down to one coefficient; one processor. PyWavelets runs in the mode 'periodization', on
floats, which it transforms in float arithmetic, and on doubles; Kalmia holds floats and sums in double. PyWavelets
centres its windows, so coefficients are compared level by level on the first row, with the signal shifted:
low = dwt(roll(x, -c))[0] and high = sign * dwt(roll(x, c))[1], c = half the taps less one (see WaveletPeerTest.cpp).
"""
import argparse
import os
import subprocess
import sys
import tempfile
import time
import warnings

import numpy
import pywt

# PyWavelets' name, Kalmia's family and order, and the sign of the details.
FILTERS = [("db2", 2, "4", -1), ("db4", 2, "8", -1), ("db10", 2, "20", -1), ("db25", 2, "50", -1), ("sym8", 3, "8", -1),
           ("bior4.4", 7, "4", 1)]


def best_of(run, seconds):
    """The fastest of as many runs as fit the time, two at least: the first ones pay for page faults."""
    times = []
    while len(times) < 2 or sum(times) < seconds:
        begin = time.perf_counter()
        run()
        times.append(time.perf_counter() - begin)
    return min(times)


def seconds_of_peer(x, name, seconds):
    levels = x.shape[1].bit_length() - 1
    coefficients = pywt.wavedec(x, name, "periodization", level=levels, axis=1)
    return (best_of(lambda: pywt.wavedec(x, name, "periodization", level=levels, axis=1), seconds),
            best_of(lambda: pywt.waverec(coefficients, name, "periodization", axis=1), seconds))


def coefficients_of_peer(signal, name, sign):
    wavelet = pywt.Wavelet(name)
    centre = wavelet.dec_len // 2 - 1
    low, details = signal.astype(float), []
    while len(low) > 1:
        details.insert(0, sign * pywt.dwt(numpy.roll(low, centre), wavelet, "periodization")[1])
        low = pywt.dwt(numpy.roll(low, -centre), wavelet, "periodization")[0]
    return numpy.concatenate([low, *details])


def results_of(command):
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return [[float(number) for number in line.split()] for line in lines]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("signal_wavelets_side")
    parser.add_argument("--rows", type=int, default=1000)
    parser.add_argument("--columns", type=int, default=4096, help="a power of two")
    parser.add_argument("--seconds", type=float, default=0.5, help="for each task")
    options = parser.parse_args()
    warnings.filterwarnings("ignore", message="Level value")  # filters are longer than the last levels
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    x = numpy.random.default_rng(1).normal(size=(options.rows, options.columns)).astype(numpy.float32)
    print(f"PyWavelets {pywt.__version__}, NumPy {numpy.__version__}; {options.rows} x {options.columns}\n")
    print("| filter | taps | task | Kalmia, ms | / PyWavelets, float | / PyWavelets, double | coefficients differ by |")
    print("|---|---|---|---|---|---|---|")
    with tempfile.NamedTemporaryFile() as file:
        x.tofile(file.name)
        for name, family, order, sign in FILTERS:
            command = [options.signal_wavelets_side, file.name, *map(str, x.shape), str(family), order]
            forward, backward, gap, first = results_of([*command, str(options.seconds)])
            theirs = [seconds_of_peer(x.astype(cells), name, options.seconds) for cells in (float, numpy.float32)]
            difference = numpy.abs(numpy.array(first) - coefficients_of_peer(x[0], name, sign)).max()
            for task, (ours, title, what) in enumerate(
                    [(forward, "forward", difference), (backward, "backward", gap[0])]):
                double, single = (min(ours) / peer[task] for peer in theirs)
                label = f"{what:.0e}" + (" (round trip)" if task else "")
                print(f"| {name} | {pywt.Wavelet(name).dec_len} | {title} | {1e3 * min(ours):.1f} | {single:.2f} "
                      f"| {double:.2f} | {label} |")
            sys.stdout.flush()


if __name__ == "__main__":
    main()
