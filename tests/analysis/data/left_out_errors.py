#!/usr/bin/python3
"""Writes left_out_errors.csv: errors of rows that PLS models of 0, 1, ... components were not fitted to.

    /usr/bin/python3 left_out_errors.py > left_out_errors.csv    # Debian 12: numpy 1.24.2, scikit-learn 1.2.1

Tables of examples/data, in seven rounds: row i (from 1) stays out in round i mod 7. Each round scales X and Y by the
rows that stay in, to unit variance (or centres them alone), and fits by NIPALS in double precision, over the cells that
are there.
  gasoline, gasoline-centre   octane by 401 channels
  oliveoil                    six attributes of the panel by five chemical measures
  wine                        alcohol by the twelve other measures
  gasoline-holes              5 % of the cells of X are missing, and octane of every 19th sample
  wine-holes                  alcohol, hue and proline by the ten others; 5 % of X and cells of each Y are missing
The cell of row i and column k of X (both from 1) is missing where 7 i i + 13 k + 5 i k is a multiple of 19.

PRESS counts cells in units of the standard deviation of all measured cells of their column; `chosen` is the least
number whose mean error of rows is within one standard error of the least one (one-se).
On standard error: by how much complete tables differ from scikit-learn's PLSRegression, refitted in the same rounds.
"""
import csv
import sys
from pathlib import Path

import numpy
from sklearn.cross_decomposition import PLSRegression

EXAMPLES = Path(__file__).parents[3] / "examples/data"
ROUNDS = 7


def read(name, columns):
    with open(EXAMPLES / f"{name}.csv", newline="") as file:
        rows = list(csv.DictReader(file))
    return numpy.array([[float(row[column]) for column in columns] for row in rows])


def header(name):
    with open(EXAMPLES / f"{name}.csv", newline="") as file:
        return next(csv.reader(file))


def with_holes(x):
    i, k = numpy.indices(x.shape) + 1
    return numpy.where((7 * i * i + 13 * k + 5 * i * k) % 19 == 0, numpy.nan, x)


def scaled(table, inside, unit):
    mean = numpy.nanmean(table[inside], axis=0)
    spread = numpy.nanstd(table[inside], axis=0, ddof=1) if unit else numpy.ones(table.shape[1])
    return (table - mean) / spread, mean, spread


def along_rows(table, weights):
    """For each row the slope of its present cells on the weights of their columns; NaN for a row of holes.

    Where the columns that are there have less than a third of the weights' sum of squares, a third counts.
    """
    there = ~numpy.isnan(table)
    slopes = numpy.where(there, table, 0) @ weights / numpy.maximum(there @ weights**2, weights @ weights / 3)
    return numpy.where(there.any(axis=1), slopes, numpy.nan)


def along_columns(table, weights):
    """The same for columns, over the rows whose weight is there."""
    kept = ~numpy.isnan(weights)
    return along_rows(table[kept].T, weights[kept])


def component(x, y):
    """w, p, c of the next component. For several Y the rounds go on until w stands still in double precision."""
    u = y[:, numpy.nansum(y**2, axis=0).argmax()]
    last = None
    for _ in range(5000):
        w = along_columns(x, u)
        w /= numpy.linalg.norm(w)
        t = along_rows(x, w)
        c = along_columns(y, t)
        if y.shape[1] == 1 or (last is not None and numpy.linalg.norm(w - last) < 1e-13):
            return w, along_columns(x, t), c
        last, u = w, along_rows(y, c)
    sys.exit("The weights of a component do not come to rest.")


def predictions(x, y, inside, unit, most):
    """Of all rows for 0, 1, ... components, by a model of the rows inside."""
    x, _, _ = scaled(x, inside, unit)
    left, mean, spread = scaled(y, inside, unit)
    sums = numpy.zeros(y.shape)
    by_number = [mean + 0 * sums]
    for _ in range(most):
        w, p, c = component(x[inside], left[inside])
        t = along_rows(x, w)
        x, left, sums = x - numpy.outer(t, p), left - numpy.outer(t, c), sums + numpy.outer(t, c)
        by_number.append(mean + spread * sums)
    return numpy.array(by_number)


def predictions_of_peer(x, y, inside, unit, most):
    x, _, _ = scaled(x, inside, unit)
    ys, mean, spread = scaled(y, inside, unit)
    by_number = [mean + 0 * y]
    for a in range(1, most + 1):
        model = PLSRegression(n_components=a, scale=False, tol=1e-24, max_iter=100000).fit(x[inside], ys[inside])
        by_number.append(mean + spread * model.predict(x).reshape(y.shape))
    return numpy.array(by_number)


def left_out(x, y, unit, most, predict):
    groups = numpy.arange(1, len(y) + 1) % ROUNDS
    result = numpy.full((most + 1, *y.shape), numpy.nan)
    for group in range(ROUNDS):
        out = groups == group
        result[:, out] = predict(x, y, ~out, unit, most)[:, out]
    return result


def one_standard_error(errors):
    """Of N x (A + 1) errors of rows."""
    best = errors.sum(axis=0).argmin()
    limit = errors[:, best].mean() + errors[:, best].std(ddof=1) / len(errors)**0.5
    return int((errors.mean(axis=0) <= limit).argmax())


def write(case, names, x, y, unit=True, most=8):
    most = min(most, x.shape[1])
    predicted = left_out(x, y, unit, most, predictions)
    if not numpy.isnan(x).any():
        peer = left_out(x, y, unit, most, predictions_of_peer)
        print(case, "differs from scikit-learn by", numpy.abs(predicted / peer - 1).max(), file=sys.stderr)
    squares = (y - predicted)**2
    rows = numpy.nansum(squares / numpy.nanvar(y, axis=0, ddof=1), axis=2)
    measured = ~numpy.isnan(y).all(axis=1)
    press, chosen = rows.sum(axis=1), one_standard_error(rows[:, measured].T)
    for a in range(most + 1):
        for name, rmsecv in zip(names, numpy.sqrt(numpy.nanmean(squares[a], axis=0))):
            print(f"{case},{a},{name},{press[a]:.12g},{1 - press[a] / press[0]:.12g},{rmsecv:.12g},{chosen}")


def main():
    print("case,components,y,press,q2,rmsecv,chosen")
    octane, spectra = read("gasoline", ["octane"]), read("gasoline", header("gasoline")[2:])
    write("gasoline", ["octane"], spectra, octane)
    write("gasoline-centre", ["octane"], spectra, octane, unit=False)
    oil = header("oliveoil")[1:]
    write("oliveoil", oil[5:], read("oliveoil", oil[:5]), read("oliveoil", oil[5:]))
    measures = header("wine")[2:]
    write("wine", ["alcohol"], read("wine", measures[1:]), read("wine", ["alcohol"]))

    sample = numpy.arange(1, len(octane) + 1)[:, None]
    write("gasoline-holes", ["octane"], with_holes(spectra), numpy.where(sample % 19 == 0, numpy.nan, octane))
    targets = ["alcohol", "hue", "proline"]
    y = read("wine", targets)
    i, j = numpy.indices(y.shape) + 1
    y[((i + j) % 17 == 0) | (i == 50)] = numpy.nan
    write("wine-holes", targets, with_holes(read("wine", [name for name in measures if name not in targets])), y,
          most=5)  # for several Y and holes the rounds need not come to rest: here they turn for ever in the 6th


if __name__ == "__main__":
    main()
