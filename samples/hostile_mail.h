// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Kinds of malicious mail, for tests and benches. Those that work by their size hold about size
// bytes.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tarnwick::samples {

struct HostileKind {
  std::string name;
  std::string raw;
  // Columns of the stored message, or "body", "body length", "to" (three at most), "to count",
  // "cc count", "files", and what they hold.
  std::vector<std::pair<std::string, std::string>> expected = {};
  bool isRefused = false;
  bool isSized = false;  // grows with size
};

std::vector<HostileKind> HostileKinds(size_t size);

// Letters that say one short word of a grammar (of markup, parts, addresses, dates) again and
// again: what is searched to its end, once for each beginning, shows here. Numbered from 0.
size_t RepeatedWordCount();
HostileKind RepeatedWord(size_t number, size_t size);

}  // namespace tarnwick::samples
