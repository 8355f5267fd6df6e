#!/usr/bin/python3
"""Reads one tall CSV table by Kalmia and by pandas' C engine, and prints the ratios of their times.

    cmake --preset bench && cmake --build build/bench
    apt-get install python3-pandas
    /usr/bin/python3 bench/peers/tall.py build/bench/bench/peers/tall_side build/bench/app/kalmia

The table has a column of names, 100 columns of N(0,1) to five decimals and one of whole numbers, 200,000 rows: 173 MB.
It is written once, from a fixed seed, and stays in the folder of temporary files (--table names another place). All
times are the fastest of some repeats in one run, with the file in the page cache; pandas runs on one thread always.
"describe" is the whole command: reading, statistics of each column and the output.
"""
import argparse
import os
import subprocess
import tempfile
import time

import numpy
import pandas

ROWS, COLUMNS, SEED = 200_000, 100, 20_240_101
DEFAULT = os.path.join(tempfile.gettempdir(), f"kalmia-tall-{ROWS}x{COLUMNS}-{SEED}.csv")


def write_table(path):
    random = numpy.random.default_rng(SEED)
    with open(path + ".part", "w", encoding="ascii") as file:
        file.write("name," + ",".join(f"x{k}" for k in range(1, COLUMNS + 1)) + ",count\n")
        for begin in range(0, ROWS, 10_000):
            cells = random.standard_normal((10_000, COLUMNS))
            counts = random.integers(0, 1000, 10_000)
            file.writelines(
                f"row {begin + k + 1}," + ",".join(f"{cell:.5f}" for cell in row) + f",{counts[k]}\n"
                for k, row in enumerate(cells))
    os.rename(path + ".part", path)


def seconds_of_pandas(path, repeats):
    best, total = float("inf"), 0.0
    for _ in range(repeats):
        begin = time.perf_counter()
        table = pandas.read_csv(path, engine="c")
        best = min(best, time.perf_counter() - begin)
        total = float(table.select_dtypes("number").to_numpy().sum())
    return best, total


def seconds_of_side(side, path, threads, repeats):
    output = subprocess.run([side, path, str(threads), str(repeats)], check=True, capture_output=True, text=True).stdout
    seconds, total = map(float, output.split())
    return seconds, total


def seconds_of_describe(command, path, threads, repeats):
    best = float("inf")
    processors = ",".join(str(k) for k in sorted(os.sched_getaffinity(0))[:threads])
    for _ in range(repeats):
        begin = time.perf_counter()
        subprocess.run(["taskset", "-c", processors, command, "describe", path], check=True, capture_output=True)
        best = min(best, time.perf_counter() - begin)
    return best


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("side", help="the program tall_side")
    parser.add_argument("command", help="the command kalmia")
    parser.add_argument("--table", default=DEFAULT, help="where the table is, or is to be")
    parser.add_argument("--repeats", type=int, default=3)
    options = parser.parse_args()
    if not os.path.exists(options.table):
        write_table(options.table)
    peer, expected = seconds_of_pandas(options.table, options.repeats)
    size = os.path.getsize(options.table)
    print(f"{size / 1e6:.0f} MB; pandas {pandas.__version__}, C engine: {peer:.2f} s")
    print("threads  read [s]  of pandas  describe [s]  of pandas")
    for threads in (1, 2):
        seconds, total = seconds_of_side(options.side, options.table, threads, options.repeats)
        if abs(total - expected) > 1e-9 * (ROWS * COLUMNS):
            raise SystemExit(f"the numbers add up to {total}, and to {expected} in pandas")
        whole = seconds_of_describe(options.command, options.table, threads, options.repeats)
        print(f"{threads:7}  {seconds:8.3f}  {seconds / peer:9.3f}  {whole:12.3f}  {whole / peer:9.3f}")


if __name__ == "__main__":
    main()
