// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Kinds of mail that mean ill, for tests and benches. Those that work by their size hold about size
// bytes.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tarnwick::testing {

struct HostileKind {
  const char* name;
  std::string raw;
  // Columns of the stored message, or "body", "body length", "to" (three at most), "to count",
  // "cc count", "files", and what they hold.
  std::vector<std::pair<std::string, std::string>> expected = {};
  bool isRefused = false;
  bool isSized = false;  // grows with size
};

std::vector<HostileKind> HostileKinds(size_t size);

}  // namespace tarnwick::testing
