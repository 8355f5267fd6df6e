#pragma once

#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"

/// A vector of flags with a stream form of its own; all else comes from its base.
/// On the stream: magic "BoolVector", version 3; versions 1 and 2 are read.
class KALMIA_EXPORT BoolVector : public kalmia::Persistent<BoolVector, NCIntegralVector<bool, 0>> {
 public:
  using Persistent::Persistent;
  BoolVector() = default;
  BoolVector(const BoolVector& other) = default;             ///< shares
  BoolVector(const NCIntegralVector<bool, 0>& other);        // NOLINT: implicit on purpose; shares
  BoolVector& operator=(const BoolVector& other) = default;

  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  bool ReadVersion1(std::istream& stream);
};
