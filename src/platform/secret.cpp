// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/secret.h"

#include <sodium.h>

#include <algorithm>
#include <cassert>
#include <utility>

#include "platform/error.h"

namespace tarnwick::platform {

namespace {

void Begin() {
  if (sodium_init() < 0) {
    throw Error(ErrorNumber::kUnexpected, "The system gives no random numbers");
  }
}

[[noreturn]] void FailForMemory() {
  throw Error(ErrorNumber::kUnexpected, "There is not enough memory to work with a password");
}

}  // namespace

Secret::Secret(size_t size) {
  if (size == 0) return;
  Begin();
  data_ = static_cast<char*>(sodium_malloc(size));
  if (data_ == nullptr) FailForMemory();
  size_ = size;
  sodium_memzero(data_, size_);
}

Secret::Secret(std::string_view bytes) : Secret(bytes.size()) {
  std::copy(bytes.begin(), bytes.end(), data_);
}

Secret::Secret(Secret&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

Secret& Secret::operator=(Secret&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  return *this;
}

Secret::~Secret() {
  sodium_free(data_);  // overwrites
}

bool Secret::IsSame(std::string_view bytes) const {
  return bytes.size() == size_ && (size_ == 0 || sodium_memcmp(bytes.data(), data_, size_) == 0);
}

void Secret::Cut(size_t size) {
  if (size >= size_) return;
  sodium_memzero(data_ + size, size_ - size);
  size_ = size;
}

void FillRandom(char* bytes, size_t count) {
  Begin();
  randombytes_buf(bytes, count);
}

Secret StretchPassword(std::string_view password, std::string_view salt, PasswordCost cost,
                       size_t size) {
  static_assert(kSaltSize == crypto_pwhash_SALTBYTES);
  assert(salt.size() == kSaltSize);
  Secret key(size);
  int code =
      crypto_pwhash(reinterpret_cast<unsigned char*>(key.Data()), size, password.data(),
                    password.size(), reinterpret_cast<const unsigned char*>(salt.data()),
                    cost.passes, size_t{1024} << cost.memoryPower, crypto_pwhash_ALG_ARGON2ID13);
  if (code != 0) FailForMemory();
  return key;
}

}  // namespace tarnwick::platform
