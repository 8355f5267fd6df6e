#include "kalmia/analysis/steps/Scaling.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/table/internal/SingleCells.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr double kTwoStepsBelow = -99.0000153;  ///< the second float below the missing value, or next to it

float NextBelow(float cell) { return std::nextafter(cell, std::numeric_limits<float>::lowest()); }

/// Moves a cell down so far that, once centred, it is no missing value; by two float steps where the centre is.
float MovedDown(float cell, float centre) {
  if (centre == kMissingCell<float>) return NextBelow(NextBelow(cell));
  return std::min(NextBelow(cell), static_cast<float>(centre + kTwoStepsBelow));
}

/// Whether centring turns a cell of the row into the missing value, or is not done as a centre is that.
bool MayLose(const NCDataVector<float>& row, const NCDataVector<float>& centres) {
  const float* cells = row.begin();
  const float* subtracted = centres.begin();
  int count = 0;  // without a branch
  for (int k = 0; k < row.Size(); ++k) {
    count += static_cast<int>(subtracted[k] == kMissingCell<float>) |
             static_cast<int>(cells[k] - subtracted[k] == kMissingCell<float>);
  }
  return count > 0;
}

/// Moves the cells down that a fitted scaling would lose: all of a column whose centre is the missing value, which the
/// scaling reads as "not centred", and each that centring turns into it. False if there is none.
/// The mean of a column around -99 sinks by 99 / 2^23 at least as its cells sink by two float steps each: that is more
/// than the step between the floats there, so that the next fit finds another centre.
bool MoveLostCells(const NCScale& scale, NCDataMatrix<float>* matrix) {
  bool any = false;
  const NCDataVector<float>& centres = *scale.GetCentres();
  for (int r = 1; r <= matrix->SizeRows(); ++r) {
    if (!MayLose(std::as_const(*matrix)[r], centres)) continue;
    for (int c = 1; c <= matrix->SizeColumns(); ++c) {
      const float cell = std::as_const(*matrix)[r][c], centre = centres[c];
      if (cell == kMissingCell<float>) continue;
      if (centre != kMissingCell<float> && cell - centre != kMissingCell<float>) continue;
      if (scale.GetScaleType(c) == NCScale::ScalingNone) continue;
      (*matrix)(r, c, AvoidMissingValue(MovedDown(cell, centre)));
      any = true;
    }
  }
  return any;
}

/// Fits the scaling to the matrix and scales that.
void Fit(const std::vector<std::string>& names, NCScale* scale, NCDataMatrix<float>* matrix) {
  try {
    scale->ScaleMatrix(matrix, /*newModel=*/true);
  } catch (const NCScaleError& error) {
    const std::string& name = names[static_cast<std::size_t>(error.Column - 1)];
    throw BadData("column " + Quoted(name) +
                      " cannot be scaled: " + OneLine(static_cast<const char*>(error.GetMessage())),
                  InColumn(name));
  }
}

struct ScalingName {
  NCScale::Scaling scaling;
  const char* word;
  const char* text;
};

constexpr ScalingName kScalingNames[] = {{NCScale::ScalingUnitVariance, "uv", "scaled to unit variance"},
                                         {NCScale::ScalingPareto, "pareto", "Pareto scaled"},
                                         {NCScale::ScalingCentre, "centre", "centred"},
                                         {NCScale::ScalingNone, "none", "as it is"}};

const ScalingName& NameOf(NCScale::Scaling scaling) {
  return *std::find_if(std::begin(kScalingNames), std::end(kScalingNames),
                       [scaling](const ScalingName& name) { return name.scaling == scaling; });
}

double Centre(const NCScale& scale, int variable) {
  const double centre = (*scale.GetCentres())[variable];
  return centre == kMissing ? 0.0 : centre;
}

double Factor(const NCScale& scale, int variable) {
  const double factor = (*scale.GetScales())[variable];
  return factor == kMissing ? 1.0 : factor;
}

/// A present cell scaled; the next float below where a step of it gives the missing value.
float ScaledCell(const NCScale& scale, float cell, int c) {
  const auto centred = AvoidMissingValue(static_cast<float>(cell - Centre(scale, c)));
  return AvoidMissingValue(static_cast<float>(centred * Factor(scale, c)));
}

