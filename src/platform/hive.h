// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The keys and values of a registry hive (the file NTUSER.DAT), read only. A hive is a base block
// of 4096 bytes and bins of cells; a cell is a size and then a key ("nk"), a list of keys ("lf",
// "lh", "li", and "ri" for a list of lists), a value ("vk"), a list of values or bytes, longer ones
// in several cells ("db"). Cells name each other by their place behind the base block. The format
// is known from published descriptions, among them M. Suhanov's of the Windows registry file.
//
// Every place, size and count is checked. A part that is damaged is left out; only a file that is
// no hive, or whose root is gone, can't be opened. No call takes longer than the file is long.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::platform {

class Hive {
 public:
  // Reads the file whole. Throws Error 75 when it is no hive, or what opening a file throws.
  explicit Hive(const std::string& file);

  struct Value {
    uint32_t type = 0;  // as Windows numbers them: 1 REG_SZ, 2 REG_EXPAND_SZ, 4 REG_DWORD
    std::string bytes;
  };

  // The key at a path of names, found without regard to the case of ASCII letters.
  using Key = uint32_t;
  std::optional<Key> Find(const std::vector<std::string>& path) const;
  // Names are UTF-8, in the order of the hive.
  std::vector<std::string> SubKeys(Key key) const;
  std::optional<Value> FindValue(Key key, std::string_view name) const;

 private:
  // The bytes of the used cell at a place; empty for a place that is none.
  std::string_view CellAt(uint32_t place) const;
  std::string_view KeyCellAt(uint32_t place) const;
  std::vector<Key> Children(Key key) const;
  void AddListed(uint32_t list, bool mayHoldLists, size_t most, std::vector<Key>& keys) const;
  std::string NameOf(std::string_view key) const;
  std::string BytesOf(std::string_view value) const;

  std::string bytes_;
  Key root_ = 0;
};

}  // namespace tarnwick::platform
