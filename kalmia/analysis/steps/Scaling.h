#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/pcapls/NCScale.h"

namespace kalmia::analysis {

/// Fits a scaling of one type for all columns and applies it to the matrix in place.
/// A column whose mean is the missing value -99 itself gets a centre a few float steps below, and a cell that centring
/// turns into it takes part in the fit that far below: none is taken as "not centred" or as missing.
/// Throws BadData, naming the column, if a column has too few values or its variance is out of range.
std::unique_ptr<NCScale> ScaleColumns(NCScale::Scaling type, const std::vector<std::string>& names,
                                      NCDataMatrix<float>* matrix);

/// Applies a fitted scaling in place. A present cell stays present: where centring or multiplying gives exactly the
/// missing value, the next float below is taken. Counts of missing cells are exact.
void ApplyScale(NCScale* scale, NCDataMatrix<float>* matrix);

/// The number; the next float below where it is the missing value.
float AvoidMissingValue(float number);

/// Whether no two of the cells differ, but for missing ones.
bool IsConstant(const float* begin, const float* end);

/// The scaling of Y that goes with one of X: unit variance with unit variance, else centring alone.
NCScale::Scaling ScalingOfY(NCScale::Scaling scalingOfX);

/// The word for a scaling, and back: uv, pareto, centre or none. Nothing for any other word.
std::string ScalingWord(NCScale::Scaling scaling);
std::optional<NCScale::Scaling> ScalingOfWord(const std::string& word);

/// "scaled to unit variance" and the like, for a reader.
std::string ScalingText(NCScale::Scaling scaling);

/// Centre and factor of a variable (from 1); 0 and 1 where it is not centred or not multiplied.
double CentreOf(const NCScale& scale, int variable);
double FactorOf(const NCScale& scale, int variable);

}  // namespace kalmia::analysis
