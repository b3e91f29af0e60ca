// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Drives the reader of mail stores. Random bytes would never pass the first self pointer, so the
// input is a list of patches to a sound message file and a sound folder list, six bytes each: which
// object, which word of it, and the new word, by value or as the offset of another object.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/run_state.h"
#include "oe/announced.h"
#include "oe/dbx_read.h"
#include "oe/lost_mail.h"
#include "oe/state.h"
#include "platform/files.h"
#include "samples/dbx_builder.h"
#include "support/temp_folder.h"

namespace {

struct Base {
  std::string bytes;
  std::vector<uint32_t> objects;
};

Base MessageFile() {
  tarnwick::samples::MessageStoreBuilder store;
  Base base;
  for (int i = 0; i < 8; ++i) {
    tarnwick::samples::IndexedMessage message;
    message.subject = "letter " + std::to_string(i);
    message.text = "From: ann@example.org\r\nSubject: letter\r\n\r\nHello.\r\n";
    message.blockSize = 24;
    message.flagsDirect = i % 2 == 0;
    tarnwick::samples::MessagePlaces places = store.AddMessage(message);
    base.objects.push_back(places.info);
    base.objects.push_back(places.date);
    base.objects.insert(base.objects.end(), places.blocks.begin(), places.blocks.end());
  }
  uint32_t nodes = store.Image().Size();
  store.Finish(2, true);
  for (uint32_t place = nodes; place < store.Image().Size(); place += 4) {
    if (store.Image().Get32(place) == place) base.objects.push_back(place);
  }
  base.objects.insert(base.objects.end(), {0xC4, 0xE4});
  base.bytes = store.Bytes();
  return base;
}

Base FolderList() {
  tarnwick::samples::FolderListBuilder list;
  for (uint8_t i = 1; i < 6; ++i) {
    list.Add({i, static_cast<uint8_t>(i - 1), "folder", "folder.dbx"},
             static_cast<tarnwick::samples::FolderForm>(i - 1));
  }
  list.Finish();
  Base base{list.Bytes(), {0x30}};
  for (uint32_t place = 0x24BC; place < list.Image().Size(); place += 4) {
    if (list.Image().Get32(place) == place) base.objects.push_back(place);
  }
  return base;
}

std::string Patched(const Base& base, const uint8_t* data, size_t size) {
  std::string bytes = base.bytes;
  for (size_t i = 0; i + 6 <= size; i += 6) {
    size_t place = base.objects[data[i] % base.objects.size()] + data[i + 1] % 64U;
    uint32_t word = 0;
    if (data[i + 2] % 4 == 0) {
      word = base.objects[data[i + 3] % base.objects.size()];
    } else {
      for (size_t k = 0; k < 4; ++k) word |= static_cast<uint32_t>(data[i + 2 + k]) << 8 * k;
    }
    for (size_t k = 0; k < 4 && place + k < bytes.size(); ++k) {
      bytes[place + k] = static_cast<char>(word >> 8 * k);
    }
  }
  if (size % 6 == 5) bytes.resize(bytes.size() * data[size - 1] / 256);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  namespace oe = tarnwick::oe;
  static const Base messageFile = MessageFile();
  static const Base folderList = FolderList();
  static const tarnwick::testing::TempFolder folder;
  static const std::string store = folder.File("folder.dbx");
  static const std::string list = folder.File("list.dbx");

  oe::ResetState();
  tarnwick::core::ResetState();
  tarnwick::core::State().LogEvents = false;
  tarnwick::core::State().TempMessageFile = folder.File("message.msg");
  tarnwick::platform::WriteFile(store, Patched(messageFile, data, size));
  tarnwick::platform::WriteFile(list, Patched(folderList, data, size));
  oe::IsFolderTreeFile(store);
  oe::AnnouncedMessages(store);
  oe::State().FolderFiles = {{list, "ann", folder.Path()}};
  for (const auto& rules : {tarnwick::intake::kDesigned, tarnwick::intake::kComplete}) {
    oe::ReadFolderTree(0, rules);
    oe::ReadMessageTree(store, oe::kMeAddress, {"folder", "", "ann"}, rules);
  }
  for (bool isCopy : {false, true}) {
    auto goOn = [](int) { return true; };
    for (oe::FoundObjects& piece : oe::FindObjects(store, goOn)) {
      oe::LostMail mail(store, std::move(piece), isCopy, goOn);
      while (mail.Next()) {
      }
      mail.CountRest();
    }
  }
  return 0;
}
