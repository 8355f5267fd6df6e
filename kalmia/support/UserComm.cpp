#include "kalmia/support/UserComm.h"

#include <cstdio>

#include "kalmia/support/VexString.h"

using kalmia::OrEmpty;

namespace {

constexpr int kGoOn = 0;  ///< any answer but 5

UserComm* current = nullptr;  ///< null for the default

}  // namespace

UserComm::~UserComm() = default;

int UserComm::Ask(const char* question, const char* message, const char* caption, int) {
  std::fprintf(stderr, "%s: %s\n%s Going on.\n", OrEmpty(caption), OrEmpty(message), OrEmpty(question));
  return kGoOn;
}

void UserComm::Show(const char* text, const char* caption, int) {
  std::fprintf(stderr, "%s: %s\n", OrEmpty(caption), OrEmpty(text));
}

UserComm* UserComm::GetUserComm() {
  static UserComm byDefault;
  return current ? current : &byDefault;
}

void UserComm::SetUserComm(UserComm* dialogue) { current = dialogue; }
