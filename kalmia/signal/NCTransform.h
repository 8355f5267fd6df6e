#pragma once

#include <istream>
#include <list>
#include <ostream>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/CString.h"
#include "kalmia/support/ConfigurationSection.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/VexStream.h"

/// The kinds of transformation of a cell. a, b and c are constants 1, 2 and 3 of a TransformStruct.
class KALMIA_EXPORT TransformE {
 public:
  /// The first two do nothing, and so does any other value (a stream may hold one).
  enum Transform : int {
    TransformUndefined = 0,
    TransformNone = 1,
    TransformLinear = 2,  ///< a x + b
    TransformLog = 3,     ///< log10(a x + b)
    TransformNegLog = 4,  ///< -log10(a x + b)
    TransformLogit = 5,   ///< log10((x - a) / (b - x))
    TransformExp = 6,     ///< exp(a x + b)
    TransformPower = 7    ///< (a x + b)^c
  };

  /// The display name; "" for the undefined transform and for values that are no transform.
  static const char* GetTransformName(Transform type);
  /// The display formula; "" for transforms that do nothing.
  static const char* GetFormula(Transform type);
};

/// Why a cell or a matrix could not be transformed.
class KALMIA_EXPORT NCTransformError : public NCError {
 public:
  enum Error : int {
    ErrorNone = 1,
    ErrorCalculation = 2,  ///< the cell lies outside the domain of the transformation
    ErrorColumnCount = 3   ///< the matrix has another number of columns than there are transformations
  };

  NCTransformError();  ///< no failure, row and column 0
  NCTransformError(int row, int column, Error code, const CString& text);

  NCTransformError* Clone() const override;

  int Column = 0;  ///< from 1; 0 if the error concerns no single column
  int Row = 0;     ///< from 1; 0 if the error concerns no single row
  Error Code = ErrorNone;
};

/// A list of errors and a position in it.
class KALMIA_EXPORT NCTransformErrors {
 public:
  NCTransformErrors();
  NCTransformErrors(const NCTransformErrors&) = delete;
  NCTransformErrors& operator=(const NCTransformErrors&) = delete;
  ~NCTransformErrors();

  int Size() const { return static_cast<int>(errors_.size()); }
  void AddError(const NCTransformError& error);  ///< at the end; the position stays
  void Append(const NCTransformErrors& other);   ///< all errors of the other list, which may be this one
  /// Moves the position to the first error. The list keeps what it returns; null of an empty list.
  NCTransformError* GetFirstError();
  /// Moves the position to the next error; null after the last one, and before GetFirstError was called.
  NCTransformError* GetNextError();

 private:
  std::list<NCTransformError> errors_;
  std::list<NCTransformError>::iterator position_ = errors_.end();
};

/// The transformation of one column: its kind and four constants. Constants 1, 2 and 3 are a, b and c of the formulas.
/// Constant 0 is compared and stored, but no formula reads it. Indices of constants are not checked.
///
/// Cells are read as float, computed in double and written as float. A result is in range if the double is neither NaN,
/// infinite nor denormal, and not beyond the largest float. 0 is in range, and so is a result that only becomes
/// denormal or 0 as a float.
class KALMIA_EXPORT TransformStruct : public kalmia::Persistent<TransformStruct> {
 public:
  static constexpr int kConstants = 4;

  TransformStruct();  ///< TransformNone, all constants -99
  explicit TransformStruct(const TransformStruct* other);  ///< a copy; null gives the default
  TransformStruct(const TransformStruct& other);
  TransformStruct& operator=(const TransformStruct& other);
  ~TransformStruct() override;

  TransformE::Transform GetTransform() const { return type_; }
  void SetTransform(TransformE::Transform type) { type_ = type; }
  const char* GetTransformName() const { return TransformE::GetTransformName(type_); }
  float GetConstant(int index) const { return constants_[index]; }
  void SetConstant(int index, float value) { constants_[index] = value; }
  float* GetConstants() { return constants_; }
  const float* GetConstants() const { return constants_; }

  bool operator==(const TransformStruct& other) const;  ///< compares kind and all four constants
  bool operator!=(const TransformStruct& other) const { return !(*this == other); }
  /// By kind, then by constants 0 to 3: the first difference decides. A NaN differs from everything, and is not less.
  bool operator<(const TransformStruct& other) const;

  /// Transforms the cell in place. A missing cell, or a kind that does nothing, leaves the cell and returns ErrorNone.
  /// A result out of range (for the logit also x = b) makes the cell missing and returns ErrorCalculation. The linear
  /// kind has no such test: a result beyond the floats is infinite. The negative logarithm of 1 is -0.
  NCTransformError::Error TransformValue(float* value) const;

