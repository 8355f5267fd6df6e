#pragma once

#include "kalmia/support/Export.h"

/// The application's settings: values by key.
class KALMIA_EXPORT ConfigurationSection {
 public:
  virtual ~ConfigurationSection() = default;
  virtual void SetInteger(const char* key, int value) = 0;
  virtual void SetFloatArray(const char* key, const float* values, int length) = 0;
  virtual int GetInteger(const char* key) = 0;
  virtual void GetFloatArray(const char* key, float* values, int length) = 0;  ///< fills the `length` values
};
