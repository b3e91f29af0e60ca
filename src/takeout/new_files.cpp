// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/new_files.h"

#include <algorithm>
#include <functional>

#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::takeout {

namespace {

constexpr size_t kMostChars = 120;
constexpr size_t kMostBytes = 220;

// A name that is fit for any file system, with room for what is added behind the stem.
std::string Fit(std::string_view stem, std::string_view added, std::string_view extension) {
  size_t chars = platform::CountChars(added) + platform::CountChars(extension);
  size_t bytes = added.size() + extension.size();
  size_t room = kMostChars - std::min(chars, kMostChars - 1);
  std::string_view cut = platform::FirstChars(stem, room);
  while (cut.size() + bytes > kMostBytes && cut.size() > 1) {
    cut = platform::FirstChars(cut, platform::CountChars(cut) - 1);
  }
  while (!cut.empty() && (cut.back() == ' ' || cut.back() == '.')) cut.remove_suffix(1);
  return std::string(cut) + std::string(added) + std::string(extension);
}

// The last extension of a name that is no longer than extensions are.
size_t ExtensionPlace(std::string_view name) {
  constexpr size_t kLongest = 12;
  size_t dot = name.rfind('.');
  bool isOne = dot != std::string_view::npos && dot > 0 && name.size() - dot <= kLongest;
  return isOne ? dot : name.size();
}

size_t HashOf(std::string_view name) {
  return std::hash<std::string>()(platform::FoldCase(platform::EnsureUtf8(name)));
}

}  // namespace

FreeNames::FreeNames(const std::string& folder) {
  if (folder.empty()) return;
  for (const std::string& name : platform::ListFiles(folder)) Insert(name);
  for (const std::string& name : platform::ListFolders(folder)) Insert(name);
}

bool FreeNames::Insert(std::string_view name) {
  return taken_.insert(HashOf(name)).second;
}

std::string FreeNames::Take(std::string_view stem, std::string_view extension) {
  bool hasStem = !platform::SafeFileName(stem).empty();
  std::string safe = platform::SafeFileName(
      std::string(hasStem ? stem : "file") + std::string(extension), kMostChars);
  size_t end = safe.size() >= extension.size() ? safe.size() - extension.size() : 0;
  std::string safeStem = safe.substr(0, safe.substr(end) == extension ? end : safe.size());
  std::string safeExtension = safe.substr(safeStem.size());
  std::string name = Fit(safeStem, "", safeExtension);
  if (Insert(name)) return name;
  uint64_t& number = numbers_.try_emplace(HashOf(name), 1).first->second;
  for (;;) {
    ++number;
    name = Fit(safeStem, " (" + std::to_string(number) + ")", safeExtension);
    if (Insert(name)) return name;
  }
}

std::string FreeNames::Take(std::string_view name) {
  size_t place = ExtensionPlace(name);
  return Take(name.substr(0, place), name.substr(place));
}

NewFiles::NewFiles(const std::string& folder)
    : folder_((platform::MakeFolder(folder), platform::WithSeparator(folder))), names_(folder_) {}

std::string NewFiles::Add(std::string_view stem, std::string_view extension, std::string_view bytes,
                          std::optional<DateTime> modified) {
  if (scratch_.empty()) scratch_ = UnfinishedPath("message", "");
  platform::StagedFile file(scratch_);
  platform::WriteFile(scratch_, bytes);
  if (modified) platform::SetFileModified(scratch_, *modified);
  return Place(file, stem, extension);
}

std::string NewFiles::UnfinishedPath(std::string_view stem, std::string_view extension) {
  std::string name = platform::SafeFileName(std::string(stem) + std::string(extension));
  return platform::UniquePath(folder_, name + std::string(platform::kUnfinished));
}

std::string NewFiles::Place(platform::StagedFile& file, std::string_view stem,
                            std::string_view extension) {
  constexpr int kMostTries = 1000;
  for (int i = 0; i < kMostTries; ++i) {
    std::string name = folder_ + names_.Take(stem, extension);
    // Something may have come in meanwhile, or the file system takes more names for one.
    if (file.TakeName(name)) return name;
  }
  throw Error(ErrorNumber::kPathAccess, "No free name: " + folder_ + std::string(stem));
}

}  // namespace tarnwick::takeout
