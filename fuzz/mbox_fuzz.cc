// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the reader of mbox files: whatever the bytes are, each is in one letter at most, in the
// order of the file, and counting comes to the same number as reading.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/files.h"
#include "sources/letter_key.h"
#include "sources/mbox.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace sources = tarnwick::sources;
  static const tarnwick::testing::TempFolder folder;
  static const std::string file = folder.File("box");
  tarnwick::platform::WriteFile(file, {reinterpret_cast<const char*>(data), size});
  sources::MboxReader reader(file);
  int64_t letters = 0;
  size_t given = 0;
  for (sources::LetterEntry letter; reader.Next(letter); letter = {}) {
    ++letters;
    sources::LetterKey key;
    reader.Copy([&](std::string_view piece) {
      given += piece.size();
      key.Add(piece);
    });
    if (key.Finish().empty()) std::abort();
  }
  if (given > size || sources::CountMbox(file).letters != letters) std::abort();
  return 0;
}
