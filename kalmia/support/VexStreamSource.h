#pragma once

#include <iosfwd>

#include "kalmia/support/Export.h"

/// The application's store of streams by name, in which results may be cached. A stream that it returns is the
/// caller's to delete.
class KALMIA_EXPORT VexStreamSource {
 public:
  virtual ~VexStreamSource() = default;
  virtual std::istream* OpenInput(const char* name) = 0;   ///< null when nothing is stored under the name
  virtual std::ostream* OpenOutput(const char* name) = 0;  ///< null when nothing can be stored: no failure
};
