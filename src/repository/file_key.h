// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The key of a database file that the owner protects with a password of their own. The engine
// begins each encrypted file with 16 bytes that it does not encrypt and takes for the salt of a
// password. A protected file has its mark there, embedded in every such file, do not change:
//
//   0   2  "Tw"
//   2   1  version of the mark, 1
//   3   1  memory: the key was made in 2 to this power KB (13 to 21)
//   4   1  passes over it (1 to 16)
//   5   8  random
//   13  3  check: what the right password leads to behind the key
//
// Argon2id, with one lane and bytes 0 to 12 and three zeros as its salt, makes 35 bytes of the
// password: the key of the file and the check. So a file carries all that the password needs to
// open it, and a wrong password can be told from a damaged file. The check tells an attacker
// nothing that the first page does not tell at the same cost.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/secret.h"

namespace tarnwick::repository {

inline constexpr size_t kMarkSize = 16;

// The mark that a file begins with; "" where it has none (it bears the program's password) or is
// missing. Throws Error where it can't be read: a file that is protected must not be taken for one
// that is not. REQUIRES: this process has not got the file open: the system would take its locks
// off it.
std::string MarkOf(const std::string& file);
bool IsMark(std::string_view bytes);

class FileKey {
 public:
  // A new key, of a password that a file is to be given. Takes about half a second.
  explicit FileKey(const platform::Secret& password);
  // The key of a file with this mark; nullopt where it is not this password's. The same half
  // second.
  static std::optional<FileKey> Of(const std::string& mark, const platform::Secret& password);

  const std::string& Mark() const { return mark_; }
  // What the engine is given in place of a password: it encrypts with the key as it is, and begins
  // a file that it makes with the mark.
  platform::Secret ForEngine() const;

 private:
  FileKey(std::string mark, platform::Secret key) : mark_(std::move(mark)), key_(std::move(key)) {}

  std::string mark_;
  platform::Secret key_;
};

// What new keys cost from now on, for tests; nullopt takes it out.
void SetKeyCostOverride(std::optional<platform::PasswordCost> cost);

}  // namespace tarnwick::repository
