// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the reader of Outlook Express 4: the input is cut in two, the letters and their index.
// With a first byte of 0 they are patches to sound files, five bytes each: place and new word.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/error.h"
#include "platform/files.h"
#include "samples/mailbox_builder.h"
#include "sources/outlook_express4.h"
#include "support/temp_folder.h"

namespace {

std::string Patched(std::string bytes, std::string_view patches) {
  for (size_t i = 0; i + 5 <= patches.size(); i += 5) {
    bytes.replace(size_t{4} * static_cast<unsigned char>(patches[i]) % bytes.size(), 4,
                  patches.substr(i + 1, 4));
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace sources = tarnwick::sources;
  static const tarnwick::testing::TempFolder folder;
  static const std::string box = folder.File("Inbox.mbx");
  static const tarnwick::samples::OutlookExpress4Builder sound = [] {
    tarnwick::samples::OutlookExpress4Builder store;
    for (uint32_t i = 0; i < 6; ++i) store.Add("Subject: a letter\r\n\r\nHello.\r\n", i % 4);
    return store;
  }();
  std::string_view input(reinterpret_cast<const char*>(data), size);
  bool isPatch = size > 0 && data[0] == 0;
  if (isPatch) input.remove_prefix(1);
  std::string_view letters = input.substr(0, input.size() / 2);
  std::string_view index = input.substr(input.size() / 2);
  tarnwick::platform::WriteFile(
      box, isPatch ? Patched(sound.Letters(), letters) : "JMF6" + std::string(letters));
  tarnwick::platform::WriteFile(folder.File("Inbox.idx"), isPatch ? Patched(sound.Index(), index)
                                                                  : "JMF9" + std::string(index));
  if (sources::CountOutlookExpress4(box) < 0) std::abort();
  uint64_t total = tarnwick::platform::FileSize(box);
  try {
    sources::OutlookExpress4Reader reader(box, sources::IndexBeside(box));
    uint64_t given = 0;
    for (sources::LetterEntry letter; reader.Next(letter); letter = {}) {
      reader.Copy([&](std::string_view piece) { given += piece.size(); });
    }
    if (given > total) std::abort();
  } catch (const tarnwick::Error&) {
    // The mark was patched away.
  }
  return 0;
}
