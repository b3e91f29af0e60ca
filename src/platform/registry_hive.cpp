// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HKEY_CURRENT_USER from an NTUSER.DAT. The hive is the file of an unknown disk: it reaches the
// library only after its size and its mark have been looked at, names that the library can't read
// are passed over, and every other failure of it is Error 75.
#include <hivex.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/registry_tree.h"

namespace tarnwick::platform {

namespace {

constexpr uint64_t kMinHive = 4096 + 32;     // header page and the head of one bin
constexpr uint64_t kMaxHive = 512ULL << 20;  // real ones have a few megabytes
constexpr std::string_view kHiveMark = "regf";

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, FreeDeleter>;

[[noreturn]] void ThrowDamaged(const std::string& file) {
  throw Error(ErrorNumber::kPathAccess, "The registry file is damaged: " + file);
}

class HiveRegistry : public Registry {
 public:
  HiveRegistry(std::string folder, std::string file)
      : folder_(std::move(folder)), file_(std::move(file)) {
    CheckFile();
    hive_ = hivex_open(file_.c_str(), 0);
    if (hive_ == nullptr) ThrowDamaged(file_);
  }
  ~HiveRegistry() override { hivex_close(hive_); }
  HiveRegistry(const HiveRegistry&) = delete;
  HiveRegistry& operator=(const HiveRegistry&) = delete;

  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override {
    hive_node_h node = FindKey(path);
    if (node == 0) return std::nullopt;
    Owned<hive_node_h> children(hivex_node_children(hive_, node));
    if (!children) ThrowDamaged(file_);
    std::vector<std::string> names;
    for (hive_node_h* child = children.get(); *child != 0; ++child) {
      Owned<char> name(hivex_node_name(hive_, *child));
      if (name) names.push_back(EnsureUtf8(name.get()));
    }
    return names;
  }

  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists) override {
    hive_node_h node = FindKey(path);
    if (keyExists != nullptr) *keyExists = node != 0;
    if (node == 0) return std::nullopt;
    Owned<hive_value_h> values(hivex_node_values(hive_, node));
    if (!values) ThrowDamaged(file_);
    std::string wanted = AsciiLower(name);
    for (hive_value_h* value = values.get(); *value != 0; ++value) {
      Owned<char> key(hivex_value_key(hive_, *value));
      if (key && AsciiLower(key.get()) == wanted) return Read(*value);
    }
    return std::nullopt;
  }

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
    return FindTail(folder_, expanded).value_or(TurnSeparators(expanded));
  }

 private:
  void CheckFile() {
    InputFile file(file_);
    std::array<char, 4> mark{};
    if (file.Size() < kMinHive || file.Size() > kMaxHive ||
        file.ReadAt(0, mark.data(), mark.size()) != mark.size() ||
        std::string_view(mark.data(), mark.size()) != kHiveMark) {
      ThrowDamaged(file_);
    }
  }

  // 0 when there is no such key.
  hive_node_h FindKey(std::string_view path) {
    hive_node_h node = hivex_root(hive_);
    if (node == 0) ThrowDamaged(file_);
    for (const std::string& name : SplitWindowsPath(path)) {
      errno = 0;
      node = hivex_node_get_child(hive_, node, name.c_str());
      if (node == 0 && errno != 0) ThrowDamaged(file_);
      if (node == 0) return 0;
    }
    return node;
  }

  RegistryValue Read(hive_value_h handle) {
    hive_type kind = hive_t_REG_NONE;
    size_t length = 0;
    Owned<char> bytes(hivex_value_value(hive_, handle, &kind, &length));
    if (!bytes) ThrowDamaged(file_);
    // A damaged hive's type need not be one of the enumeration.
    uint32_t type = 0;
    static_assert(sizeof type == sizeof kind);
    std::memcpy(&type, &kind, sizeof type);
    std::string_view data(bytes.get(), length);
    RegistryValue value;
    switch (type) {
      case hive_t_REG_SZ:
      case hive_t_REG_EXPAND_SZ:
        value.type = type == hive_t_REG_SZ ? RegistryValue::Type::kText
                                           : RegistryValue::Type::kExpandableText;
        value.text = Utf16ToUtf8(data);
        break;
      case hive_t_REG_DWORD:
        value.type = RegistryValue::Type::kNumber;
        for (size_t i = 0; i < 4 && i < data.size(); ++i) {
          value.number |= static_cast<uint32_t>(static_cast<unsigned char>(data[i])) << (8 * i);
        }
        break;
      default:
        value.type =
            type == hive_t_REG_BINARY ? RegistryValue::Type::kBinary : RegistryValue::Type::kOther;
        value.text = std::string(data);
        break;
    }
    return value;
  }

  // What Windows would have in the owner's environment. The hive holds only what differs from the
  // rule, so the rule for the owner's folder is spelled out.
  std::optional<std::string> Variable(const std::string& name) {
    for (const char* key : {"Volatile Environment", "Environment"}) {
      std::optional<RegistryValue> value = Value(key, name, nullptr);
      if (value && (value->type == RegistryValue::Type::kText ||
                    value->type == RegistryValue::Type::kExpandableText)) {
        return value->text;
      }
    }
    std::string owner = FileNameOf(folder_.substr(0, folder_.size() - 1));
    return OwnerVariable(name, owner, "\\Documents and Settings\\" + owner);
  }

  // The root of the old disk when the profile stands where Windows had it: two or three folders
  // above, beside the folder of Windows itself.
  std::optional<std::string> DiskRoot() {
    std::string root = folder_;
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

  std::string folder_;
  std::string file_;
  hive_h* hive_ = nullptr;
};

}  // namespace

std::unique_ptr<Registry> OpenHive(const std::string& folder, const std::string& hiveFile) {
  return std::make_unique<HiveRegistry>(folder, hiveFile);
}

}  // namespace tarnwick::platform
