#pragma once

#include <cstddef>
#include <memory>

#include "kalmia/support/Export.h"

/// The MD5 message digest of all bytes given to it. It identifies content; it does not protect against forgery.
/// Source: Rivest (1992), RFC 1321.
class KALMIA_EXPORT MD5 {
 public:
  MD5();
  ~MD5();
  MD5(const MD5&) = delete;
  MD5& operator=(const MD5&) = delete;

  void Update(const char* text);                     ///< without the closing zero; null adds nothing
  void Update(const void* bytes, std::size_t count);  ///< the size is not checked
  void Finalize();                                   ///< makes the digest; later updates are ignored
  /// The digest as 32 lower-case hexadecimal digits, owned by this object; "" before Finalize.
  const char* GetDigest() const { return digest_; }

 private:
  struct State;
  std::unique_ptr<State> state_;  ///< null once the digest is made
  char digest_[33] = "";
};
