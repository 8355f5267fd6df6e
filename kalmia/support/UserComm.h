#pragma once

#include "kalmia/support/Export.h"

/// The dialogue with the user. The application derives from it and sets one object for the process. The default object
/// prints to standard error and answers every question with "go on".
class KALMIA_EXPORT UserComm {
 public:
  virtual ~UserComm();

  /// Shows `message` and asks `question`, under the title `caption`; `buttons` is the code of the buttons to offer. The
  /// library asks with 5; the answer 5 abandons the calculation, any other continues it.
  virtual int Ask(const char* question, const char* message, const char* caption, int buttons);
  /// Shows a text under a title; `helpContext` is the number of its page in the application's help.
  virtual void Show(const char* text, const char* caption, int helpContext);

  /// The process's dialogue object, never null.
  static UserComm* GetUserComm();
  /// Sets that object. The caller keeps it and must keep it alive while it is set. Null restores the default.
  static void SetUserComm(UserComm* dialogue);
};
