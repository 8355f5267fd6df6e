#!/usr/bin/python3
"""Writes probabilities.csv: quantiles and shares to 20 digits, what ProbabilitiesTest.cpp expects.

    /usr/bin/python3 probabilities.py > probabilities.csv     # Debian 12, python3-mpmath 1.2.1; some seconds

Incomplete beta and gamma functions in 40 digits; quantiles by bisection of them.
"""
from mpmath import betainc, gammainc, inf, mp, mpf, nstr

mp.dps = 40


def beta_below(x, a, b):
    return betainc(a, b, 0, x, regularized=True)


def f_above(f, m, n):
    return betainc(n / 2, m / 2, 0, n / (n + m * f), regularized=True)


def t_beyond(t, n):
    return betainc(n / 2, mpf(1) / 2, 0, n / (n + t * t), regularized=True)


def chi2_above(x, n):
    return gammainc(n / 2, x / 2, inf, regularized=True)


def solve(rises, wanted, high):
    low, high = mpf(0), mpf(high)
    for _ in range(130):
        middle = (low + high) / 2
        low, high = (middle, high) if rises(middle) < wanted else (low, middle)
    return low


def main():
    print("what,argument,a,b,value")
    for share in ("0.5", "0.95", "0.975", "0.99", "0.9999"):
        p = mpf(float(share))
        for a, b in ((0.5, 29), (1.5, 28), (7.5, 0.5), (1, 999)):
            value = solve(lambda x: beta_below(x, mpf(a), mpf(b)), p, 1)
            print(f"beta,{share},{a},{b},{nstr(value, 20)}")
        for m, n in ((1, 1), (3, 57), (6, 53), (15, 1), (2, 1000)):
            value = solve(lambda x: 1 - f_above(x, mpf(m), mpf(n)), p, mpf(10)**12)
            print(f"f,{share},{m},{n},{nstr(value, 20)}")
        for n in (1, 2, 6, 56, 1000):
            value = solve(lambda x: 1 - t_beyond(x, mpf(n)), p, mpf(10)**5)
            print(f"t,{share},{n},0,{nstr(value, 20)}")
        for n in ("1", "1.2429570126883625", "30", "1000"):
            value = solve(lambda x: 1 - chi2_above(x, mpf(float(n))), p, mpf(2) * 10**4)
            print(f"chi2,{share},{n},0,{nstr(value, 20)}")
    for f, m, n in (("0.5", 2, 3), ("340.41753515831596", 6, 53), ("4", 1, 1000), ("1e4", 10, 50)):
        print(f"above f,{f},{m},{n},{nstr(f_above(mpf(float(f)), mpf(m), mpf(n)), 20)}")
    for t, n in (("0", 6), ("1e-8", 6), ("2.5", 1), ("-2.5", 6), ("40", 60), ("3", 1000)):
        print(f"beyond t,{t},{n},0,{nstr(t_beyond(mpf(float(t)), mpf(n)), 20)}")


if __name__ == "__main__":
    main()
