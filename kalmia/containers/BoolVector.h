#pragma once

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

/// A vector of flags that persists under a name of its own; everything else it has from its base.
/// On the stream: magic "BoolVector", version 3; versions 1 and 2 are read.
class KALMIA_EXPORT BoolVector : public NCIntegralVector<bool, 0> {
 public:
  using NCIntegralVector<bool, 0>::NCIntegralVector;
  BoolVector() = default;
  BoolVector(const BoolVector& other) = default;             ///< shares
  BoolVector(const NCIntegralVector<bool, 0>& other);        // NOLINT: implicit on purpose; shares
  BoolVector& operator=(const BoolVector& other) = default;

  class DerivedStreamableData : public VexStreamableData {
   public:
    using VexStreamableData::VexStreamableData;
  };
  static DerivedStreamableData MyStreamableData;
  short GetVexStreamVersionNumber() const { return MyStreamableData.GetVexStreamVersionNumber(); }
  short GetMyVexStreamVersionNumber() const { return MyStreamableData.GetMyVexStreamVersionNumber(); }
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);
  bool VexStreamableWriteBases(std::ostream& stream);
  bool VexStreamableReadBases(std::istream& stream);
  mutable bool streamVisited = false;  ///< the base has one of its own: both are written in one pass

 protected:
  bool VexStreamableStartWrite(std::ostream& stream) override;
  bool VexStreamableStartRead(std::istream& stream) override;
  void VexStreamableReset() override;

 private:
  bool ReadVersion1(std::istream& stream);
};
