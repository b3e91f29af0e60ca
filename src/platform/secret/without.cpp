// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// secret.h on a machine without libsodium: files with the program's password are read and written
// as everywhere, a protected one can't be opened.
#include <algorithm>

#include "platform/error.h"
#include "platform/secret.h"

namespace tarnwick::platform {

namespace {

void Overwrite(char* bytes, size_t count) {
  // Through a volatile pointer, which no compiler leaves out.
  volatile char* at = bytes;
  for (size_t i = 0; i < count; ++i) at[i] = 0;
}

[[noreturn]] void Refuse() {
  throw Error(ErrorNumber::kWrongPassword,
              "This Tarnwick was built without what passwords of one's own need");
}

}  // namespace

Secret::Secret(size_t size) : data_(size == 0 ? nullptr : new char[size]()), size_(size) {}

Secret::~Secret() {
  Overwrite(data_, size_);
  delete[] data_;
}

bool Secret::IsSame(std::string_view bytes) const {
  return Bytes() == bytes;
}

void Secret::Cut(size_t size) {
  if (size >= size_) return;
  Overwrite(data_ + size, size_ - size);
  size_ = size;
}

void FillRandom(char* /*bytes*/, size_t /*count*/) {
  Refuse();
}

Secret StretchPassword(std::string_view /*password*/, std::string_view /*salt*/,
                       PasswordCost /*cost*/, size_t /*size*/) {
  Refuse();
}

}  // namespace tarnwick::platform
