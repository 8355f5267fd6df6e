#pragma once

namespace kalmia {

/// A process-wide limit on a gain in Q2: 0.01 until it is set.
class Q2Limit {
 public:
  float Get() const { return value_; }
  void Set(float value) {                     ///< ignores what is not from 0 up to, but not including, 1
    if (value >= 0.0F && value < 1.0F) value_ = value;
  }

 private:
  float value_ = 0.01F;
};

}  // namespace kalmia
