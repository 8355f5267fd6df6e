#pragma once

namespace kalmia {

/// The missing cell of `float` and `double` tables: an ordinary value, compared with exact `==`. A NaN is not missing.
constexpr int kMissing = -99;

/// The same in the type of the cells.
template <class T>
constexpr T kMissingCell = static_cast<T>(kMissing);

/// A smaller denominator gives no estimate. Each user says whether this very number does.
constexpr double kSmallestDenominator = 1e-30;

}  // namespace kalmia
