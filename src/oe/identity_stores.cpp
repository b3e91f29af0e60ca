// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/identity_stores.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/utf8.h"

namespace tarnwick::oe {

namespace {

using platform::FindIgnoringCase;
using platform::WithSeparator;

// "WINNT\Profiles\Ann" of a drive's folder, and the folder that holds the drives.
constexpr int kLevelsAbove = 4;

bool IsLetter(std::string_view name) {
  return !name.empty() && platform::AsciiLower(name)[0] >= 'a' &&
         platform::AsciiLower(name)[0] <= 'z';
}

}  // namespace

std::string StoreKeyOf(const std::string& identity) {
  return std::string(kIdentitiesKey) + "\\" + identity +
         "\\Software\\Microsoft\\Outlook Express\\5.0";
}

bool IsDriveName(std::string_view name) {
  return IsLetter(name) && (name.size() == 1 || (name.size() == 2 && name[1] == ':'));
}

std::string ParentOf(const std::string& folder) {
  return folder.size() < 2 ? std::string()
                           : platform::FolderOf(folder.substr(0, folder.size() - 1));
}

std::vector<std::string> Surroundings(const std::string& profile) {
  std::vector<std::string> folders;
  std::string folder = profile;
  for (int level = 0; level <= kLevelsAbove && folder.size() > 1; ++level) {
    folders.push_back(folder);
    folder = ParentOf(folder);
  }
  return folders;
}

std::vector<std::string> StorePlaces(platform::Registry& registry, const std::string& root,
                                     const std::string& profile) {
  std::string expanded = registry.Expand(root);
  std::vector<std::string> places = {WithSeparator(registry.MapPath(expanded))};
  std::string drive;
  if (IsDriveName(expanded.substr(0, 2))) {
    drive = expanded.substr(0, 1);
    expanded.erase(0, 2);
  }
  std::replace(expanded.begin(), expanded.end(), '\\', '/');
  for (const std::string& folder : Surroundings(profile)) {
    std::vector<std::string> ways = {expanded};
    for (const char* mark : {":/", "/"}) {
      if (!drive.empty())
        ways.insert(ways.begin(), std::string(drive).append(mark).append(expanded));
    }
    for (const std::string& way : ways) {
      if (auto found = FindIgnoringCase(folder, way)) places.push_back(WithSeparator(*found));
    }
  }
  return places;
}

}  // namespace tarnwick::oe
