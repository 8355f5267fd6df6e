#include "signal/PlainFourier.h"

#include <cmath>
#include <complex>
#include <cstddef>

#include "testing/RandomTables.h"

namespace {

const long double kPi = std::acos(-1.0L);

std::size_t At(long long i) { return static_cast<std::size_t>(i); }

std::vector<long double> CentredToLengthOne(std::vector<long double> x) {
  long double sum = 0, squares = 0;
  for (const long double cell : x) sum += cell;
  for (long double& cell : x) cell -= sum / x.size();
  for (const long double cell : x) squares += cell * cell;
  if (squares > 0)
    for (long double& cell : x) cell /= std::sqrt(squares);
  return x;
}

std::vector<long double> PaddedBackToTheStart(std::vector<long double> x, int size) {
  const int n = static_cast<int>(x.size()), p = size - n;
  const long double first = x.front(), last = x.back();
  for (int i = 0; i < p; ++i) x.push_back(p == 1 ? (last - first) / 2 : last - i * (last - first) / (p - 1));
  return x;
}

/// |transform|^2 at frequency k / n of n cells from `first` on, each times its weight.
long double PowerAt(const std::vector<long double>& x, int first, const std::vector<long double>& weights, int k) {
  const long long n = static_cast<long long>(weights.size());
  std::complex<long double> sum = 0;
  for (long long j = 0; j < n; ++j)
    sum += weights[At(j)] * x[At(first + j)] * std::polar(1.0L, 2 * kPi * (j * k % n) / n);
  return std::norm(sum);
}

}  // namespace

std::vector<float> Signal(int n, int kind) {
  std::vector<float> cells;
  for (long long i = 1; i <= n; ++i)
    cells.push_back(static_cast<float>((i * i * 31 + i * 7919 * kind) % 1009) / 64 - 8);
  return cells;
}

NCDataVector<float> VectorOfCells(const std::vector<float>& cells) {
  NCDataVector<float> vector;
  vector.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return vector;
}

int PowerOfTwoAbove(int n) {
  int power = 1;
  while (power < n) power *= 2;
  return power;
}

std::vector<long double> Detrended(const std::vector<float>& signal, FFT::DetrendMode mode) {
  std::vector<long double> x(signal.begin(), signal.end());
  const int n = static_cast<int>(x.size());
  if (mode == FFT::DetrendNone || (mode == FFT::DetrendLinear && n < 2)) return x;
  long double sum = 0, mixed = 0, abscissas = 0;
  const long double middle = (n + 1) / 2.0L;
  for (int i = 1; i <= n; ++i) {
    sum += x[At(i - 1)];
    mixed += (i - middle) * x[At(i - 1)];
    abscissas += (i - middle) * (i - middle);
  }
  const long double slope = mode == FFT::DetrendLinear ? mixed / abscissas : 0;
  for (int i = 1; i <= n; ++i) x[At(i - 1)] -= sum / n + slope * (i - middle);
  return x;
}

std::vector<long double> PlainCorrelation(const std::vector<float>& a, const std::vector<float>& b,
                                          FFT::DetrendMode mode, int lags) {
  const int size = PowerOfTwoAbove(static_cast<int>(a.size()) + lags);
  std::vector<long double> x = Detrended(a, mode), y = Detrended(b, mode), r;
  x.resize(At(size));
  y.resize(At(size));
  x = CentredToLengthOne(x);
  y = CentredToLengthOne(y);
  for (int lag = -lags; lag <= lags; ++lag) {
    long double sum = 0;
    for (int k = 0; k < size; ++k) sum += x[At((k + lag + size) % size)] * y[At(k)];
    r.push_back(sum);
  }
  return r;
}

long double PlainWindow(FFT::DataWindowMode window, int j, int m) {
  const long double distance = (j - 0.5L - m) / (m + 0.5L);
  if (window == FFT::WindowBartlett) return 1 - std::abs(distance);
  if (window == FFT::WindowHann) return (1 - std::cos(kPi * j / (m + 0.5L))) / 2;
  return 1 - distance * distance;
}

std::vector<float> PowerOf(const std::vector<float>& signal, const SpectrumCase& how) {
  NCDataVector<float> power;
  const NCDataVector<float> input = VectorOfCells(signal);
  FFT::PowerSpectrum(&input, how.segment, how.overlap, how.detrend, how.scaling, how.window, &power);
  return CellsOf(power);
}

std::vector<long double> PlainPower(const std::vector<float>& signal, const SpectrumCase& how) {
  const int n = static_cast<int>(signal.size()), m = how.segment / 2;
  const int steps = how.overlap ? (n + m - 1) / m : (n + how.segment - 1) / how.segment;
  const int k = how.overlap ? steps / 2 : (steps + 1) / 2, step = how.overlap ? m : how.segment;
  const std::vector<long double> x =
      PaddedBackToTheStart(Detrended(signal, how.detrend), how.overlap ? (2 * k + 1) * m : 4 * m * k);
  std::vector<long double> weights;
  float sum = 0, squares = 0;  // summed in float
  for (int j = 1; j <= how.segment; ++j) {
    weights.push_back(PlainWindow(how.window, j, m));
    sum += static_cast<float>(weights.back());
    squares += static_cast<float>(weights.back() * weights.back());
  }
  std::vector<long double> power;
  for (int frequency = 0; frequency <= m; ++frequency) {
    long double total = 0;
    for (int segment = 0; segment < 2 * k; ++segment) total += PowerAt(x, segment * step, weights, frequency);
    if (frequency > 0 && frequency < m) total *= 2;
    total /= 2.0L * k * squares;
    if (how.scaling == FFT::ScalingWindow) total *= squares / (static_cast<long double>(sum) * sum);
    power.push_back(total);
  }
  return power;
}
