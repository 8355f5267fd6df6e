#!/usr/bin/python3
"""Writes quantiles.csv: quantiles to 40 digits, what DistributionsTest holds the command's against.

    /usr/bin/python3 quantiles.py > quantiles.csv     # Debian 12, python3-mpmath 1.2.1; about seven minutes of one processor

Every distribution is one on the positive numbers: |Z|, |T| (its square has the F distribution with 1 and df degrees of
freedom), chi-square, F. A tail is the integral of the density over log x from the quantile outwards, by tanh-sinh
quadrature in pieces as long as the density stays of one size; the incomplete beta and gamma functions of mpmath, and
erfc, take its place where the degrees of freedom are few. The quantile is found by bisection in 20 digits and Newton's
method in 60, on the smaller of the two tails, with the probability as the double that the command reads.
"""
from mpmath import betainc, erf, erfc, exp, gammainc, log, log1p, loggamma, mp, mpf, nstr, quad, sqrt

FEW = 1000

CASES = [("normal", tail, p, 0, 0) for tail in ("lower", "upper") for p in (1e-300, 1e-17, 0.3, 0.95, 0.99999999)]
CASES += [("t", "lower", p, df, 0) for df in (0.5, 1, 3, 10, 1e4, 1e8, 1e9) for p in (1e-17, 0.5, 0.95, 1 - 2.0**-50)]
CASES += [("t", "upper", p, df, 0) for df in (2.5, 30, 1e8) for p in (1e-200, 0.05, 0.999999)]
CASES += [("t", "lower", 0.3, 1e-3, 0)]
CASES += [("chi2", tail, p, df, 0) for tail in ("lower", "upper") for df in (0.1, 1, 10, 1e5, 1e9)
          for p in (1e-100, 0.05, 0.999) if (df, p) != (0.1, 1e-100)]  # 3e-361 is no double
CASES += [("f", "upper", p, a, b) for a, b in ((1, 1), (3, 20), (20, 3), (1e5, 20), (1e8, 1e8), (2, 1e9))
          for p in (1e-100, 0.05, 0.5, 0.999999, 1 - 2.0**-50)]
CASES += [("f", "lower", 1e-300, 1e5, 20), ("f", "lower", 0.5, 1e-2, 3), ("f", "upper", 0.5, 1e9, 1e9)]


def tails_of_density(constant, log_density, slope, curvature):
    def tail(x, upper):
        u, sign, total = log(x), 1 if upper else -1, mpf(0)
        level = log_density(u)
        if sign * slope(u) > sqrt(curvature(u)):
            return mpf(1)  # well over half: the peak and more than a standard deviation before it; 1 will do to compare
        while True:
            step = min(1 / (abs(slope(u)) / 3 + sqrt(abs(curvature(u))) / 1.5 + mpf(10)**-50), mpf(2))
            piece = quad(lambda v: exp(log_density(v) - level), sorted((u, u + sign * step)), maxdegree=8)
            total, u = total + piece, u + sign * step
            if piece <= total * mpf(10)**(5 - mp.dps) and sign * slope(u) < 0:
                return total * exp(level + constant)

    return tail


def beta(a, b, x, rest):
    """The incomplete beta function of x = 1 - rest, by its other end where the series there is quicker and as good."""
    if x > 0.5:
        other = betainc(b, a, 0, rest, regularized=True)
        if other < 0.999:
            return 1 - other
    return betainc(a, b, 0, x, regularized=True)


def tails_of_f(a, b):
    if max(a, b) <= FEW:
        def tail(x, upper):
            low, high = a * x / (a * x + b), b / (a * x + b)
            if upper:
                return beta(b / 2, a / 2, high, low)
            return beta(a / 2, b / 2, low, high)
        return tail
    constant = loggamma((a + b) / 2) - loggamma(a / 2) - loggamma(b / 2) + a / 2 * log(a / b)
    share = lambda u: a / b * exp(u) / (1 + a / b * exp(u))
    return tails_of_density(constant, lambda u: a / 2 * u - (a + b) / 2 * log1p(a / b * exp(u)),
                            lambda u: a / 2 - (a + b) / 2 * share(u), lambda u: (a + b) / 2 * share(u) * (1 - share(u)))


def tails_of_chi2(k):
    if k <= FEW:
        def tail(x, upper):
            return gammainc(k / 2, x / 2, mp.inf, regularized=True) if upper else gammainc(k / 2, 0, x / 2, regularized=True)
        return tail
    return tails_of_density(-k / 2 * log(2) - loggamma(k / 2), lambda u: k / 2 * u - exp(u) / 2,
                            lambda u: k / 2 - exp(u) / 2, lambda u: exp(u) / 2)


def tails_of(name, a, b):
    if name == "normal":
        return lambda x, upper: erfc(x / sqrt(2)) if upper else erf(x / sqrt(2))
    if name == "t":
        square = tails_of_f(mpf(1), a)
        return lambda x, upper: square(x * x, upper)
    return tails_of_chi2(a) if name == "chi2" else tails_of_f(a, b)


def quantile(name, side, p, a, b):
    tail = tails_of(name, mpf(a), mpf(b))
    upper, share = side == "upper", mpf(p)
    if p > 0.5:
        upper, share = not upper, 1 - share
    mp.dps = 20
    low, high = mpf(-710), mpf(4 if name == "normal" else 709)  # of log x
    while high - low > 1e-6:
        middle = (low + high) / 2
        if (tail(exp(middle), upper) < share) == upper:
            high = middle
        else:
            low = middle
    mp.dps = 60
    u = (low + high) / 2
    for _ in range(6):  # each doubles the digits, from 6 on; the slope by differences costs few of them
        h = mpf(10)**-25
        value = tail(exp(u), upper)
        slope = (tail(exp(u + h), upper) - value) / h
        u -= (value - share) / slope
    return exp(u)


def main():
    print("distribution,tail,probability,df,df2,quantile")
    for name, side, p, a, b in CASES:
        print(f"{name},{side},{p!r},{a!r},{b!r},{nstr(quantile(name, side, p, a, b), 40)}", flush=True)


if __name__ == "__main__":
    main()
