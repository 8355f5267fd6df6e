#include "kalmia/pcapls/NCScale.h"

#include <algorithm>
#include <cmath>

#include "kalmia/containers/internal/SizeLimit.h"
#include "kalmia/kernels/rows/SubtractRow.h"
#include "kalmia/pcapls/internal/ColumnMoments.h"
#include "kalmia/support/LanguageString.h"

namespace {

constexpr float kNotFitted = kalmia::kMissingCell<float>;

// Beyond these a factor says nothing about the data any more.
constexpr double kLargestFactor = 1e35;
constexpr double kSmallestFactor = 1e-35;

bool IsCentred(NCScale::Scaling type) {
  return type == NCScale::ScalingCentre || type == NCScale::ScalingPareto || type == NCScale::ScalingUnitVariance;
}

bool IsMultiplied(NCScale::Scaling type) {
  return type == NCScale::ScalingPareto || type == NCScale::ScalingUnitVariance;
}

[[noreturn]] void Refuse(int column, NCScaleError::Error code, unsigned text) {
  throw NCScaleError(column, code, LanguageString::Get(text));
}

}  // namespace

NCScaleError::NCScaleError(int column, Error code, const CString& message)
    : NCError(message), Column(column), Code(code) {}

NCScaleError* NCScaleError::Clone() const { return new NCScaleError(*this); }

NCScale::NCScale() : NCScale(0) {}

NCScale::NCScale(int variables) : variables_(variables) {
  kalmia::RequireVectorSize(variables);
  centres_ = std::make_shared<NCDataVector<float>>(variables);
  scales_ = std::make_shared<NCDataVector<float>>(variables);
  types_ = std::make_shared<std::vector<int>>(static_cast<std::size_t>(variables) + 1, ScalingNone);
}

NCScale::NCScale(const NCScale& other)
    : Persistent(),
      centres_(std::make_shared<NCDataVector<float>>()),
      scales_(std::make_shared<NCDataVector<float>>()),
      types_(std::make_shared<std::vector<int>>(*other.types_)),
      variables_(other.variables_) {
  centres_->CopyContent(*other.centres_);
  scales_->CopyContent(*other.scales_);
}

NCScale& NCScale::operator=(const NCScale& other) = default;

NCScale::~NCScale() = default;

void NCScale::RequireVariable(int variable) const {
  if (variable < 1 || variable > variables_) throw NCError("Scaling: there is no such variable.");
}

void NCScale::SetType(int variable, Scaling type) {
  RequireVariable(variable);
  int& present = (*types_)[static_cast<std::size_t>(variable)];
  if (present == type) return;
  (*centres_)(variable, kNotFitted);
  (*scales_)(variable, kNotFitted);
  present = type;
}

NCScale::Scaling NCScale::GetScaleType(int variable) const {
  RequireVariable(variable);
  return static_cast<Scaling>((*types_)[static_cast<std::size_t>(variable)]);
}

const char* NCScale::GetScaleString(Scaling type) {
  return kalmia::ScalingNames()[type];
}

void NCScale::ScaleMatrix(NCDataMatrix<float>* matrix, bool newModel) {
  if (newModel)
    ScaleWithNewModel(matrix);
  else
    ScaleWithCurrentModel(matrix);
}

void NCScale::RequireVariables(const NCDataMatrix<float>& matrix) const {
  if (matrix.SizeColumns() != variables_) Refuse(0, NCScaleError::ErrorWrongVariableCount, 10070);
}

void NCScale::ScaleWithNewModel(NCDataMatrix<float>* matrix) {
  RequireVariables(*matrix);
  FitCentres(*matrix);
  kalmia::SubtractRow(matrix, *centres_);
  FitFactors(*matrix);
  Multiply(matrix);
}

void NCScale::ScaleWithCurrentModel(NCDataMatrix<float>* matrix) {
  RequireVariables(*matrix);
  kalmia::SubtractRow(matrix, *centres_);
  Multiply(matrix);
}

void NCScale::Multiply(NCDataMatrix<float>* matrix) const {
  if (scales_->GetNumMisVal() < variables_) matrix->TransformToColumnScaled(*scales_);
}

void NCScale::FitCentres(const NCDataMatrix<float>& matrix) {
  const std::vector<long double> means = kalmia::ColumnMeans(matrix);
  for (int j = 1; j <= variables_; ++j) {
    const Scaling type = GetScaleType(j);
    if (type == ScalingNone) (*centres_)(j, kNotFitted);
    if (IsCentred(type)) (*centres_)(j, static_cast<float>(means[static_cast<std::size_t>(j)]));
  }
}

void NCScale::FitFactors(const NCDataMatrix<float>& centred) {
  const auto isMultiplied = [](int type) { return IsMultiplied(static_cast<Scaling>(type)); };
  const bool any = std::any_of(types_->begin() + 1, types_->end(), isMultiplied);
  // Around 0 and not around the means: the centres were rounded to float before they were subtracted.
  const std::vector<double> squares = any ? kalmia::ColumnSquares(centred) : std::vector<double>();
  for (int j = 1; j <= variables_; ++j) {
    const Scaling type = GetScaleType(j);
    if (type == ScalingNone || type == ScalingCentre) (*scales_)(j, kNotFitted);
    if (!IsMultiplied(type)) continue;
    const int n = centred.SizeRows() == 0 ? 0 : centred.SizeRows() - centred.GetColumnMisVal(j);
    (*scales_)(j, static_cast<float>(FactorOf(j, type, n, squares[static_cast<std::size_t>(j)])));
  }
}

double NCScale::FactorOf(int column, Scaling type, int n, double ss) {
  if (n < 2) Refuse(column, NCScaleError::ErrorTooFewValues, 10071);
  if (ss == 0.0) Refuse(column, NCScaleError::ErrorVarianceOutOfRange, 10072);
  const double deviation = std::sqrt(ss / (n - 1));
  const double factor = 1.0 / (type == ScalingPareto ? std::sqrt(deviation) : deviation);
  if (factor > kLargestFactor) Refuse(column, NCScaleError::ErrorVarianceOutOfRange, 10073);
  if (factor < kSmallestFactor) Refuse(column, NCScaleError::ErrorFactorTooSmall, 10074);
  return factor;
}
