// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Bytes that nobody else is to come by: a password, a key. They lie in memory of their own between
// guard pages, which is kept out of the swap space where the system allows it, and are overwritten
// when they are let go. Copies of them elsewhere (a text field, the engine's own key) are out of
// reach here: make none that can be avoided.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tarnwick::platform {

class Secret {
 public:
  Secret() = default;
  explicit Secret(size_t size);  // zeros. Throws Error without memory
  explicit Secret(std::string_view bytes);
  Secret(Secret&& other) noexcept;
  Secret& operator=(Secret&& other) noexcept;
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;
  ~Secret();

  bool IsEmpty() const { return size_ == 0; }
  size_t Size() const { return size_; }
  char* Data() { return data_; }
  std::string_view Bytes() const { return {data_, size_}; }
  // Takes as long whatever the bytes are.
  bool IsSame(std::string_view bytes) const;
  // Overwrites what lies behind the first bytes, and forgets it.
  void Cut(size_t size);

 private:
  char* data_ = nullptr;
  size_t size_ = 0;
};

void FillRandom(char* bytes, size_t count);

// What a guess at a password costs: passes over memory of 2 to the memoryPower KB.
struct PasswordCost {
  uint8_t passes;
  uint8_t memoryPower;
};
inline constexpr size_t kSaltSize = 16;
// size bytes (16 to 64) that only the password and the salt, kSaltSize bytes, lead to (Argon2id,
// one lane). Throws Error where the memory can't be had.
Secret StretchPassword(std::string_view password, std::string_view salt, PasswordCost cost,
                       size_t size);

// While one of these lives, a crash leaves no image of the process's memory, and no other process
// of the user may look into it.
class NoMemoryImage {
 public:
  NoMemoryImage();
  ~NoMemoryImage();
  NoMemoryImage(const NoMemoryImage&) = delete;
  NoMemoryImage& operator=(const NoMemoryImage&) = delete;
};

}  // namespace tarnwick::platform
