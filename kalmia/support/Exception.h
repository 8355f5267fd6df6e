#pragma once

#include "kalmia/support/CString.h"
#include "kalmia/support/Export.h"

/// Root of what the library throws. Thrown by value, caught by reference.
class KALMIA_EXPORT Exception {
 public:
  explicit Exception(const CString& message);
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  virtual ~Exception();

  const CString& GetMessage() const { return message_; }

 private:
  CString message_;
};