/// Whether a cell that was there is missing now.
bool AnyLost(const NCDataMatrix<float>& before, const NCDataMatrix<float>& after) {
  for (int r = 1; r <= before.SizeRows(); ++r) {
    const float* was = before[r].begin();
    const float* is = after[r].begin();
    int lost = 0;  // counted without a branch
    for (int k = 0; k < before.SizeColumns(); ++k) {
      lost += static_cast<int>(is[k] == kMissingCell<float>) & static_cast<int>(was[k] != kMissingCell<float>);
    }
    if (lost > 0) return true;
  }
  return false;
}

/// The scaled table built anew, cell by cell, with the lost cells in it: so its counts of missing cells are exact.
NCDataMatrix<float> WithLostCells(const NCScale& scale, const NCDataMatrix<float>& before,
                                  const NCDataMatrix<float>& after) {
  NCDataMatrix<float> whole(before.SizeRows(), before.SizeColumns());
  for (int r = 1; r <= before.SizeRows(); ++r) {
    for (int c = 1; c <= before.SizeColumns(); ++c) {
      const bool lost = after[r][c] == kMissingCell<float> && before[r][c] != kMissingCell<float>;
      whole(r, c, lost ? ScaledCell(scale, before[r][c], c) : after[r][c]);
    }
  }
  return whole;
}

/// The scaled table, with the cells in it that scaling lost.
void KeepAllCells(const NCScale& scale, const NCDataMatrix<float>& before, NCDataMatrix<float>* scaled) {
  if (AnyLost(before, *scaled)) *scaled = WithLostCells(scale, before, *scaled);
}

void Apply(NCScale* scale, NCDataMatrix<float>* matrix) {
  const NCDataMatrix<float> before = *matrix;
  scale->ScaleMatrix(matrix, /*newModel=*/false);
  KeepAllCells(*scale, before, matrix);
}

}  // namespace

ColumnScaling ScaleColumns(NCScale::Scaling type, const std::vector<std::string>& names, NCDataMatrix<float>* matrix,
                           std::vector<double> shifts) {
  if (type < NCScale::ScalingNone || type > NCScale::ScalingUnitVariance) {
    throw BadRequest("there is no scaling of number " + std::to_string(static_cast<int>(type)));
  }
  auto scale = std::make_unique<NCScale>(matrix->SizeColumns());
  for (int c = 1; c <= matrix->SizeColumns(); ++c) scale->SetType(c, type);
  const NCDataMatrix<float> measured = *matrix;
  Fit(names, scale.get(), matrix);
  NCDataMatrix<float> moved = measured;
  if (!MoveLostCells(*scale, &moved)) {
    KeepAllCells(*scale, measured, matrix);
    return {std::move(scale), std::move(shifts)};
  }
  do {
    NCDataMatrix<float> scaled = moved;
    Fit(names, scale.get(), &scaled);
  } while (MoveLostCells(*scale, &moved));
  *matrix = measured;
  Apply(scale.get(), matrix);
  return {std::move(scale), std::move(shifts)};
}

void ApplyScale(const ColumnScaling& scaling, NCDataMatrix<float>* shifted) { Apply(scaling.scale.get(), shifted); }

NCScale::Scaling ScalingOfY(NCScale::Scaling scalingOfX) {
  return scalingOfX == NCScale::ScalingUnitVariance ? NCScale::ScalingUnitVariance : NCScale::ScalingCentre;
}

std::string ScalingWord(NCScale::Scaling scaling) { return NameOf(scaling).word; }

std::optional<NCScale::Scaling> ScalingOfWord(const std::string& word) {
  for (const ScalingName& name : kScalingNames) {
    if (word == name.word) return name.scaling;
  }
  return std::nullopt;
}

std::vector<std::string> ScalingWords() {
  std::vector<std::string> words;
  for (const ScalingName& name : kScalingNames) words.emplace_back(name.word);
  return words;
}

std::string ScalingText(NCScale::Scaling scaling) { return NameOf(scaling).text; }

double CentreOf(const ColumnScaling& scaling, int variable) {
  return Centre(*scaling.scale, variable) + scaling.ShiftOfColumn(static_cast<std::size_t>(variable) - 1);
}

double FactorOf(const ColumnScaling& scaling, int variable) { return Factor(*scaling.scale, variable); }

}  // namespace kalmia::analysis
