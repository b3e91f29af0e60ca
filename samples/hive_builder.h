// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Builds a registry hive (the format of NTUSER.DAT) from nothing: a base block and one bin of
// cells. Paths have "\" between names. Names outside Latin-1 are written as UTF-16.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tarnwick::samples {

class HiveBuilder {
 public:
  void AddKey(const std::string& path);
  void AddText(const std::string& path, const std::string& name, const std::string& text,
               bool expandable = false);
  void AddNumber(const std::string& path, const std::string& name, uint32_t number);
  void AddRaw(const std::string& path, const std::string& name, uint32_t type,
              const std::string& bytes);

  std::string Build() const;

 private:
  struct Value {
    std::string name;
    uint32_t type = 0;
    std::string bytes;
  };
  struct Key {
    std::map<std::string, Key> keys;
    std::vector<Value> values;
  };
  class Writer;
  Key& KeyAt(const std::string& path);
  Key root_;
};

// UTF-16LE bytes of a UTF-8 text.
std::string ToUtf16(const std::string& text);

}  // namespace tarnwick::samples
