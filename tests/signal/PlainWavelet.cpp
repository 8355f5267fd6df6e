#include "signal/PlainWavelet.h"

namespace {

int Wrapped(int index, int n) {
  while (index < 1) index += n;
  while (index > n) index -= n;
  return index;
}

int PowerOf(int n) {
  int power = 1;
  while (power < n) power *= 2;
  return power;
}

int LevelsOf(int power) { return power == 1 ? 0 : 1 + LevelsOf(power / 2); }

}  // namespace

PlainCells PlainCellsOf(const NCDataVector<float>& v) {
  PlainCells cells(1);
  cells.insert(cells.end(), v.begin(), v.end());
  return cells;
}

void PlainForwardStep(const PlainCells& in, PlainCells& out, int n, int lowStart, int highStart,
                      const Wavelet::WaveletFilters& filters) {
  const int s = lowStart < highStart ? lowStart : highStart;
  for (int k = 1; k <= n / 2; ++k) {
    double high = 0, low = 0;
    for (int i = 1; i <= filters.highPass->Size(); ++i)
      high += double(in[s - 1 + Wrapped(2 * k + 1 - i, n)]) * double((*filters.highPass)[i]);
    const int length = filters.lowPass->Size();
    for (int i = 1; i <= length; ++i)
      low += double(in[s - 1 + Wrapped(2 * k + length - 1 - i, n)]) * double((*filters.lowPass)[i]);
    out[highStart + k - 1] = static_cast<float>(high);
    out[lowStart + k - 1] = static_cast<float>(low);
  }
}

void PlainBackwardStep(const PlainCells& in, PlainCells& out, int n, int lowStart, int highStart,
                       const Wavelet::WaveletFilters& filters) {
  const int s = lowStart < highStart ? lowStart : highStart, length = filters.highPass->Size();
  for (int j = 1; j <= n; ++j) {
    double sum = 0;
    for (int i = 1; i <= length; ++i) {
      if (i % 2 != j % 2) continue;
      const int p = Wrapped(j - i + 1, n), q = Wrapped(j - i + length, n);
      sum += double(in[lowStart + (p + 1) / 2 - 1]) * double((*filters.lowPass)[i]);
      sum += double(in[highStart + q / 2 - 1]) * double((*filters.highPass)[i]);
    }
    out[s + j - 1] = static_cast<float>(sum);
  }
}

PlainCells PlainForward(const PlainCells& signal, const Wavelet::WaveletFilters& filters) {
  int n = static_cast<int>(signal.size()) - 1;
  const int power = PowerOf(n);
  PlainCells out = signal, work = signal;
  if (n == power) {
    for (int m = n; m > 1; m /= 2) {
      for (int i = 1; i <= m; ++i) work[i] = out[i];
      PlainForwardStep(work, out, m, 1, m / 2 + 1, filters);
    }
    return out;
  }
  for (int level = 1; level <= LevelsOf(power) - 1; ++level) {
    int m = n >> (level - 1);
    if (m % 2 == 1) {
      --n;
      --m;
    }
    for (int i = 1; i <= m; ++i) work[i] = out[i];
    PlainForwardStep(work, out, m, 1, m / 2 + 1, filters);
  }
  return out;
}

PlainCells PlainBackward(const PlainCells& coefficients, const Wavelet::WaveletFilters& filters) {
  const int n = static_cast<int>(coefficients.size()) - 1, power = PowerOf(n);
  PlainCells a = coefficients, b = coefficients;
  if (n == power) {
    for (int level = LevelsOf(power); level >= 1; --level) {
      const int m = power >> (level - 1);
      for (int i = 1; i <= m; ++i) a[i] = b[i];
      PlainBackwardStep(a, b, m, 1, m / 2 + 1, filters);
    }
    return b;
  }
  std::vector<int> recorded;
  for (int round = 1, m = n; round <= LevelsOf(power) - 1; ++round, m /= 2)
    if (m % 2 == 1) recorded.push_back(m--);
  for (int round = 1, s = 2; round <= LevelsOf(power) - 1; ++round, s *= 2) {
    for (int i = 1; i <= s; ++i) a[i] = b[i];
    PlainBackwardStep(a, b, s, 1, s / 2 + 1, filters);
    if (!recorded.empty() && recorded.back() == s + 1) {
      recorded.pop_back();
      ++s;
    }
  }
  return b;
}

void PlainForwardPackets(PlainCells& work, PlainCells& out, const BoolVector& decisions,
                         const Wavelet::WaveletFilters& filters, int level, int index, bool sequency) {
  for (;;) {
    const int m = (static_cast<int>(work.size()) - 1) >> (level - 1);
    const int s = (index - 1) * m + 1, e = m * index, p = sequency ? index % 2 : 1;
    PlainForwardStep(work, out, m, (1 - p) * m / 2 + s, p * m / 2 + s, filters);
    if (m < 3) return;
    index *= 2;
    const int middle = m / 2 + s;
    if (decisions[(1 << level) + index - 1 - 1]) {
      for (int i = middle - 1; i >= s; --i) work[i] = out[i];
      PlainForwardPackets(work, out, decisions, filters, level + 1, index - 1, sequency);
    }
    if (!decisions[(1 << level) + index - 1]) return;
    for (int i = middle; i <= e; ++i) work[i] = out[i];
    ++level;
  }
}

void PlainBackwardPackets(PlainCells& work, PlainCells& out, const BoolVector& decisions,
                          const Wavelet::WaveletFilters& filters, int level, int index, bool sequency) {
  const int m = (static_cast<int>(work.size()) - 1) >> (level - 1);
  const int s = (index - 1) * m + 1, p = sequency ? index % 2 : 1;
  for (int child = 2 * index - 1; m > 2 && child <= 2 * index; ++child) {
    if (!decisions[(1 << level) + child - 1]) continue;
    PlainBackwardPackets(work, out, decisions, filters, level + 1, child, sequency);
    for (int i = (child - 1) * m / 2 + 1; i <= child * m / 2; ++i) work[i] = out[i];
  }
  PlainBackwardStep(work, out, m, (1 - p) * m / 2 + s, p * m / 2 + s, filters);
}
