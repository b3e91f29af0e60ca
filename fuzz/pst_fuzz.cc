// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the walk of an Outlook store, reader process and all. The input is a list of patches to a
// sound store, six bytes each: place (24 bits), width and two value bytes; an odd first byte takes
// the older format. Whatever the store says, the walk ends, and its texts are in UTF-8.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/run_state.h"
#include "intake/reader_link.h"
#include "outlook/pst_provider.h"
#include "outlook/type_name.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "samples/pst_builder.h"
#include "support/temp_folder.h"

namespace {

namespace outlook = tarnwick::outlook;
using outlook::Prop;

uint16_t Tag(Prop property) {
  return static_cast<uint16_t>(property);
}

std::string SoundStore(outlook::reader::Variant variant) {
  tarnwick::samples::PstBuilder store(variant);
  uint32_t inbox = store.AddFolder(tarnwick::samples::PstBuilder::kTop, "Inbox");
  uint32_t deep = store.AddFolder(inbox, "Deep");
  for (int i = 0; i < 4; ++i) {
    tarnwick::samples::PstMessage mail;
    mail.properties.texts[Tag(Prop::kMessageClass)] = "IPM.Note";
    mail.properties.texts[Tag(Prop::kSubject)] = "letter " + std::to_string(i);
    mail.properties.texts[Tag(Prop::kBody)] = std::string(i == 3 ? 20'000 : 20, 'x');
    mail.properties.times[Tag(Prop::kClientSubmitTime)] = 126'598'072'200'000'000;
    tarnwick::samples::PstProperties bob;
    bob.numbers[Tag(Prop::kRecipientType)] = 1;
    bob.texts[Tag(Prop::kDisplayName)] = "Bob";
    mail.recipients = {bob, bob};
    tarnwick::samples::PstAttachment file;
    file.properties.texts[Tag(Prop::kAttachLongName)] = "table.xls";
    file.data = std::string(i == 2 ? 12'000 : 100, 'y');
    mail.attachments = {file};
    store.AddMessage(i % 2 == 0 ? inbox : deep, mail);
  }
  return store.Build();
}

std::string Patched(const uint8_t* data, size_t size) {
  static const std::string sound[] = {SoundStore(outlook::reader::Variant::kUnicode),
                                      SoundStore(outlook::reader::Variant::kAnsi)};
  std::string bytes = sound[data[0] % 2];
  size_t begin = bytes.find_first_not_of('\0', 600);
  for (size_t i = 1; i + 6 <= size && i < 61; i += 6) {
    size_t place =
        data[i] | static_cast<size_t>(data[i + 1]) << 8 | static_cast<size_t>(data[i + 2]) << 16;
    place = data[i + 3] % 8 == 7 ? place % begin : begin + place % (bytes.size() - begin);
    for (size_t k = 0; k < 1U + data[i + 3] % 4 && place + k < bytes.size(); ++k) {
      bytes[place + k] = static_cast<char>(data[i + 4 + k % 2]);
    }
  }
  if (size % 6 == 5) bytes.resize(begin + (bytes.size() - begin) * data[size - 1] / 256);
  return bytes;
}

void Demand(bool holds) {
  if (!holds) std::abort();
}

struct Walk {
  uint64_t budget = 0;
  int left = 300;  // requests

  void Text(const std::string& text) { Demand(tarnwick::platform::IsValidUtf8(text)); }

  void Item(outlook::Item& item) {
    tarnwick::intake::ScratchLetter output;
    outlook::ItemReading reading = item.Read(budget, tarnwick::intake::kComplete, output);
    if (reading.type != outlook::kMailType) return;
    const tarnwick::intake::MailMessage& message = reading.prepared.message;
    for (const std::string* text : {&message.Subject, &message.Body, &message.HTMLBody}) {
      Text(*text);
    }
    for (const tarnwick::intake::AddressPair& to : message.To) Text(to.Name);
    Demand(!reading.damage.empty() || output.Held().has_value());
  }

  void Folder(outlook::Folder& folder) {
    Text(folder.Name());
    for (int64_t i = 0; i < folder.ItemCount() && left-- > 0; ++i) {
      try {
        Item(*folder.ItemAt(i));
      } catch (const tarnwick::Error&) {
        // It costs the item.
      }
    }
    if (left-- <= 0) return;
    for (auto& sub : folder.Folders()) {
      try {
        Folder(*sub);
      } catch (const tarnwick::Error&) {
      }
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 7) return 0;
  static const tarnwick::testing::TempFolder folder;
  tarnwick::platform::WriteFile(folder.File("store.pst"), Patched(data, size));
  tarnwick::core::State().TempMessageFile = folder.File("letter");
  tarnwick::intake::SetLinkLimits({5000, 3000, 6000, 4});
  outlook::PstNamespace space({folder.File("store.pst")});
  try {
    for (auto& store : space.Stores()) {
      Walk walk;
      walk.budget = store->OutputBudget();
      walk.Text(store->DisplayName());
      walk.Folder(*store->RootFolder());
    }
  } catch (const tarnwick::Error&) {
    // Refused as a whole.
  }
  return 0;
}
