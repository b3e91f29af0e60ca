// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Attachments of a message that may be anything: the list comes to an end, and every entry has a
// name that stays in its folder and as many bytes as it says.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/charset.h"
#include "takeout/attachments.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tarnwick::takeout::MessageAttachments attachments(
      std::string(reinterpret_cast<const char*>(data), size));
  for (size_t i = 0; i < attachments.List().size(); ++i) {
    const tarnwick::takeout::Attachment& attachment = attachments.List()[i];
    bool isFit = !attachment.name.empty() && attachment.name.size() <= 255 &&
                 attachment.name[0] != '.' && attachment.name.find('/') == std::string::npos &&
                 attachment.name.find('\0') == std::string::npos &&
                 tarnwick::platform::IsValidUtf8(attachment.name);
    if (!isFit || attachments.Bytes(i).size() != attachment.size) std::abort();
  }
  return 0;
}
