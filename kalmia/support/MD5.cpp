#include "kalmia/support/MD5.h"

#include <openssl/evp.h>

#include <cstddef>
#include <cstring>

#include "kalmia/support/Exception.h"

struct MD5::State {
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  ~State() { EVP_MD_CTX_free(context); }
};

namespace {

void Require(int success) {
  if (success != 1) throw Exception("MD5 cannot be computed on this machine.");
}

}  // namespace

MD5::MD5() : state_(std::make_unique<State>()) {
  Require(state_->context && EVP_DigestInit_ex(state_->context, EVP_md5(), nullptr));
}

MD5::~MD5() = default;

void MD5::Update(const char* text) {
  if (text) Update(text, std::strlen(text));
}

void MD5::Update(const void* bytes, std::size_t count) {
  if (state_ && count > 0) Require(EVP_DigestUpdate(state_->context, bytes, count));
}

void MD5::Finalize() {
  if (!state_) return;
  unsigned char raw[EVP_MAX_MD_SIZE];
  unsigned length = 0;
  Require(EVP_DigestFinal_ex(state_->context, raw, &length));
  state_.reset();
  constexpr const char* kDigits = "0123456789abcdef";
  for (unsigned i = 0; i < 16; ++i) {
    digest_[2 * i] = kDigits[raw[i] >> 4];
    digest_[2 * i + 1] = kDigits[raw[i] & 15];
  }
}
