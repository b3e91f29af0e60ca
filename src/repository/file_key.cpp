// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/file_key.h"

#include <array>
#include <utility>

#include "platform/files.h"

namespace tarnwick::repository {

namespace {

using platform::Secret;

constexpr std::string_view kBeginning("Tw\x01", 3);
constexpr size_t kMemoryAt = 3;
constexpr size_t kPassesAt = 4;
constexpr size_t kRandomAt = 5;
constexpr size_t kCheckAt = 13;
constexpr size_t kKeySize = 32;
constexpr size_t kCheckSize = kMarkSize - kCheckAt;

// What a file may ask for: a hostile one costs no more than some seconds and 2 GB.
constexpr std::pair<int, int> kMemoryPowers = {13, 21};
constexpr std::pair<int, int> kPasses = {1, 16};

// 256 MB, three times over: about half a second on a machine of 2020.
constexpr platform::PasswordCost kCost = {.passes = 3, .memoryPower = 18};

std::optional<platform::PasswordCost>& CostOverride() {
  static std::optional<platform::PasswordCost> cost;
  return cost;
}

bool IsWithin(char byte, std::pair<int, int> range) {
  return byte >= range.first && byte <= range.second;
}

// The key and, behind it, the check.
Secret Stretch(std::string_view mark, const Secret& password) {
  std::string salt(mark.substr(0, kCheckAt));
  salt.resize(platform::kSaltSize, '\0');
  platform::PasswordCost cost = {.passes = static_cast<uint8_t>(mark[kPassesAt]),
                                 .memoryPower = static_cast<uint8_t>(mark[kMemoryAt])};
  return platform::StretchPassword(password.Bytes(), salt, cost, kKeySize + kCheckSize);
}

}  // namespace

std::string MarkOf(const std::string& file) {
  if (!platform::FileExists(file)) return {};
  std::array<char, kMarkSize> bytes;
  platform::InputFile input(file);
  if (input.ReadAt(0, bytes.data(), bytes.size()) < bytes.size()) return {};
  std::string mark(bytes.data(), bytes.size());
  return IsMark(mark) ? mark : std::string();
}

bool IsMark(std::string_view bytes) {
  return bytes.size() == kMarkSize && bytes.starts_with(kBeginning) &&
         IsWithin(bytes[kMemoryAt], kMemoryPowers) && IsWithin(bytes[kPassesAt], kPasses);
}

FileKey::FileKey(const Secret& password) : mark_(kBeginning) {
  platform::PasswordCost cost = CostOverride().value_or(kCost);
  mark_ += static_cast<char>(cost.memoryPower);
  mark_ += static_cast<char>(cost.passes);
  mark_.resize(kCheckAt);
  platform::FillRandom(mark_.data() + kRandomAt, kCheckAt - kRandomAt);
  key_ = Stretch(mark_, password);
  mark_ += key_.Bytes().substr(kKeySize);
  key_.Cut(kKeySize);
}

std::optional<FileKey> FileKey::Of(const std::string& mark, const Secret& password) {
  Secret key = Stretch(mark, password);
  if (key.Bytes().substr(kKeySize) != std::string_view(mark).substr(kCheckAt)) return std::nullopt;
  key.Cut(kKeySize);
  return FileKey(mark, std::move(key));
}

Secret FileKey::ForEngine() const {
  constexpr std::string_view kRaw = "raw:";
  constexpr std::string_view kDigits = "0123456789abcdef";
  Secret text(kRaw.size() + 2 * (kKeySize + kMarkSize));
  char* to = text.Data();
  for (char letter : kRaw) *to++ = letter;
  for (std::string_view bytes : {key_.Bytes(), std::string_view(mark_)}) {
    for (char byte : bytes) {
      *to++ = kDigits[static_cast<unsigned char>(byte) >> 4];
      *to++ = kDigits[static_cast<unsigned char>(byte) & 15];
    }
  }
  return text;
}

void SetKeyCostOverride(std::optional<platform::PasswordCost> cost) {
  CostOverride() = cost;
}

}  // namespace tarnwick::repository
