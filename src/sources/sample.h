// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a mailbox tells of itself without being read as a whole: for a look over what there is, and
// to announce a load. Names and sizes are looked at here, and what stands in files by
// tarnwick-reader (intake/text_reader.h), or here where there is none.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "intake/letter_service.h"
#include "intake/text_reader.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

struct MailboxSample {
  int64_t letters = 0;  // deleted ones included
  bool isEstimate = false;
  int firstYear = 0;  // of some of its letters, the first and the last among them; 0: not known
  int lastYear = 0;
  uint64_t bytes = 0;
  bool isDamaged = false;
  std::string key;  // of a letter, as it is stored; "" where none can be read
};

class MailboxSampler {
 public:
  // Reports nothing. Of a large file only the beginning and the end are read, and its letters are
  // counted in its first megabytes.
  MailboxSample Sample(const Mailbox& mailbox);
  // How many letters it holds, deleted ones included. Throws Error.
  int64_t Count(const Mailbox& mailbox);

 private:
  intake::SingleReader reader_{intake::Conversation::kMailboxSample, size_t{8} << 20};
};

// The reader's end.
std::unique_ptr<intake::LetterService> MakeMailboxSampleService(const intake::ProgressTeller& tell);

}  // namespace tarnwick::sources
