// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a message file tells of itself without being read: for a look over what there is. The file
// is looked at by tarnwick-reader (intake/text_reader.h), or here where there is none.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "intake/letter_service.h"
#include "intake/text_reader.h"

namespace tarnwick::oe {

struct StoreSample {
  int64_t messages = 0;  // that it says it holds
  int firstYear = 0;     // of the first and the last message of its index, in order; 0: not known
  int lastYear = 0;
  bool isDamaged = false;
  std::vector<std::string> keys;  // of those two, as they are stored
};

class StoreSampler {
 public:
  // REQUIRES: the file bears the mark of a message file (platform/registry.h). Reports nothing.
  StoreSample Sample(const std::string& file);

 private:
  intake::SingleReader reader_{intake::Conversation::kStoreSample, size_t{8} << 20};
};

// The reader's end.
std::unique_ptr<intake::LetterService> MakeStoreSampleService();

}  // namespace tarnwick::oe
