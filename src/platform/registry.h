// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HKEY_CURRENT_USER of the mail's owner, read only. It comes from a profile folder:
//   - on Windows that of the user who runs the program: the system itself is asked,
//   - a folder with an NTUSER.DAT ("Documents and Settings\Ann" of an old disk, mounted or copied),
//   - a Wine prefix or a folder with a user.reg,
//   - a folder of *.dbx files, with or without a folder list, in it or below it: presented as one
//     identity named after the folder, or as one for each folder of files that lies below.
// Key and value names are found without regard to case. Every offset, length and count of the files
// is checked; a damaged one opens as far as it can be read or throws Error 75.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::platform {

// A value as it lies in the registry. Texts are UTF-8, cut at their terminating zero.
struct RegistryValue {
  enum class Type { kText = 1, kExpandableText = 2, kBinary = 3, kNumber = 4, kOther = 0 };
  Type type = Type::kOther;
  std::string text;     // kText, kExpandableText; the raw bytes for kBinary and kOther
  uint32_t number = 0;  // kNumber
};

// Keys and what they hold.
class RegistryKeys {
 public:
  virtual ~RegistryKeys() = default;

  // Names of the subkeys of a key such as "Identities" or "Software\\Microsoft\\Windows", in the
  // registry's order; nullopt when there is no such key.
  virtual std::optional<std::vector<std::string>> SubKeys(std::string_view path) = 0;
  // nullopt when the key or the value is missing. keyExists, when given, tells which.
  virtual std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                             bool* keyExists = nullptr) = 0;
};

// The same with what maps it onto this machine.
class Registry : public RegistryKeys {
 public:
  // Undoes %NAME% of an expandable text for this owner (UserProfile, AppData, ...); a name that
  // nobody knows stays as it is.
  virtual std::string Expand(std::string_view text) = 0;

  // Maps a Windows path, expanded if need be, onto the profile folder: drive letters and the part
  // up to the owner's own folder fall away, the rest is looked up without regard to case. A
  // trailing "\" stays as the separator. A text that maps nowhere comes back with its separators
  // turned.
  virtual std::string MapPath(std::string_view windowsPath) = 0;
};

enum class ProfileKind { kNone, kOwn, kHive, kWine, kDbxWithFolderList, kDbxFiles };

// The profile of the user who runs the program, where the system keeps a registry; "" elsewhere.
std::string OwnProfileFolder();

// What a folder could be opened as.
ProfileKind DetectProfile(const std::string& folder);

// What of a registry file is read, which may hold anything: kHive or kWine. Throws Error 75 for a
// file that is none, or what opening a file throws.
std::unique_ptr<RegistryKeys> ReadRegistryFile(const std::string& file, ProfileKind kind);
// Whoever reads registry files for OpenProfile elsewhere; it gives nullptr where it does not, and
// throws what ReadRegistryFile throws. {} for nobody.
using RegistryFileReader =
    std::function<std::unique_ptr<RegistryKeys>(const std::string& file, ProfileKind kind)>;
void SetRegistryFileReader(RegistryFileReader reader);

// REQUIRES: DetectProfile(folder) is not kNone; throws Error 53 otherwise.
std::unique_ptr<Registry> OpenProfile(const std::string& folder);

// The *.dbx files in or below a folder as OpenProfile presents those of a folder without a
// registry, whether it has one or not; none when there are no such files.
std::unique_ptr<Registry> OpenStoresBelow(const std::string& folder);

// What a *.dbx file says that it holds; its first twenty bytes are a mark that the files of Outlook
// Express share but for one byte.
enum class DbxContent { kMessages, kFolderList, kOther, kUnmarked };
// kUnmarked for a file that can't be read.
DbxContent ReadDbxContent(const std::string& path);

}  // namespace tarnwick::platform
