// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/secret.h"

#include <algorithm>
#include <utility>

namespace tarnwick::platform {

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

}  // namespace tarnwick::platform
