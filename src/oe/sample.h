// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a message file tells of itself without being read: for a look over what there is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnwick::oe {

struct StoreSample {
  int64_t messages = 0;  // that it says it holds
  int firstYear = 0;     // of the first and the last message of its index, in order; 0: not known
  int lastYear = 0;
  bool isDamaged = false;
  std::vector<std::string> keys;  // of those two, as they are stored
};

// REQUIRES: the file bears the mark of a message file (platform/registry.h). Reports nothing.
StoreSample SampleStore(const std::string& file);

}  // namespace tarnwick::oe
