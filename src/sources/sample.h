// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a mailbox tells of itself without being read as a whole: for a look over what there is.
#pragma once

#include <cstdint>
#include <string>

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

// Reports nothing. Of a large file only the beginning and the end are read.
MailboxSample SampleMailbox(const Mailbox& mailbox);

}  // namespace tarnwick::sources
