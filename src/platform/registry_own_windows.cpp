// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// HKEY_CURRENT_USER of the user who runs the program, from the system.
#include <windows.h>

#include <algorithm>

#include "platform/environment.h"
#include "platform/files.h"
#include "platform/registry_tree.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

class Key {
 public:
  explicit Key(std::string_view path) {
    std::string joined;
    for (const std::string& name : SplitWindowsPath(path))
      joined += (joined.empty() ? "" : "\\") + name;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, Wide(joined).c_str(), 0, KEY_READ, &key_) !=
        ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  HKEY Get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

class OwnRegistry : public Registry {
 public:
  std::optional<std::vector<std::string>> SubKeys(std::string_view path) override {
    Key key(path);
    if (key.Get() == nullptr) return std::nullopt;
    constexpr DWORD kLongestName = 256;
    wchar_t name[kLongestName];
    std::vector<std::string> names;
    for (DWORD i = 0;; ++i) {
      DWORD size = kLongestName;
      if (RegEnumKeyExW(key.Get(), i, name, &size, nullptr, nullptr, nullptr, nullptr) !=
          ERROR_SUCCESS) {
        return names;
      }
      names.push_back(Utf8(std::wstring_view(name, size)));
    }
  }

  std::optional<RegistryValue> Value(std::string_view path, std::string_view name,
                                     bool* keyExists) override {
    Key key(path);
    if (keyExists != nullptr) *keyExists = key.Get() != nullptr;
    if (key.Get() == nullptr) return std::nullopt;
    std::wstring wideName = Wide(name);
    std::string bytes;
    DWORD type = 0;
    // Another program may write a longer value between two looks.
    for (LSTATUS status = ERROR_MORE_DATA; status == ERROR_MORE_DATA;) {
      DWORD size = 0;
      status = RegQueryValueExW(key.Get(), wideName.c_str(), nullptr, &type, nullptr, &size);
      if (status != ERROR_SUCCESS) return std::nullopt;
      bytes.resize(size);
      status = RegQueryValueExW(key.Get(), wideName.c_str(), nullptr, &type,
                                reinterpret_cast<BYTE*>(bytes.data()), &size);
      if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return std::nullopt;
      bytes.resize(std::min<size_t>(size, bytes.size()));
    }
    return DecodeValue(type, std::move(bytes));
  }

  std::string Expand(std::string_view text) override {
    std::wstring wide = Wide(text);
    DWORD size = ExpandEnvironmentStringsW(wide.c_str(), nullptr, 0);
    std::wstring expanded(size, L'\0');
    size = ExpandEnvironmentStringsW(wide.c_str(), expanded.data(), size);
    if (size == 0 || size > expanded.size()) return std::string(text);
    expanded.resize(size - 1);
    return Utf8(expanded);
  }

  // Its paths are those of this machine.
  std::string MapPath(std::string_view windowsPath) override { return Expand(windowsPath); }
};

}  // namespace

std::string OwnProfileFolder() {
  return WithSeparator(HomeFolder());
}

std::unique_ptr<Registry> OpenOwnRegistry() {
  return std::make_unique<OwnRegistry>();
}

}  // namespace tarnwick::platform
