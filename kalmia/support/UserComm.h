#pragma once

#include "kalmia/support/Export.h"

/// The dialogue with the user: one object for the process, which the application derives and sets. The default one
/// prints to standard error and answers every question with "go on".
class KALMIA_EXPORT UserComm {
 public:
  virtual ~UserComm();

  /// Asks `question` below `message`, under the title `caption`; `buttons` is the code of the buttons to offer. The
  /// library asks with 5, and a result of 5 gives the calculation up; any other lets it go on.
  virtual int Ask(const char* question, const char* message, const char* caption, int buttons);
  /// Shows a text under a title; `helpContext` is the number of its page in the application's help.
  virtual void Show(const char* text, const char* caption, int helpContext);

  /// The process's dialogue object, never null.
  static UserComm* GetUserComm();
  /// Makes `dialogue` that object; it stays the caller's and has to outlive its use. Null brings the default back.
  static void SetUserComm(UserComm* dialogue);
};
