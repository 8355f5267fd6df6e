#pragma once

#include "kalmia/support/Exception.h"
#include "kalmia/support/Export.h"

/// Stops a calculation: the user asked for it, or the model cannot go on. The model's header tells what is left of the
/// model.
class KALMIA_EXPORT NCError : public Exception {
 public:
  /// How a component ended: Level2 the user stopped an iteration, Level1 the model cannot go on, Level0 all else.
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