  /// Inverts TransformValue in place:
  ///   linear (x - b) / a; logarithms (10^x - b) / a and (10^-x - b) / a; logit (b p + a) / (p + 1) with p = 10^x;
  ///   exponential (ln(x) - b) / a with ln(x) rounded to float; power (x^(1 / c) - b) / a.
  /// ErrorNone as above. ErrorCalculation, and a missing cell: if a = 0 (except logit), if p, ln(x) or x^(1 / c) is not
  /// finite, if 10^x is a NaN, or if the result is out of range (not tested for linear and power). For the logarithms
  /// an infinite or denormal 10^x fails only if the result is out of range. Linear with a = 0 is the one failure that
  /// leaves the cell as it is.
  NCTransformError::Error BackTransformValue(float* value) const;

  /// Applies TransformValue or BackTransformValue to each cell of a column (from 1, not checked), row by row, and keeps
  /// the matrix's counts of holes. Shares of the matrix do not change. Returns null if nothing failed, otherwise the
  /// errors in the order of the rows, which the caller owns. std::bad_alloc leaves the failed cell that could not be
  /// listed, and all cells below it, unchanged.
  NCTransformErrors* TransformColumn(NCDataMatrix<float>* matrix, int column) const;
  NCTransformErrors* BackTransformColumn(NCDataMatrix<float>* matrix, int column) const;

  /// The formula with its numbers (as printf's %g), plain or as HTML: "10log(2*x - 3)"; "" for a kind that does
  /// nothing. The fraction of the logit is printed upside down, as (b - x)/(x - a).
  CString ToString(bool html) const;

  /// Keys "TransformType", an integer, and "Constants", an array of four, in this order. Exceptions of the section pass
  /// through and leave this object unchanged.
  void Save(ConfigurationSection* section) const;
  void Load(ConfigurationSection* section);

  /// Reads a form older than the persistent one: the kind (4 bytes), then constants 1 to 3; constant 0 stays. If the
  /// stream ends too early, its fail bit is set and nothing changes.
  std::istream& OldRead(std::istream& stream);

  // Persistence: magic "TS", version 1. The kind takes 2 bytes; a value beyond them is written as TransformUndefined,
  // which does nothing either. Absent fields throw VexStreamError, another version reads as false; nothing changes
  // then.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  double A() const { return constants_[1]; }
  double B() const { return constants_[2]; }
  double C() const { return constants_[3]; }

  float constants_[kConstants];
  TransformE::Transform type_ = TransformE::TransformNone;
};

/// A transformation for each column of a matrix, applied before scaling. Columns count from 1; column numbers are not
/// checked.
class KALMIA_EXPORT NCTransform : public kalmia::Persistent<NCTransform> {
 public:
  NCTransform();                      ///< no columns: to be read from a stream
  explicit NCTransform(int columns);  ///< all TransformNone; NCError for fewer than 0
  NCTransform(const NCTransform& other);
  NCTransform& operator=(const NCTransform& other);
  ~NCTransform() override;

  /// The same as TransformE::GetTransformName.
  static const char* GetTransformString(TransformE::Transform type) { return TransformE::GetTransformName(type); }

  int Size() const { return transforms_.empty() ? 0 : static_cast<int>(transforms_.size()) - 1; }
  TransformStruct& operator[](int column) { return transforms_[static_cast<std::size_t>(column)]; }
  const TransformStruct& operator[](int column) const { return transforms_[static_cast<std::size_t>(column)]; }

  /// Transforms the matrix in place, column by column.
  /// Throws NCTransformError: ErrorColumnCount, with nothing changed, if the number of columns is not Size(); otherwise
  /// for the first cell that fails, after its column is done. Its column (failed cells missing) and those before it are
  /// then transformed, later ones are not.
  void TransformMatrix(NCDataMatrix<float>* matrix) const;

  /// The same for all columns, without throwing. Returns null if nothing failed, otherwise all errors, by columns and
  /// in each by rows, or the single error of a wrong number of columns. The caller owns the list.
  NCTransformErrors* TransformMatrixNoBreak(NCDataMatrix<float>* matrix) const;

  // Persistence: magic "NCT", version 2; version 1 is read. A read returns false for a count that the stream does not
  // cover, an absent entry or another version; VexStreamError of an element passes through. No columns are left then.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  using Transforms = std::vector<TransformStruct>;

  static bool ReadTransforms(std::istream& stream, Transforms& transforms);       ///< version 1
  static bool ReadStreamDirectory(std::istream& stream, Transforms& transforms);  ///< version 2

  Transforms transforms_;  ///< element 0 is a filler; empty where nothing was ever set up
};
