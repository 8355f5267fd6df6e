#!/usr/bin/python3
"""Times averaged power spectra of Kalmia beside NumPy's FFT on the same signals, one core each, and compares them.

    cmake --preset bench && cmake --build build/bench
    /usr/bin/python3 bench/peers/signal_fft.py build/bench/bench/peers/signal_fft_side

NumPy's side is written for speed: the window is made once, segments are a view, all of them go through one call of rfft
for each signal. It works in double; so do Kalmia's transforms, between cells in single precision.
"""
import argparse
import os
import subprocess
import tempfile
import time

os.environ["OMP_NUM_THREADS"] = os.environ["OPENBLAS_NUM_THREADS"] = "1"
import numpy as np  # noqa: E402  (reads the number of threads when it is loaded)


def power_of(signal, segment, window, squares):
    m = segment // 2
    k = -(-len(signal) // m) // 2
    x = signal - signal.mean()
    x = np.concatenate([x, np.linspace(x[-1], x[0], (2 * k + 1) * m - len(x))])
    segments = np.lib.stride_tricks.as_strided(x, (2 * k, segment), (m * x.itemsize, x.itemsize))
    transforms = np.fft.rfft(segments * window, axis=1)
    power = (transforms.real ** 2 + transforms.imag ** 2).sum(axis=0) / (2 * k * squares)
    power[1:-1] *= 2
    return power


def numpy_side(signals, segment, rounds):
    m = segment // 2
    window = (1 - np.cos(np.pi * np.arange(1, segment + 1) / (m + 0.5))) / 2
    best = float("inf")
    for _ in range(rounds):
        begin = time.perf_counter()
        powers = [power_of(signal, segment, window, (window * window).sum()) for signal in signals]
        best = min(best, time.perf_counter() - begin)
    return best, sum(power.sum() for power in powers)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("signal_fft_side")
    parser.add_argument("--rows", type=int, default=1000)
    parser.add_argument("--columns", type=int, default=4096)
    parser.add_argument("--segments", type=int, nargs="+", default=[64, 256, 1024, 4096])
    parser.add_argument("--rounds", type=int, default=7, help="of which the best counts")
    options = parser.parse_args()
    signals = np.random.default_rng(1).normal(size=(options.rows, options.columns)).astype(np.float32)
    print(f"NumPy {np.__version__}; {options.rows} x {options.columns}, one core, best of {options.rounds}\n")
    print("| segment | Kalmia, ms | NumPy, ms | Kalmia / NumPy | sums of the powers differ by |")
    print("|---|---|---|---|---|")
    with tempfile.NamedTemporaryFile() as file:
        signals.tofile(file.name)
        wide = signals.astype(float)  # outside of what is timed
        for segment in options.segments:
            command = [options.signal_fft_side, file.name, options.rows, options.columns, segment, options.rounds]
            output = subprocess.run(list(map(str, command)), check=True, capture_output=True, text=True).stdout
            ours, our_sum = map(float, output.split())
            theirs, their_sum = numpy_side(wide, segment, options.rounds)
            print(f"| {segment} | {1e3 * ours:.1f} | {1e3 * theirs:.1f} | {ours / theirs:.2f} "
                  f"| {abs(our_sum / their_sum - 1):.0e} |")


if __name__ == "__main__":
    main()
