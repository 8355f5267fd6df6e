#!/usr/bin/python3
"""Times Fisher's exact test of Kalmia beside R's fisher.test on the same hard tables, and compares the probabilities.

    cmake --preset bench && cmake --build build/bench
    /usr/bin/python3 bench/peers/fisher.py build/bench/bench/peers/fisher_side --totals 60 80 --tables 3

The tables are 5 x 6, of counts that fall on the cells independently: the margins are even, which is the hard case.
"""
import argparse
import os
import random
import statistics
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROWS, COLUMNS = 5, 6


def make_table(total, source):
    cells = [0] * (ROWS * COLUMNS)
    for _ in range(total):
        cells[source.randrange(ROWS * COLUMNS)] += 1
    return [ROWS, COLUMNS, *cells]


def results_of(command):
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return [tuple(map(float, line.split())) for line in lines]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("fisher_side")
    parser.add_argument("--totals", type=int, nargs="+", default=[60, 80])
    parser.add_argument("--tables", type=int, default=3, help="of each total")
    options = parser.parse_args()
    ask = ["Rscript", f"{HERE}/fisher_side.R", "version"]
    version = subprocess.run(ask, check=True, capture_output=True, text=True)
    print(f"{version.stdout.strip()}; medians of {options.tables} tables\n")
    print("| counts | Kalmia, s | R, s | Kalmia / R | largest relative difference of p |")
    print("|---|---|---|---|---|")
    source = random.Random(1)
    for total in options.totals:
        tables = [make_table(total, source) for _ in range(options.tables)]
        with tempfile.NamedTemporaryFile("w") as file:
            file.writelines(" ".join(map(str, table)) + "\n" for table in tables)
            file.flush()
            ours = results_of([options.fisher_side, file.name])
            theirs = results_of(["Rscript", f"{HERE}/fisher_side.R", file.name])
        seconds = [statistics.median(result[0] for result in side) for side in (ours, theirs)]
        difference = max(abs(a[1] - b[1]) / b[1] for a, b in zip(ours, theirs))
        print(f"| {total} | {seconds[0]:.3f} | {seconds[1]:.3f} | {seconds[0] / seconds[1]:.3f} | {difference:.1e} |")
        sys.stdout.flush()


if __name__ == "__main__":
    main()
