#pragma once

#include <cstdint>
#include <functional>

#include "kalmia/support/Export.h"

namespace kalmia {

/// Throws if the work must stop. Empty if there is nobody to ask.
using Ask = std::function<void()>;

/// Asks once for each `workPerQuestion` of work, in any unit.
class KALMIA_EXPORT WorkMeter {
 public:
  /// Keeps a reference to `ask`.
  WorkMeter(const Ask& ask, std::int64_t workPerQuestion) : ask_(ask), workPerQuestion_(workPerQuestion) {}
  void Add(std::int64_t work) {
    done_ += work;
    if (done_ < workPerQuestion_) return;
    done_ = 0;
    if (ask_) ask_();
  }

 private:
  const Ask& ask_;
  std::int64_t workPerQuestion_;
  std::int64_t done_ = 0;
};

}  // namespace kalmia
