// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Files put into a folder that is the person's own: under names that nothing there has, also where
// upper and lower case are the same, and only when they are whole. Failures throw Error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/date_time.h"
#include "platform/staged_file.h"

namespace tarnwick::takeout {

// Names for new files of one folder.
class FreeNames {
 public:
  // Knows what lies in the folder now; one that is missing holds nothing. No folder ("") neither.
  explicit FreeNames(const std::string& folder);

  // A file name of at most 120 characters and 220 bytes: stem and extension (with its dot), made
  // safe, with " (2)" and so on where need be. It is taken from now on.
  std::string Take(std::string_view stem, std::string_view extension);
  // The same of a whole name.
  std::string Take(std::string_view name);

 private:
  bool Insert(std::string_view name);

  // Hashes of the folded names, so that a million of them have room; two names with one hash would
  // cost no more than a number behind the second.
  std::unordered_set<size_t> taken_;
  std::unordered_map<size_t, uint64_t> numbers_;  // last number given, by name
};

class NewFiles {
 public:
  // Makes the folder when it is missing.
  explicit NewFiles(const std::string& folder);

  const std::string& Folder() const { return folder_; }

  // Writes a file; modified is the time that it shows. Gives its path. A file that can't be
  // finished is removed.
  std::string Add(std::string_view stem, std::string_view extension, std::string_view bytes,
                  std::optional<DateTime> modified = {});

  // A path in the folder to write at until Place.
  std::string UnfinishedPath(std::string_view stem, std::string_view extension);
  // Gives what was written its name; gives the new path.
  std::string Place(platform::StagedFile& file, std::string_view stem, std::string_view extension);

 private:
  std::string folder_;
  FreeNames names_;
  std::string scratch_;  // where Add writes
};

}  // namespace tarnwick::takeout
