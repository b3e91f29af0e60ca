// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives everything that an Outlook item's values pass through: texts, packed and plain rich text,
// transport headers, the letter and the Internet message made of it. The input is a list of values,
// each a property's place in a table, a length and its bytes. Whatever they hold, the message stays
// within its budget.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "outlook/mime_message.h"
#include "outlook/raw_row.h"
#include "outlook/rtf.h"
#include "platform/error.h"
#include "samples/memory_outlook.h"

namespace {

using tarnwick::outlook::Prop;
using tarnwick::outlook::RawRow;

constexpr Prop kProperties[] = {
    Prop::kSubject,          Prop::kSenderName,     Prop::kSenderAddress,
    Prop::kTransportHeaders, Prop::kBody,           Prop::kHtml,
    Prop::kRtfCompressed,    Prop::kMessageId,      Prop::kInternetCodepage,
    Prop::kMessageCodepage,  Prop::kMessageLocale,  Prop::kClientSubmitTime,
    Prop::kDisplayName,      Prop::kAddress,        Prop::kRecipientType,
    Prop::kAttachLongName,   Prop::kAttachMimeType, Prop::kAttachContentId};
constexpr uint16_t kTypes[] = {0x1F, 0x1E, 0x102, 0x03, 0x40, 0x0B};

RawRow ReadRow(std::string_view data) {
  RawRow row;
  while (data.size() >= 4) {
    auto at = [&](size_t i) { return static_cast<unsigned char>(data[i]); };
    size_t length = at(2) | static_cast<size_t>(at(3)) << 8;
    Prop property = kProperties[at(0) % std::size(kProperties)];
    data.remove_prefix(4);
    row.push_back({static_cast<uint16_t>(property),
                   kTypes[static_cast<unsigned char>(data.data()[-3]) % std::size(kTypes)],
                   std::string(data.substr(0, length))});
    data.remove_prefix(std::min(length, data.size()));
  }
  return row;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace outlook = tarnwick::outlook;
  std::string_view input(reinterpret_cast<const char*>(data), size);
  outlook::ReadRtf(input);
  if (auto rtf = outlook::UnpackRtf(input)) outlook::ReadRtf(*rtf);

  RawRow row = ReadRow(input);
  tarnwick::samples::MemoryItem item;
  item.properties = outlook::Decode(row, outlook::CharsetOfMessage(row));
  item.recipients = {item.properties, item.properties};
  item.Text(Prop::kMessageClass, size % 2 == 0 ? "IPM.Note" : "IPM.Note.SMIME.MultipartSigned");
  item.attachments = {item.properties};
  item.attachments[0].SetNumber(Prop::kAttachMethod, outlook::AttachMethod::kByValue);
  item.attachmentBytes[0] = std::string(input);
  tarnwick::samples::MemoryItem outer = item;
  outer.Text(Prop::kMessageClass, "IPM.Note");
  outer.Embed("inner", item);

  tarnwick::samples::MemoryOutlook::ItemView view(outer);
  uint64_t budget = 16 * size + 20000;
  uint64_t written = 0;
  try {
    outlook::WriteMime(view, outlook::ReadLetter(view), budget, [&](std::string_view bytes) {
      written += bytes.size();
      if (written > 16 * size + 20000) std::abort();
    });
  } catch (const tarnwick::Error&) {
    // Beyond its budget.
  }
  return 0;
}
