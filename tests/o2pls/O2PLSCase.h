#pragma once

#include <optional>
#include <string>
#include <vector>

#include "PlainO2PLS.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/support/NCError.h"

/// Two blocks as the models take them.
struct FloatBlocks {
  NCDataMatrix<float> X, Y;
};

/// plain::MakeBlocks, rounded.
FloatBlocks MakeFloatBlocks(const plain::BlocksShape& shape, double noise, unsigned seed);

/// The text of the NCError that the call ends with; none where it ends well.
template <class Call>
std::optional<std::string> TextOf(const Call& call) {
  try {
    call();
  } catch (const NCError& error) {
    return static_cast<const char*>(error.GetMessage());
  }
  return std::nullopt;
}

/// All sixteen result matrices, for comparisons to the bit.
std::vector<std::vector<std::vector<float>>> Everything(const NCO2PLS& model);

/// The model's matrices in double.
plain::O2PLS PlainOf(const NCO2PLS& model);
