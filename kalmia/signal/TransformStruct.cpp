#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>

#include "kalmia/containers/Missing.h"
#include "kalmia/signal/NCTransform.h"
#include "kalmia/support/LanguageString.h"

// One transformation: its formulas and their inverses, cell by cell and down a column.

using kalmia::kMissingCell;

namespace {

constexpr unsigned kOutsideDomain = 10100;         ///< id of the text
constexpr unsigned kOutsideInverseDomain = 10165;  ///< the same

bool IsInRange(double v) {
  const int kind = std::fpclassify(v);
  return (kind == FP_NORMAL || kind == FP_ZERO) && std::abs(v) <= double{std::numeric_limits<float>::max()};
}

NCTransformError::Error Succeed(float* cell, double v) {
  *cell = static_cast<float>(v);
  return NCTransformError::ErrorNone;
}

NCTransformError::Error Fail(float* cell) {
  *cell = kMissingCell<float>;
  return NCTransformError::ErrorCalculation;
}

/// Takes care of every division by 0, logarithm of what is not positive and infinite power on the way to v, too:
/// whatever the formulas make of those is infinite or a NaN.
NCTransformError::Error SucceedInRange(float* cell, double v) { return IsInRange(v) ? Succeed(cell, v) : Fail(cell); }

/// Applies convert(&cell), which returns a code, down a column.
template <class Convert>
NCTransformErrors* ConvertColumn(NCDataMatrix<float>* matrix, int column, unsigned text, const Convert& convert) {
  auto errors = std::make_unique<NCTransformErrors>();
  for (int r = 1; r <= matrix->SizeRows(); ++r) {
    float cell = (*matrix)[r][column];
    const NCTransformError::Error code = convert(&cell);
    if (code != NCTransformError::ErrorNone)
      errors->AddError(NCTransformError(r, column, code, LanguageString::Get(text)));
    (*matrix)(r, column, cell);
  }
  return errors->Size() > 0 ? errors.release() : nullptr;
}

}  // namespace

TransformStruct::TransformStruct() { std::fill(std::begin(constants_), std::end(constants_), kMissingCell<float>); }

TransformStruct::TransformStruct(const TransformStruct* other) : TransformStruct() {
  if (other) *this = *other;
}

TransformStruct::TransformStruct(const TransformStruct& other) = default;

TransformStruct& TransformStruct::operator=(const TransformStruct& other) = default;

TransformStruct::~TransformStruct() = default;

bool TransformStruct::operator==(const TransformStruct& other) const {
  return type_ == other.type_ && std::equal(std::begin(constants_), std::end(constants_), other.constants_);
}

bool TransformStruct::operator<(const TransformStruct& other) const {
  if (type_ != other.type_) return type_ < other.type_;
  const auto [mine, its] = std::mismatch(std::begin(constants_), std::end(constants_), std::begin(other.constants_));
  return mine != std::end(constants_) && *mine < *its;
}

NCTransformError::Error TransformStruct::TransformValue(float* value) const {
  if (*value == kMissingCell<float>) return NCTransformError::ErrorNone;
  const double x = *value, linear = A() * x + B();
  switch (type_) {
    case TransformE::TransformLinear: return Succeed(value, linear);
    case TransformE::TransformLog: return SucceedInRange(value, std::log10(linear));
    case TransformE::TransformNegLog: return SucceedInRange(value, -std::log10(linear));
    case TransformE::TransformLogit: return SucceedInRange(value, std::log10((x - A()) / (B() - x)));
    case TransformE::TransformExp: return SucceedInRange(value, std::exp(linear));
    case TransformE::TransformPower: return SucceedInRange(value, std::pow(linear, C()));
    default: return NCTransformError::ErrorNone;
  }
}

NCTransformError::Error TransformStruct::BackTransformValue(float* value) const {
  if (*value == kMissingCell<float>) return NCTransformError::ErrorNone;
  const double x = *value;
  switch (type_) {
    case TransformE::TransformLinear:
      return A() == 0 ? NCTransformError::ErrorCalculation : Succeed(value, (x - B()) / A());
    case TransformE::TransformLog:
    case TransformE::TransformNegLog: {
      const double v = std::pow(10.0, type_ == TransformE::TransformLog ? x : -x);
      return SucceedInRange(value, (v - B()) / A());
    }
    case TransformE::TransformLogit: {
      const double p = std::pow(10.0, x);
      return SucceedInRange(value, (B() * p + A()) / (p + 1));
    }
    case TransformE::TransformExp: {
      const float logarithm = static_cast<float>(std::log(x));
      return SucceedInRange(value, (logarithm - B()) / A());
    }
    case TransformE::TransformPower: {
      const double v = std::pow(x, 1 / C());
      return std::isfinite(v) && A() != 0 ? Succeed(value, (v - B()) / A()) : Fail(value);
    }
    default: return NCTransformError::ErrorNone;
  }
}

NCTransformErrors* TransformStruct::TransformColumn(NCDataMatrix<float>* matrix, int column) const {
  return ConvertColumn(matrix, column, kOutsideDomain, [this](float* cell) { return TransformValue(cell); });
}

NCTransformErrors* TransformStruct::BackTransformColumn(NCDataMatrix<float>* matrix, int column) const {
  return ConvertColumn(matrix, column, kOutsideInverseDomain, [this](float* cell) { return BackTransformValue(cell); });
}
