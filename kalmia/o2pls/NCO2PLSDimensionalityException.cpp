#include <string>

#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/support/CString.h"

namespace {

/// Which side a sentence is about: the block's own name first.
struct Side {
  const char* own;
  const char* other;
};

std::string Sentence(int limit, const Side& side) {
  CString text;
  if (limit == 0) {
    text.Format("There are no dimensions in %s that are unrelated to %s.\n", side.own, side.other);
  } else if (limit == 1) {
    text.Format("There is only 1 dimension in %s that is unrelated to %s.\n", side.own, side.other);
  } else {
    text.Format("There are only %i dimensions in %s that are unrelated to %s.\n", limit, side.own, side.other);
  }
  return static_cast<const char*>(text);
}

CString MessageFor(int type, int xLimit, int yLimit) {
  std::string message;
  if (type & 1) message += Sentence(xLimit, {"X", "Y"});
  if (type & 2) message += Sentence(yLimit, {"Y", "X"});
  message += "More components can not be calculated.";
  return message.c_str();
}

}  // namespace

NCO2PLSDimensionalityException::NCO2PLSDimensionalityException(int type, int predictiveComponents, int xLimit,
                                                               int yLimit)
    : NCError(MessageFor(type, xLimit, yLimit)),
      Type(type),
      PredictiveComponents(predictiveComponents),
      XLimit(xLimit),
      YLimit(yLimit) {}

NCO2PLSDimensionalityException::~NCO2PLSDimensionalityException() = default;

NCError* NCO2PLSDimensionalityException::Clone() const { return new NCO2PLSDimensionalityException(*this); }
