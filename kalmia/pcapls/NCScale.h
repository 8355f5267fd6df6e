#pragma once

#include <memory>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/VexStream.h"

/// Why a matrix could not be scaled. ErrorWrongVariableCount leaves matrix and model unchanged. After any other error
/// both are half done: discard them.
class KALMIA_EXPORT NCScaleError : public NCError {
 public:
  enum Error : int {
    ErrorTooFewValues = 2,        ///< a variance needs 2 present cells
    ErrorVarianceOutOfRange = 3,  ///< no variance at all, or so little that its factor would exceed 1e35
    ErrorFactorTooSmall = 4,      ///< so much variance that its factor would fall below 1e-35
    ErrorWrongVariableCount = 6   ///< the matrix has another number of columns than the model has variables
  };

  NCScaleError(int column, Error code, const CString& message);

  NCScaleError* Clone() const override;

  int Column;  ///< the variable, from 1; 0 if the error concerns no single one
  Error Code;
};

/// Column scaling: for each variable of a table a type, a centre and a factor, fitted to one matrix and applied to
/// others. The models do not scale: X and Y are scaled first. There is no inverse.
///
/// With s the standard deviation of the n present cells of a column (divisor n - 1), a cell x becomes
/// (x - centre) * factor, where the factor is 1 / s (unit variance) or 1 / sqrt(s) (Pareto scaling, van den Berg et al.
/// (2006), BMC Genomics 7, 142). Centres and factors are stored as float; a missing one (-99) is not applied.
/// Holes of the matrix stay holes. Variables count from 1.
class KALMIA_EXPORT NCScale : public kalmia::Persistent<NCScale> {
 public:
  /// Any other value (a stream may hold one) counts as ScalingUndefined.
  enum Scaling : int {
    ScalingUndefined = 0,    ///< centre and factor stay what they are
    ScalingNone = 1,         ///< neither
    ScalingCentre = 2,       ///< the column mean as centre
    ScalingPareto = 3,       ///< and 1 / sqrt(s) as factor
    ScalingUnitVariance = 4  ///< and 1 / s as factor
  };

  NCScale();                         ///< no variables: to be read from a stream
  explicit NCScale(int variables);   ///< nothing fitted, every type ScalingNone; NCError for fewer than 0
  NCScale(const NCScale& other);     ///< a deep copy
  /// Shares: from now on both objects have the same centres, factors and types. A change by one changes the other,
  /// until one of them is assigned or read anew.
  NCScale& operator=(const NCScale& other);
  ~NCScale() override;

  /// A new type also forgets the centre and the factor of the variable; the same type keeps them.
  /// Both throw NCError without a variable of that number, from 1.
  void SetType(int variable, Scaling type);
  Scaling GetScaleType(int variable) const;
  /// The display name of a type, 0 to 4; the range is not checked.
  static const char* GetScaleString(Scaling type);

  /// ScaleWithNewModel or ScaleWithCurrentModel.
  void ScaleMatrix(NCDataMatrix<float>* matrix, bool newModel);

  /// Fits centres and factors to the matrix and scales it in place. Shares of the matrix do not change.
  /// Missing: a column that is empty, or whose mean is exactly -99, gets no centre. Types without a factor never fail,
  /// even on constant or empty columns.
  /// Throws NCScaleError, with nothing changed, if the number of columns is not GetVariables(). Throws it too for the
  /// first variable with a factor that has too few values, a sum of squares of exactly 0 after centring, or a factor
  /// out of range; then all columns are centred, the factors of lower variables are stored, and no column is
  /// multiplied.
  void ScaleWithNewModel(NCDataMatrix<float>* matrix);

  /// Applies the stored centres and factors in place; a model that was never fitted changes nothing.
  /// Throws NCScaleError, with nothing changed, if the number of columns is not GetVariables().
  void ScaleWithCurrentModel(NCDataMatrix<float>* matrix);

  const NCDataVector<float>* GetCentres() const { return centres_.get(); }  ///< one per variable; -99: not centred
  const NCDataVector<float>* GetScales() const { return scales_.get(); }    ///< factors; -99: not multiplied
  int GetVariables() const { return variables_; }

  // Persistence: magic "NCS", version 2; version 1 is read. The read fails, and leaves no variables, if the stream is
  // cut or its centres, factors and types differ in number. A read ends sharing with other objects.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  void RequireVariable(int variable) const;
  void RequireVariables(const NCDataMatrix<float>& matrix) const;
  void FitCentres(const NCDataMatrix<float>& matrix);
  void FitFactors(const NCDataMatrix<float>& centred);
  /// The factor of a column of n present cells with the sum of squares ss, or NCScaleError.
  static double FactorOf(int column, Scaling type, int n, double ss);
  void Multiply(NCDataMatrix<float>* matrix) const;
  bool ReadOldLayout(std::istream& stream);        ///< version 1
  bool ReadStreamDirectory(std::istream& stream);  ///< version 2
  bool ReadTypes(std::istream& stream);            ///< one type for each centre
  void TakeMembersOf(const NCScale& other);

  std::shared_ptr<NCDataVector<float>> centres_;
  std::shared_ptr<NCDataVector<float>> scales_;
  std::shared_ptr<std::vector<int>> types_;  ///< from 1: element 0 is dead
  int variables_ = 0;                        ///< cells of each of the three
};
