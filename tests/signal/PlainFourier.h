#pragma once

#include <vector>

#include "kalmia/signal/FFT.h"

// The operations of FFT from their definitions: sums over all pairs of cells, in long double, no fast transform.

/// A signal of n cells without a pattern; every cell is a multiple of 1/64 within +-8. Another `kind`, another signal.
std::vector<float> Signal(int n, int kind);
NCDataVector<float> VectorOfCells(const std::vector<float>& cells);

/// The smallest power of two at or above n.
int PowerOfTwoAbove(int n);

/// What `mode` leaves of the signal.
std::vector<long double> Detrended(const std::vector<float>& signal, FFT::DetrendMode mode);

/// sum over k of a(k + lag) b(k), shifts taken round the end, of the signals detrended, padded to the power of two for
/// so many lags, centred and of length 1; for the lags -lags to lags.
std::vector<long double> PlainCorrelation(const std::vector<float>& a, const std::vector<float>& b,
                                          FFT::DetrendMode mode, int lags);

/// How a power spectrum is taken.
struct SpectrumCase {
  int segment;
  bool overlap;
  FFT::DetrendMode detrend;
  FFT::ScalingMode scaling;
  FFT::DataWindowMode window;
};
std::vector<float> PowerOf(const std::vector<float>& signal, const SpectrumCase& how);
std::vector<long double> PlainPower(const std::vector<float>& signal, const SpectrumCase& how);

/// Weight of cell j (from 1) of a segment of 2 m.
long double PlainWindow(FFT::DataWindowMode window, int j, int m);
