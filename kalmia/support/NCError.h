#pragma once

#include "kalmia/support/Exception.h"
#include "kalmia/support/Export.h"

/// A calculation stopped because the user asked for it or because the model cannot go on. The header of the model says
/// in which state it is then.
class KALMIA_EXPORT NCError : public Exception {
 public:
  /// Level2: the user stopped an iteration. Level1: the model cannot go on. Level0: any other error.
  enum Level { Level0 = 0, Level1 = 1, Level2 = 2 };

  NCError();
  explicit NCError(const CString& message);
  NCError(const CString& message, Level level);
  NCError(const NCError&) = default;
  NCError& operator=(const NCError&) = default;
  ~NCError() override;

  /// A new object of the most derived type with all its fields; the caller owns it.
  virtual NCError* Clone() const;

  Level GetLevel() const { return level_; }

 private:
  Level level_ = Level0;
};
