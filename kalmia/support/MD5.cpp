#include "kalmia/support/MD5.h"

#include <md5.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

struct MD5::State {
  MD5_CTX context;
};

MD5::MD5() : state_(std::make_unique<State>()) { MD5Init(&state_->context); }

MD5::~MD5() = default;

void MD5::Update(const char* text) {
  if (text) Update(text, std::strlen(text));
}

void MD5::Update(const void* bytes, std::size_t count) {
  if (state_ && count > 0) MD5Update(&state_->context, static_cast<const std::uint8_t*>(bytes), count);
}

void MD5::Finalize() {
  if (!state_) return;
  std::uint8_t raw[MD5_DIGEST_LENGTH];
  MD5Final(raw, &state_->context);
  state_.reset();
  constexpr const char* kDigits = "0123456789abcdef";
  for (std::size_t i = 0; i < sizeof(raw); ++i) {
    digest_[2 * i] = kDigits[raw[i] >> 4];
    digest_[2 * i + 1] = kDigits[raw[i] & 15];
  }
}
