#pragma once

#include "kalmia/opls/OPLSCrossvalidationData.h"
#include "kalmia/support/VexStream.h"

/// The data of an OPLS cross-validation, with its own operations behind the stream operators, for StreamAttacks.
class StreamedOPLSData : public VexStreamBase {
 public:
  OPLSCrossvalidationData data;

 protected:
  bool VexStreamableStartWrite(std::ostream& stream) override { return data.WriteObject(stream); }
  bool VexStreamableStartRead(std::istream& stream) override { return data.ReadObject(stream); }
  void VexStreamableReset() override {}
};
