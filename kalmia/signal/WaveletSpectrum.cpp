#include <algorithm>
#include <cmath>

#include "kalmia/signal/SignalLength.h"
#include "kalmia/signal/Wavelet.h"
#include "kalmia/signal/internal/OutOrNew.h"
#include "kalmia/signal/internal/WaveletSignals.h"
#include "kalmia/support/NCError.h"

// What coefficients tell about time and scale: the power spectrum and the energy of the levels.

namespace {

using Vector = NCDataVector<float>;
using Matrix = NCDataMatrix<float>;

/// The coefficients without the first, freed from the scale of their levels, of unit length. Their number is 2^levels.
Vector NormalisedCoefficients(const Vector& in, int levels) {
  Vector coefficients;
  coefficients.CopyContent(in);
  coefficients(1, 0.0F);
  for (int i = 2; i <= in.Size(); ++i) {
    const double scale = std::pow(std::sqrt(2.0), levels - kalmia::Levels(i) + 1);
    coefficients(i, static_cast<float>(static_cast<double>(in[i]) / scale));
  }
  coefficients.Normalise();
  return coefficients;
}

/// Largest power in percent of a level among `width` points in time from `first` on, counted from 0; a NaN if one is
/// among them.
float LargestPower(const Vector& coefficients, int level, int first, int width) {
  const int cells = 1 << (level - 1);  // of this level, each of which spans `span` points
  const int span = coefficients.Size() / cells;
  double largest = 0;
  for (int cell = first / span; cell <= (first + width - 1) / span; ++cell) {
    const double x = static_cast<double>(coefficients[cells + cell + 1]);
    const double power = 100 * x * x;
    if (power > largest || std::isnan(power)) largest = power;
  }
  return static_cast<float>(largest);
}

/// Sum of squares of the columns `first` to `last`, rounded to float.
float EnergyOfColumns(const Matrix& coefficients, int first, int last) {
  long double sum = 0;
  for (int c = first; c <= last; ++c) sum += kalmia::ColumnOf(coefficients, c).GetSS();
  const auto energy = static_cast<float>(sum);
  if (energy != 0 && !std::isnormal(energy)) throw NCError("Wavelet energy calculations overflowed.");
  return energy;
}

}  // namespace

NCDataMatrix<float>* Wavelet::PowerSpectrum(const NCDataVector<float>* in, bool limit, NCDataMatrix<float>* out) {
  constexpr int kMostColumns = 256;
  if (!in || !kalmia::IsPowerOfTwo(in->Size())) return nullptr;
  const int n = in->Size(), levels = kalmia::Levels(n);
  const int columns = limit ? std::min(n, kMostColumns) : n, width = n / columns;
  const Vector coefficients = NormalisedCoefficients(*in, levels);

  kalmia::OutOrNew<Matrix> result(out);
  result->SetSize(2 * levels + 1, columns);
  result->SetAllValues(0.0F);
  for (int level = 1; level <= levels; ++level) {
    const int row = 2 * levels - 2 * (level - 1);
    for (int c = 1; c <= columns; ++c)
      (*result)(row, c, LargestPower(coefficients, level, (c - 1) * width, width));
  }
  return result.HandOver();
}

NCDataVector<float> Wavelet::CalcWCEnergy(const NCDataMatrix<float>* coefficients) {
  const int columns = coefficients ? coefficients->SizeColumns() : 0;
  const bool whole = kalmia::IsPowerOfTwo(columns);
  const int levels = kalmia::Levels(columns) - (whole ? 0 : 1);
  if (levels < 1)
    throw NCError("Wavelet energy can not be calculated because the vector only contains one element");

  Vector energies(levels, 0.0F);
  double total = 0;
  int last = whole ? columns : columns - columns % 2;
  for (int level = 1; level <= levels; ++level) {
    const int half = last / 2;
    const int first = !whole && half % 2 == 1 ? half : half + 1;
    const float energy = EnergyOfColumns(*coefficients, first, last);
    energies(level, energy);
    total += static_cast<double>(energy);
    last = first - 1;
  }
  if (total != 0)
    for (int level = 1; level <= levels; ++level)
      energies(level, static_cast<float>(static_cast<double>(energies[level]) / total));
  return energies;
}
