#!/usr/bin/python3
"""Writes left_out_gasoline.csv: what PLS models say of gasoline samples that they were not fitted to.

    /usr/bin/python3 left_out_gasoline.py > left_out_gasoline.csv    # Debian 12: numpy 1.24.2, scipy 1.10.1

Octane of the 60 spectra of examples/data/gasoline.csv (J. H. Kalivas, Chemom. Intell. Lab. Syst. 37 (1997) 255-259), in
seven rounds: sample i (from 1) stays out in round i mod 7. Each round scales by the samples that stay in, X and Y to
unit variance (uv0 to uv6) or centred alone (centre0 to centre6), and fits 0 to 6 components by NIPALS in double
precision. t2 is Hotelling's of the samples in the model of all 60 with 3 components, to unit variance.

On standard error: what the tests expect, from these numbers by numpy and scipy alone. left_out_gasoline.R has the same
RMSECV from the R package pls.
"""
import sys
from pathlib import Path

import numpy
from scipy import stats

TABLE = Path(__file__).parents[3] / "examples/data/gasoline.csv"
COMPONENTS = 6


def scaled(x, rows, unit):
    mean = x[rows].mean(axis=0)
    spread = x[rows].std(axis=0, ddof=1) if unit else numpy.ones(x.shape[1])
    return (x - mean) / spread, mean, spread


def nipals(x, y, components):
    """Scores and coefficients of one to so many components of centred tables, Y of one column."""
    x, y = x.copy(), y.copy()
    weights, loadings, inner, scores, coefficients = [], [], [], [], []
    for _ in range(components):
        w = x.T @ y
        w /= numpy.linalg.norm(w)
        t = x @ w
        p, c = x.T @ t / (t @ t), y @ t / (t @ t)
        x, y = x - numpy.outer(t, p), y - t * c
        weights.append(w), loadings.append(p), inner.append(c), scores.append(t)
        w_, p_ = numpy.array(weights).T, numpy.array(loadings).T
        coefficients.append(w_ @ numpy.linalg.solve(p_.T @ w_, numpy.array(inner)))
    return numpy.array(scores).T, coefficients


def left_out(x, y, groups, unit):
    predicted = numpy.zeros((len(y), COMPONENTS + 1))
    for g in sorted(set(groups)):
        inside, out = groups != g, groups == g
        xs, _, _ = scaled(x, inside, unit)
        ys, mean, spread = scaled(y[:, None], inside, unit)
        _, coefficients = nipals(xs[inside], ys[inside, 0], COMPONENTS)
        predicted[out, 0] = mean[0]
        for a, b in enumerate(coefficients, 1):
            predicted[out, a] = mean[0] + spread[0] * (xs[out] @ b)
    return predicted


def say(*words):
    print(*words, file=sys.stderr)


def main():
    table = numpy.genfromtxt(TABLE, delimiter=",", skip_header=1)
    y, x = table[:, 1], table[:, 2:]
    n, a = len(y), 3
    groups = numpy.arange(1, n + 1) % 7
    uv, centre = left_out(x, y, groups, True), left_out(x, y, groups, False)
    scores, _ = nipals(scaled(x, groups >= 0, True)[0], scaled(y[:, None], groups >= 0, True)[0][:, 0], a)
    t2 = ((scores - scores.mean(axis=0))**2 / scores.var(axis=0, ddof=1)).sum(axis=1)

    for name, predicted in (("uv", uv), ("centre", centre)):
        errors = (y[:, None] - predicted)**2
        press = errors.sum(axis=0)
        say(name, "RMSECV", numpy.sqrt(errors.mean(axis=0)).tolist())
        say(name, "Q2", (1 - press / press[0]).tolist())
        best = press.argmin()
        scale = y.var(ddof=1)
        limit = errors[:, best].mean() + errors[:, best].std(ddof=1) / n**0.5
        say(name, "one-se: best", best, "limit", limit / scale, "MSE", (errors.mean(axis=0) / scale).tolist())
    e2 = (y - uv[:, a])**2
    ss, press = ((y - y.mean())**2).sum(), e2.sum()
    f = (ss - press) / (2 * a) / (press / (n - 1 - 2 * a))
    say("CV-ANOVA", f, 2 * a, n - 1 - 2 * a, "p", stats.f.sf(f, 2 * a, n - 1 - 2 * a))
    leverage = t2 / (n - 1)
    s = numpy.sqrt((e2 / (1 + 1 / n + leverage)).mean())
    say("interval: s", s, "half a width at the first sample",
        stats.t.ppf(0.975, n - 1 - a) * s * numpy.sqrt(1 + 1 / n + leverage[0]))
    for p in (0.95, 0.99):
        say("T2", p, "training", (n - 1)**2 / n * stats.beta.ppf(p, a / 2, (n - a - 1) / 2), "new",
            a * (n**2 - 1) / (n * (n - a)) * stats.f.ppf(p, a, n - a))

    names = [f"{kind}{a}" for kind in ("uv", "centre") for a in range(COMPONENTS + 1)]
    print(",".join(["octane", "t2"] + names))
    for i in range(n):
        print(",".join(f"{v:.12g}" for v in [y[i], t2[i], *uv[i], *centre[i]]))


if __name__ == "__main__":
    main()
