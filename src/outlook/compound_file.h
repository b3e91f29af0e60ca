// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A compound file ([MS-CFB]): storages and streams in one file, as a file system in small has them.
// Sectors are chained through tables; every number is checked, and what is read altogether is
// bounded by the file's size.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::outlook {

class CompoundFile {
 public:
  struct Entry {
    std::string name;  // what of it is ASCII; other characters are "?"
    uint32_t index = 0;
    bool isStorage = false;
    uint64_t size = 0;  // of a stream
  };
  static constexpr uint32_t kRoot = 0;

  // Throws Error 75 for bytes that are none.
  explicit CompoundFile(std::string bytes);

  // What a storage holds, by its index, in the order of the file's tree.
  std::vector<Entry> Children(uint32_t storage);
  // A stream's bytes. Throws Error 75 where its chain is damaged.
  std::string Read(const Entry& stream);

 private:
  struct Node {
    Entry entry;
    uint32_t left = 0;
    uint32_t right = 0;
    uint32_t child = 0;
    uint32_t start = 0;
  };
  std::string_view Sector(uint32_t number) const;
  std::vector<uint32_t> TableSectors() const;
  std::string ReadChain(uint32_t start, uint64_t size);
  std::string ReadMiniChain(uint32_t start, uint64_t size) const;
  void ReadDirectory(uint32_t start);
  void Spend(uint64_t bytes);

  std::string bytes_;
  unsigned sectorShift_ = 9;
  uint32_t sectors_ = 0;
  uint64_t budget_ = 0;             // that may still be read
  std::vector<uint32_t> next_;      // behind a sector
  std::vector<uint32_t> miniNext_;  // behind a small sector of the root's stream
  std::string miniBytes_;
  std::vector<Node> nodes_;
};

}  // namespace tarnwick::outlook
