// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/registry_tree.h"

#include <algorithm>

#include "platform/charset.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// Deeper Windows paths than this are nobody's; bounds the look-ups of a hostile one.
constexpr size_t kMaxPathNames = 64;

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string Fold(std::string_view path) {
  std::string folded;
  for (const std::string& name : SplitWindowsPath(path)) {
    if (!folded.empty()) folded += '\\';
    folded += AsciiLower(name);
  }
  return folded;
}

}  // namespace

RegistryValue DecodeValue(uint32_t type, std::string bytes) {
  constexpr uint32_t kText = 1;
  constexpr uint32_t kExpandableText = 2;
  constexpr uint32_t kBinary = 3;
  constexpr uint32_t kNumber = 4;
  RegistryValue value;
  if (type == kText || type == kExpandableText) {
    value.type = type == kText ? RegistryValue::Type::kText : RegistryValue::Type::kExpandableText;
    value.text = Utf16ToUtf8(bytes);
  } else if (type == kNumber) {
    value.type = RegistryValue::Type::kNumber;
    for (size_t i = 0; i < 4 && i < bytes.size(); ++i) {
      value.number |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    }
  } else {
    value.type = type == kBinary ? RegistryValue::Type::kBinary : RegistryValue::Type::kOther;
    value.text = std::move(bytes);
  }
  return value;
}

std::vector<std::string> SplitWindowsPath(std::string_view path) {
  std::vector<std::string> names;
  while (!path.empty()) {
    size_t end = path.find_first_of("\\/");
    if (end != 0) names.emplace_back(path.substr(0, end));
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
  }
  return names;
}

std::string ExpandNames(
    std::string_view text,
    const std::function<std::optional<std::string>(const std::string&)>& lookup) {
  std::string expanded;
  while (!text.empty()) {
    size_t start = text.find('%');
    size_t end = start == std::string_view::npos ? start : text.find('%', start + 1);
    if (end == std::string_view::npos) break;
    expanded += text.substr(0, start);
    std::optional<std::string> value = lookup(std::string(text.substr(start + 1, end - start - 1)));
    if (value) {
      expanded += *value;
      text.remove_prefix(end + 1);
    } else {
      // The second sign may begin a name of its own.
      expanded += text.substr(start, end - start);
      text.remove_prefix(end);
    }
  }
  expanded += text;
  return expanded;
}

std::optional<std::string> OwnerVariable(const std::string& name, const std::string& owner,
                                         const std::string& home) {
  std::string lower = AsciiLower(name);
  if (lower == "userprofile") return "C:" + home;
  if (lower == "homedrive" || lower == "systemdrive") return "C:";
  if (lower == "homepath") return home;
  if (lower == "username") return owner;
  if (lower == "appdata") return "C:" + home + "\\Application Data";
  if (lower == "localappdata") return "C:" + home + "\\Local Settings\\Application Data";
  return std::nullopt;
}

char DriveLetterOf(std::string_view windowsPath) {
  return windowsPath.size() >= 2 && windowsPath[1] == ':' && IsLetter(windowsPath[0])
             ? AsciiUpper(windowsPath.substr(0, 1))[0]
             : '\0';
}

std::string TurnSeparators(std::string_view windowsPath) {
  std::string turned(windowsPath);
  std::replace(turned.begin(), turned.end(), '\\', kSeparator);
  return turned;
}

std::optional<std::string> FindTail(const std::string& folder, std::string_view windowsPath) {
  if (DriveLetterOf(windowsPath) != '\0') windowsPath.remove_prefix(2);
  std::vector<std::string> names = SplitWindowsPath(windowsPath);
  if (names.size() > kMaxPathNames) return std::nullopt;
  bool endsWithSeparator = windowsPath.ends_with('\\') || windowsPath.ends_with('/');
  for (size_t first = 0; first < names.size(); ++first) {
    std::string relative;
    for (size_t i = first; i < names.size(); ++i) relative += (i > first ? "/" : "") + names[i];
    if (auto found = FindIgnoringCase(folder, relative)) {
      return endsWithSeparator ? WithSeparator(*found) : *found;
    }
  }
  return std::nullopt;
}

RegistryTree::Key& RegistryTree::MakeKey(std::string_view path) {
  std::vector<std::string> names = SplitWindowsPath(path);
  std::string folded;
  for (const std::string& name : names) {
    Key& parent = keys_[folded];
    if (!folded.empty()) folded += '\\';
    folded += AsciiLower(name);
    if (keys_.find(folded) == keys_.end()) parent.subKeys.push_back(name);
    keys_.try_emplace(folded);
  }
  return keys_[folded];
}

void RegistryTree::AddKey(std::string_view path) {
  MakeKey(path);
}

void RegistryTree::AddValue(std::string_view path, std::string_view name, RegistryValue value) {
  MakeKey(path).values[AsciiLower(name)] = std::move(value);
}

std::optional<std::vector<std::string>> RegistryTree::SubKeys(std::string_view path) {
  auto key = keys_.find(Fold(path));
  if (key == keys_.end()) return std::nullopt;
  return key->second.subKeys;
}

std::optional<RegistryValue> RegistryTree::Value(std::string_view path, std::string_view name,
                                                 bool* keyExists) {
  auto key = keys_.find(Fold(path));
  if (keyExists != nullptr) *keyExists = key != keys_.end();
  if (key == keys_.end()) return std::nullopt;
  auto value = key->second.values.find(AsciiLower(name));
  if (value == key->second.values.end()) return std::nullopt;
  return value->second;
}

std::optional<std::string> FileRegistry::StoredVariable(const std::string& name) {
  for (const char* key : {"Volatile Environment", "Environment"}) {
    std::optional<RegistryValue> value = Value(key, name, nullptr);
    if (value && (value->type == RegistryValue::Type::kText ||
                  value->type == RegistryValue::Type::kExpandableText)) {
      return value->text;
    }
  }
  return std::nullopt;
}

}  // namespace tarnwick::platform
