// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the reader of Apple's letter files and what the names of Maildir files and folders tell.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "platform/utf8.h"
#include "sources/letter_files.h"
#include "sources/mailbox_names.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace sources = tarnwick::sources;
  static const tarnwick::testing::TempFolder folder;
  static const std::string file = folder.File("1.emlx");
  std::string bytes(reinterpret_cast<const char*>(data), size);
  tarnwick::platform::WriteFile(file, bytes);
  sources::LetterFiles reader({file});
  size_t given = 0;
  for (sources::LetterEntry letter; reader.Next(letter); letter = {}) {
    if (letter.fault.empty()) reader.Copy([&](std::string_view piece) { given += piece.size(); });
  }
  if (given > size) std::abort();
  sources::StateOfMaildirName(bytes);
  sources::YearOfMaildirName(bytes);
  sources::NameOfHolder(bytes);
  if (sources::PartsOf(bytes).size() > size + 1) std::abort();
  return 0;
}
