// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HKEY_CURRENT_USER from an NTUSER.DAT.
#include "platform/files.h"
#include "platform/hive.h"
#include "platform/registry_tree.h"

namespace tarnwick::platform {

namespace {

class HiveKeys : public RegistryKeys {
 public:
  explicit HiveKeys(const std::string& file) : hive_(file) {}

  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override {
    std::optional<Hive::Key> key = hive_.Find(SplitWindowsPath(path));
    if (!key) return std::nullopt;
    return hive_.SubKeys(*key);
  }

  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists) override {
    std::optional<Hive::Key> key = hive_.Find(SplitWindowsPath(path));
    if (keyExists != nullptr) *keyExists = key.has_value();
    if (!key) return std::nullopt;
    std::optional<Hive::Value> value = hive_.FindValue(*key, name);
    if (!value) return std::nullopt;
    return DecodeValue(value->type, std::move(value->bytes));
  }

 private:
  Hive hive_;
};

class HiveRegistry : public FileRegistry {
 public:
  using FileRegistry::FileRegistry;

  std::string Expand(std::string_view text) override {
    return ExpandNames(text, [this](const std::string& name) { return Variable(name); });
  }

  std::string MapPath(std::string_view windowsPath) override {
    std::string expanded = Expand(windowsPath);
    // On a whole disk the path leads from its root; else from the owner's folder on.
    if (auto root = DiskRoot()) {
      std::vector<std::string> names = SplitWindowsPath(
          DriveLetterOf(expanded) != '\0' ? std::string_view(expanded).substr(2) : expanded);
      std::string relative;
      for (const std::string& name : names) relative += name + "/";
      if (auto found = FindIgnoringCase(*root, relative)) {
        bool isFolder = expanded.ends_with('\\') || expanded.ends_with('/');
        return isFolder ? WithSeparator(*found) : *found;
      }
    }
    return FindTail(Folder(), expanded).value_or(TurnSeparators(expanded));
  }

 private:
  // What Windows would have in the owner's environment. The hive holds only what differs from the
  // rule, so the rule for the owner's folder is spelled out.
  std::optional<std::string> Variable(const std::string& name) {
    if (auto stored = StoredVariable(name)) return stored;
    std::string owner = FileNameOf(Folder().substr(0, Folder().size() - 1));
    return OwnerVariable(name, owner, "\\Documents and Settings\\" + owner);
  }

  // The root of the old disk when the profile stands where Windows had it: two or three folders
  // above, beside the folder of Windows itself.
  std::optional<std::string> DiskRoot() {
    std::string root = Folder();
    for (int level = 0; level < 3; ++level) {
      root = FolderOf(root.substr(0, root.size() - 1));
      if (root.size() < 2) return std::nullopt;
      if (level == 0) continue;
      for (const char* name : {"WINDOWS", "WINNT"}) {
        if (FindIgnoringCase(root, name)) return root;
      }
    }
    return std::nullopt;
  }
};

}  // namespace

std::unique_ptr<RegistryKeys> ReadHive(const std::string& file) {
  return std::make_unique<HiveKeys>(file);
}

std::unique_ptr<Registry> OpenHive(const std::string& folder, std::unique_ptr<RegistryKeys> keys) {
  return std::make_unique<HiveRegistry>(folder, std::move(keys));
}

}  // namespace tarnwick::platform
