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

/// What can be done to the cells of a column. a, b and c are constants 1, 2 and 3 of a TransformStruct.
class KALMIA_EXPORT TransformE {
 public:
  /// Values beyond these, as a stream may bring them, do nothing, like the first two.
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

  /// The display name; "" for the undefined transform and for what is none.
  static const char* GetTransformName(Transform type);
  /// The display formula; "" also where nothing is done.
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

  int Column = 0;  ///< from 1; 0 where no single one is concerned
  int Row = 0;     ///< the same
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
  void AddError(const NCTransformError& error);  ///< behind the last; the position stays
  void Append(const NCTransformErrors& other);   ///< all of the other's, in their order; it may be this list
  /// Moves the position to the first error. The list keeps what it returns; null of an empty list.
  NCTransformError* GetFirstError();
  /// Moves the position to the next error; null behind the last one, and before GetFirstError was called.
  NCTransformError* GetNextError();

 private:
  std::list<NCTransformError> errors_;
  std::list<NCTransformError>::iterator position_ = errors_.end();
};

/// The transformation of one column: its kind and four constants, of which a, b and c of the formulas are numbers 1, 2
/// and 3. Number 0 is compared and stored, and no formula reads it. No index of a constant is checked.
///
/// Cells are read as float, computed in double and written as float. "In range" is a double that is no NaN, infinite or
/// denormal, and not beyond the largest float; 0 is in range, and so is what only becomes denormal or 0 as a float.
class KALMIA_EXPORT TransformStruct : public kalmia::Persistent<TransformStruct> {
 public:
  static constexpr int kConstants = 4;

  TransformStruct();  ///< TransformNone, all constants -99
  explicit TransformStruct(const TransformStruct* other);  ///< a copy; of null the default
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

  bool operator==(const TransformStruct& other) const;  ///< of kind and all four constants
  bool operator!=(const TransformStruct& other) const { return !(*this == other); }
  /// By kind, then by constants 0 to 3: the first difference decides. A NaN differs from everything, and is not less.
  bool operator<(const TransformStruct& other) const;

  /// Transforms the cell in place. ErrorNone, and the cell as it is, for a missing cell and for a kind that does
  /// nothing. ErrorCalculation, and a missing cell, where the result is out of range or, for the logit, x = b. The
  /// linear kind has no test: a result beyond the floats is infinite. The negative logarithm of 1 is -0.
  NCTransformError::Error TransformValue(float* value) const;

  /// Takes the cell back to what TransformValue made it from:
  ///   linear (x - b) / a; logarithms (10^x - b) / a and (10^-x - b) / a; logit (b p + a) / (p + 1) with p = 10^x;
  ///   exponential (ln(x) - b) / a with ln(x) rounded to float; power (x^(1 / c) - b) / a.
  /// ErrorNone, and the cell as it is, as above. ErrorCalculation, and a missing cell, where a = 0 (but for the logit),
  /// p, ln(x) or x^(1 / c) is not finite, 10^x a NaN, or the result out of range; linear and power have no test of the
  /// result. For the logarithms an infinite or denormal 10^x fails only where it puts the result out of range.
  /// Linear with a = 0 alone leaves the cell as it is, and returns ErrorCalculation.
  NCTransformError::Error BackTransformValue(float* value) const;

  /// Transforms each cell of a column (from 1, not checked), row by row. Every cell is left as TransformValue
  /// or BackTransformValue makes it, so failed ones as missing but for the linear inverse with a = 0, and the matrix
  /// counts its holes. What shares cells with the matrix is left alone. Returns null if nothing failed, else the list
  /// of errors in the order of the rows, which the caller owns. Where memory runs out, the rows above are done, the
  /// failed cell that could not be listed and those below it are as they were.
  NCTransformErrors* TransformColumn(NCDataMatrix<float>* matrix, int column) const;
  NCTransformErrors* BackTransformColumn(NCDataMatrix<float>* matrix, int column) const;

  /// The formula with its numbers (as of printf's %g), plain or as HTML: "10log(2*x - 3)"; "" for a kind that does
  /// nothing. The fraction of the logit is printed as (b - x)/(x - a), upside down against what is computed.
  CString ToString(bool html) const;

  /// Keys "TransformType", an integer, and "Constants", an array of four, in this order. What the section throws is
  /// passed on, and nothing is changed then.
  void Save(ConfigurationSection* section) const;
  void Load(ConfigurationSection* section);

  /// Reads a form older than the persistent one: the kind (4 bytes), then constants 1 to 3; constant 0 stays as it is.
  /// A stream that ends too early has its fail bit set, and nothing is changed.
  std::istream& OldRead(std::istream& stream);

  // Persistence: magic "TS", version 1. The kind takes 2 bytes; one that they cannot hold is written as
  // TransformUndefined, which does as little. Fields that are not there throw VexStreamError, another version gives a
  // false read; nothing is changed then.
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

/// A transformation for each column of a matrix, to be applied before scaling. Columns are numbered from 1; no column
/// number is checked.
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
  /// Throws NCTransformError: with ErrorColumnCount, before anything is changed, if the number of columns is not
  /// Size(); else for the first cell that fails, once its column is done. Earlier columns are transformed then, that
  /// one too, with all its failed cells missing; later ones are not.
  void TransformMatrix(NCDataMatrix<float>* matrix) const;

  /// The same without a stop: every column is transformed. Returns null if nothing failed, else all errors, by columns
  /// and in each by rows, or the one of a wrong number of columns; the caller owns the list.
  NCTransformErrors* TransformMatrixNoBreak(NCDataMatrix<float>* matrix) const;

  // Persistence: magic "NCT", version 2; version 1 is read. False for a count that the stream does not cover, a missing
  // entry or another version; VexStreamError where an element throws it. No columns are left then.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  using Transforms = std::vector<TransformStruct>;

  static bool ReadTransforms(std::istream& stream, Transforms& transforms);       ///< version 1
  static bool ReadStreamDirectory(std::istream& stream, Transforms& transforms);  ///< version 2

  Transforms transforms_;  ///< element 0 is a filler; empty where nothing was ever set up
};
