#!/usr/bin/python3
"""Prints NumPyFourier.h: what NumPy's FFT makes of the signals of PlainFourier.h.

    /usr/bin/python3 tests/signal/numpy_fourier.py > tests/signal/NumPyFourier.h
"""
import numpy as np

MODES = ["DetrendNone", "DetrendMean", "DetrendLinear"]
WINDOWS = ["WindowBartlett", "WindowHann", "WindowWelch"]
SIZES = [1, 2, 3, 4, 7, 8, 16, 31, 32, 64, 100, 128, 256, 500, 512, 1000, 1024, 2047, 2048, 2049, 4095, 4096]


def signal(n, kind):
    i = np.arange(1, n + 1, dtype=np.int64)
    return (i * i * 31 + i * 7919 * kind) % 1009 / 64 - 8


def detrended(x, mode):
    i = np.arange(len(x))
    return x - (0, x.mean(), np.polyval(np.polyfit(i, x, 1), i) if mode == 2 else 0)[mode]


def power_of_two_above(n):
    return 1 << max(0, int(n - 1).bit_length())


def unit(x):
    x = x - x.mean()
    length = np.sqrt((x * x).sum())
    return x / length if length > 0 else x


def correlation(a, b, mode, lags):
    size = power_of_two_above(len(a) + lags)
    if size == 1:
        return np.zeros(1)
    spectra = [np.fft.rfft(unit(np.pad(detrended(x, mode), (0, size - len(x))))) for x in (a, b)]
    r = np.fft.irfft(spectra[0] * spectra[1].conj(), size)
    return r[np.arange(-lags, lags + 1) % size]


def weights(window, m):
    j = np.arange(1, 2 * m + 1)
    distance = (j - 1 - (m - 0.5)) / (m + 0.5)
    return [1 - abs(distance), (1 - np.cos(np.pi * j / (m + 0.5))) / 2, 1 - distance ** 2][window]


def power(x, segment, overlap, mode, scaling, window):
    m, n = segment // 2, len(x)
    k = -(-n // m) // 2 if overlap else (-(-n // segment) + 1) // 2
    step, total = (m, (2 * k + 1) * m) if overlap else (segment, 4 * m * k)
    x, p = detrended(x, mode), total - n
    ramp = [(x[-1] - x[0]) / 2] if p == 1 else np.linspace(x[-1], x[0], p)
    x = np.concatenate([x, ramp])
    w = weights(window, m)
    segments = np.array([x[i * step:i * step + segment] * w for i in range(2 * k)])
    sums = np.cumsum(w.astype(np.float32))[-1], np.cumsum((w * w).astype(np.float32))[-1]  # in float, one by one
    result = (abs(np.fft.rfft(segments, axis=1)) ** 2).sum(axis=0) / (2 * k * float(sums[1]))
    result[1:-1] *= 2
    return result * float(sums[1]) / float(sums[0]) ** 2 if scaling else result


def cells(values):
    return "{" + ", ".join(f"{value:.12g}" for value in values) + "}"


print(f"""#pragma once

#include "kalmia/signal/FFT.h"

// Made by numpy_fourier.py with NumPy {np.__version__}: its FFT on the signals of PlainFourier.h, in double.

/// The correlations of Signal(n, 1) with itself and with Signal(n, 2) at the lags -lags, -lags / 2, 0, lags / 2 (halves
/// rounded towards 0) and lags.
struct NumPyCorrelation {{
  int n, lags;
  FFT::DetrendMode detrend;
  double itself[5], cross[5];
}};

inline const NumPyCorrelation kNumPyCorrelations[] = {{""")
for index, n in enumerate(SIZES):
    mode = index % 3 if n > 2 else 0
    lags = (n, n // 2, n - 1)[index % 3]
    places = np.array([-lags, -(lags // 2), 0, lags // 2, lags]) + lags
    own, cross = (correlation(signal(n, 1), signal(n, kind), mode, lags)[places] for kind in (1, 2))
    print(f"    {{{n}, {lags}, FFT::{MODES[mode]},\n     {cells(own)},\n     {cells(cross)}}},")
print("""};

/// The power of Signal(n, 1) at the frequencies 0, 1 / segment, 1 / 4 and 1 / 2, and the sum over all frequencies.
struct NumPyPower {
  int n, segment;
  bool overlap;
  FFT::DetrendMode detrend;
  FFT::ScalingMode scaling;
  FFT::DataWindowMode window;
  double power[4], whole;
};

inline const NumPyPower kNumPyPowers[] = {""")
for index in range(1, 13):
    segment = 1 << index
    for overlap in (False, True):
        n = (5 * segment + 3, 4096, segment + 1)[(index + overlap) % 3]
        mode, scaling, window = (index + overlap) % 3, index % 2, index // 3 % 3
        p = power(signal(n, 1), segment, overlap, mode, scaling, window)
        values = cells(p[[0, 1, segment // 4, segment // 2]])
        print(f"    {{{n}, {segment}, {str(overlap).lower()}, FFT::{MODES[mode]}, FFT::ScalingMode({scaling}), "
              f"FFT::{WINDOWS[window]},\n     {values}, {p.sum():.12g}}},")
print("};")
