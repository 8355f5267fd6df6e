#include "kalmia/signal/NCTransform.h"

#include <memory>

#include "kalmia/containers/internal/SizeLimit.h"
#include "kalmia/support/LanguageString.h"

// A matrix by its columns, and the errors.

namespace {

constexpr unsigned kWrongColumnCount = 10101;  ///< id of the text

NCTransformError WrongColumnCount() {
  return {0, 0, NCTransformError::ErrorColumnCount, LanguageString::Get(kWrongColumnCount)};
}

}  // namespace

const char* TransformE::GetTransformName(Transform type) { return kalmia::TransformNames()[type]; }

const char* TransformE::GetFormula(Transform type) { return kalmia::TransformFormulas()[type]; }

NCTransformError::NCTransformError() = default;

NCTransformError::NCTransformError(int row, int column, Error code, const CString& text)
    : NCError(text), Column(column), Row(row), Code(code) {}

NCTransformError* NCTransformError::Clone() const { return new NCTransformError(*this); }

NCTransformErrors::NCTransformErrors() = default;

NCTransformErrors::~NCTransformErrors() = default;

void NCTransformErrors::AddError(const NCTransformError& error) { errors_.push_back(error); }

void NCTransformErrors::Append(const NCTransformErrors& other) {
  std::list<NCTransformError> copies = other.errors_;
  errors_.splice(errors_.end(), copies);
}

NCTransformError* NCTransformErrors::GetFirstError() {
  position_ = errors_.begin();
  return position_ == errors_.end() ? nullptr : &*position_;
}

NCTransformError* NCTransformErrors::GetNextError() {
  if (position_ == errors_.end() || ++position_ == errors_.end()) return nullptr;
  return &*position_;
}

NCTransform::NCTransform() = default;

NCTransform::NCTransform(int columns) {
  kalmia::RequireVectorSize(columns);
  transforms_.resize(static_cast<std::size_t>(columns) + 1);
}

NCTransform::NCTransform(const NCTransform& other) = default;

NCTransform& NCTransform::operator=(const NCTransform& other) = default;

NCTransform::~NCTransform() = default;

void NCTransform::TransformMatrix(NCDataMatrix<float>* matrix) const {
  if (matrix->SizeColumns() != Size()) throw WrongColumnCount();
  for (int c = 1; c <= Size(); ++c) {
    const std::unique_ptr<NCTransformErrors> errors((*this)[c].TransformColumn(matrix, c));
    if (errors) throw NCTransformError(*errors->GetFirstError());
  }
}

NCTransformErrors* NCTransform::TransformMatrixNoBreak(NCDataMatrix<float>* matrix) const {
  auto all = std::make_unique<NCTransformErrors>();
  if (matrix->SizeColumns() != Size()) {
    all->AddError(WrongColumnCount());
    return all.release();
  }
  for (int c = 1; c <= Size(); ++c) {
    const std::unique_ptr<NCTransformErrors> errors((*this)[c].TransformColumn(matrix, c));
    if (errors) all->Append(*errors);
  }
  return all->Size() > 0 ? all.release() : nullptr;
}
