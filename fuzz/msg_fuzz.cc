// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the reader of Outlook's message files. The input is a list of patches to a sound one, six
// bytes each: the place of a word, in units of four bytes, and the new word; what is left over cuts
// the file. Whatever its tables say, it costs no more than its size allows.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/run_state.h"
#include "outlook/letter.h"
#include "outlook/mime_message.h"
#include "outlook/msg_file.h"
#include "platform/error.h"
#include "platform/files.h"
#include "samples/mailbox_builder.h"
#include "support/temp_folder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace outlook = tarnwick::outlook;
  static const tarnwick::testing::TempFolder folder;
  static const std::string file = folder.File("letter.msg");
  static const std::string sound = tarnwick::samples::SampleMsgFile();
  tarnwick::core::State().LogEvents = false;
  std::string bytes = sound;
  for (size_t i = 0; i + 6 <= size; i += 6) {
    size_t place = (data[i] | static_cast<size_t>(data[i + 1]) << 8U) * 4 % (bytes.size() - 4);
    bytes.replace(place, 4, reinterpret_cast<const char*>(data + i + 2), 4);
  }
  if (size % 6 == 5) bytes.resize(bytes.size() * data[size - 1] / 256);
  tarnwick::platform::WriteFile(file, bytes);
  try {
    std::unique_ptr<outlook::PropertyItem> item = outlook::OpenMsgFile(file);
    outlook::Letter letter = outlook::ReadLetter(*item);
    uint64_t budget = uint64_t{1} << 24;
    outlook::WriteMime(*item, letter, budget, [](std::string_view) {});
  } catch (const tarnwick::Error&) {
    // Refused.
  }
  return 0;
}
