// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/keys.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "core/messages.h"
#include "platform/error.h"
#include "repository/keyring.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

constexpr int kTries = 3;

struct KnownKeys {
  std::vector<FileKey> keys;
  std::unique_ptr<platform::NoMemoryImage> noImage;  // while there are any
};

KnownKeys& Known() {
  static KnownKeys known;
  return known;
}

const FileKey* Find(const std::string& mark) {
  auto found = std::ranges::find(Known().keys, mark, &FileKey::Mark);
  return found == Known().keys.end() ? nullptr : &*found;
}

}  // namespace

platform::Secret PasswordOfMark(const std::string& mark) {
  if (mark.empty()) return platform::Secret(DatabasePassword());
  if (const FileKey* key = Find(mark)) return key->ForEngine();
  throw Error(ErrorNumber::kWrongPassword, "A password is needed");
}

platform::Secret PasswordOf(const std::string& file) {
  std::string mark = MarkOf(file);
  if (!mark.empty() && Find(mark) == nullptr) {
    throw Error(ErrorNumber::kWrongPassword,
                "The file " + file + " is protected with a password of its own");
  }
  return PasswordOfMark(mark);
}

bool Unlock(const std::string& file) {
  std::string mark = MarkOf(file);
  if (mark.empty() || Find(mark) != nullptr) return true;
  // What is typed from here on shall be in no memory image either.
  platform::NoMemoryImage noImage;
  auto opens = [&](const platform::Secret& password) {
    std::optional<FileKey> key = FileKey::Of(mark, password);
    if (key) AddKey(std::move(*key));
    return key.has_value();
  };
  if (std::optional<platform::Secret> remembered = RememberedPassword(mark)) {
    if (opens(*remembered)) return true;
    ForgetPassword(mark);
  }
  for (int attempt = 1; attempt <= kTries; ++attempt) {
    std::optional<platform::Secret> password = core::AskPassword(file, attempt);
    if (!password) return false;
    if (opens(*password)) {
      RememberPassword(mark, *password);
      return true;
    }
  }
  throw Error(ErrorNumber::kWrongPassword, "This is not the password of " + file +
                                               ". The file stays closed; nothing in it was "
                                               "changed.");
}

void AddKey(FileKey key) {
  KnownKeys& known = Known();
  if (known.noImage == nullptr) known.noImage = std::make_unique<platform::NoMemoryImage>();
  known.keys.push_back(std::move(key));
}

void ForgetKeys(const std::string& keptMark) {
  KnownKeys& known = Known();
  std::erase_if(known.keys, [&](const FileKey& key) { return key.Mark() != keptMark; });
  if (known.keys.empty()) known.noImage.reset();
}

}  // namespace tarnwick::repository
