// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives encoded words, transfer encodings and charsets. The first line of the input is the name of
// a charset or encoding, the rest the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "intake/content_type.h"
#include "intake/encoded_word.h"
#include "intake/transfer_decoding.h"
#include "platform/charset.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace tarnwick;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  std::string_view name = input.substr(0, input.find('\n'));
  std::string_view text = input.substr(name.size() < size ? name.size() + 1 : size);

  intake::MixedText mixed;
  intake::Decode(text, mixed);
  if (!platform::IsValidUtf8(mixed.Finish(name))) std::abort();
  if (!platform::IsValidUtf8(platform::BytesToUtf8(text, name))) std::abort();
  std::string folded = platform::FoldCase(text);
  if (platform::IsValidUtf8(text) && platform::CountChars(folded) != platform::CountChars(text)) {
    std::abort();
  }

  intake::DecodeBase64(text);
  intake::BodyDecoder decoder(name);
  for (std::string_view rest = text; !rest.empty();) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    decoder.Line(line);
    rest.remove_prefix(line.size() < rest.size() ? line.size() + 1 : rest.size());
  }
  decoder.Take();

  intake::PartDescription part;
  intake::ReadContentHeader(text, part);
  if (!platform::IsValidUtf8(part.fileName.Finish(part.charset))) std::abort();
  return 0;
}
