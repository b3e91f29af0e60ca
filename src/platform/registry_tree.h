// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the providers of a registry view (registry.h) share: a tree of keys held in memory, the
// undoing of %NAME%, and the mapping of Windows paths. Private to the platform room.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace tarnwick::platform {

// A value of the system's type numbers, of its bytes as they lie in the registry.
RegistryValue DecodeValue(uint32_t type, std::string bytes);

// A key path's or Windows path's names, empty ones left out.
std::vector<std::string> SplitWindowsPath(std::string_view path);

// Replaces each %NAME% by what lookup gives for the name; where it gives nothing the text stays.
std::string ExpandNames(
    std::string_view text,
    const std::function<std::optional<std::string>(const std::string&)>& lookup);

// What Windows has in the environment of an owner whose folder is home on drive C.
std::optional<std::string> OwnerVariable(const std::string& name, const std::string& owner,
                                         const std::string& home);

// "C" of "C:\..."; 0 when the text begins with no drive letter.
char DriveLetterOf(std::string_view windowsPath);

// The path with "/" for "\" (a text that maps nowhere).
std::string TurnSeparators(std::string_view windowsPath);

// Looks up the longest tail of a Windows path that exists below the folder.
std::optional<std::string> FindTail(const std::string& folder, std::string_view windowsPath);

// Keys and values in memory, found without regard to case, listed in the order of their adding.
class RegistryTree : public Registry {
 public:
  void AddKey(std::string_view path);
  void AddValue(std::string_view path, std::string_view name, RegistryValue value);

  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override;
  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists = nullptr) override;
  std::string Expand(std::string_view text) override { return std::string(text); }
  std::string MapPath(std::string_view path) override { return std::string(path); }

 private:
  struct Key {
    std::vector<std::string> subKeys;             // as they are written
    std::map<std::string, RegistryValue> values;  // by folded name
  };
  Key& MakeKey(std::string_view path);
  std::map<std::string, Key> keys_;  // by folded path
};

// The registry of a file in a folder.
class FileRegistry : public Registry {
 public:
  FileRegistry(std::string folder, std::unique_ptr<RegistryKeys> keys)
      : folder_(std::move(folder)), keys_(std::move(keys)) {}

  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override {
    return keys_->SubKeys(path);
  }
  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists) override {
    return keys_->Value(path, name, keyExists);
  }

 protected:
  const std::string& Folder() const { return folder_; }
  // Of the keys "Volatile Environment" and "Environment".
  std::optional<std::string> StoredVariable(const std::string& name);

 private:
  std::string folder_;
  std::unique_ptr<RegistryKeys> keys_;
};

// The providers, one a file: what reads it, and what maps it.
std::unique_ptr<RegistryKeys> ReadHive(const std::string& file);
std::unique_ptr<Registry> OpenHive(const std::string& folder, std::unique_ptr<RegistryKeys> keys);
std::unique_ptr<RegistryKeys> ReadWineRegistry(const std::string& file);
std::unique_ptr<Registry> OpenWinePrefix(const std::string& folder,
                                         std::unique_ptr<RegistryKeys> keys);
std::unique_ptr<Registry> OpenDbxFolder(const std::string& folder);
// The registry of the user who runs the program, where the system has one; nullptr elsewhere.
std::unique_ptr<Registry> OpenOwnRegistry();

// Folders in or below folder that hold mail stores, nearest first. The search is bounded in depth
// and in the number of folders looked at.
struct DbxStore {
  std::string folder;
  bool hasFolderList = false;
};
std::vector<DbxStore> FindDbxStores(const std::string& folder);

}  // namespace tarnwick::platform
