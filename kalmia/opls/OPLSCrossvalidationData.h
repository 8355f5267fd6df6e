#pragma once

#include <iosfwd>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// The matrices from which OPLSCrossValidation rebuilds the model of each round. It fills the public fields. Copies are
/// deep.
class KALMIA_EXPORT OPLSCrossvalidationData {
 public:
  OPLSCrossvalidationData();
  /// `rounds` empty models (not negative, which is not checked), and the sum of squares about 0 of each column of Y.
  OPLSCrossvalidationData(int rounds, const NCDataMatrix<float>& Y);
  OPLSCrossvalidationData(const OPLSCrossvalidationData& other);
  OPLSCrossvalidationData& operator=(const OPLSCrossvalidationData& other);
  ~OPLSCrossvalidationData();

  void clear();

  /// Magic and version, then a directory of 11 entries, of which 1 to 7 hold the fields in their order. False if the
  /// stream fails.
  bool WriteObject(std::ostream& stream) const;
  /// Returns false and leaves the object empty if the bytes are no such stream, have wrong sizes or end too early.
  /// Never throws VexStreamError. OPLSCrossValidation checks that the sizes of the fields match.
  bool ReadObject(std::istream& stream);

  static constexpr short Version = 1;
  static constexpr const char* Magic = "OPLSCVD";

  std::vector<std::vector<NCDataMatrix<float>>> WMatricesPerRound;  ///< per round: weights, block by block
  std::vector<std::vector<NCDataMatrix<float>>> PMatricesPerRound;
  std::vector<std::vector<NCDataMatrix<float>>> CMatricesPerRound;
  std::vector<NCDataMatrix<float>> WOPerRound;                      ///< per round: orthogonal weights
  std::vector<NCDataMatrix<float>> POPerRound;
  std::vector<NCDataMatrix<float>> COPerRound;
  NCDataVector<float> SSY;                                          ///< of each Y variable, about 0

 private:
  bool UnLoad(std::ostream& stream) const;
  bool ReLoad(std::istream& stream);
};
