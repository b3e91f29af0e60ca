// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the program and tarnwick-reader say to each other of a store of Outlook's, beside the frames
// of intake/reader_link.h: each request names one thing in the store, each answer is what the
// reader has made of it. Of a letter the Internet message goes ahead of the answer, piece by piece.
//
// What may cost the reader its life is taken in steps: an attachment, a message within the message,
// the search for a charset. Where it is asked to, it tells the number of each before it begins, as
// progress below 0; so the program knows over which step a reader was lost, and can ask the next
// one to leave it out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "intake/letter_record.h"
#include "intake/reading_rules.h"
#include "outlook/item_reading.h"
#include "outlook/reader/store_file.h"

namespace tarnwick::outlook {

namespace reader {
template <typename Archive>
void Pass(Archive& archive, ItemPlace& p) {
  archive(p.folder, p.index, p.node);
}
template <typename Archive>
void Pass(Archive& archive, FoundItem& f) {
  archive(f.node, f.folder, intake::OneOf{f.how, static_cast<size_t>(LostHow::kAlone) + 1}, f.data);
}
}  // namespace reader

struct PstRequest {
  enum class Kind : uint8_t { kStore, kFolder, kFacts, kLetter, kFound };
  Kind kind = Kind::kStore;
  reader::ItemPlace place = {};  // of a folder: its node
  intake::ReadingRules rules = {};
  bool tellsSteps = false;
  std::vector<uint32_t> leaveOut = {};  // steps
};
template <typename Archive>
void Pass(Archive& archive, PstRequest& r) {
  archive(intake::OneOf{r.kind, static_cast<size_t>(PstRequest::Kind::kFound) + 1}, r.place,
          r.rules, r.tellsSteps, r.leaveOut);
}

// Answers; fault: why there is none.
struct StoreSays {
  std::string fault = {};
  std::string key;  // 16 bytes, or none
  std::string name;
  bool hasPassword = false;
  // Nodes of folders, 0 where the store names none.
  uint32_t root = 0;
  uint32_t top = 0;  // of all that Outlook shows
  uint32_t sentMail = 0;
  uint32_t outbox = 0;
  uint32_t deletedItems = 0;
  std::string damage;
};
template <typename Archive>
void Pass(Archive& archive, StoreSays& s) {
  archive(s.fault, intake::RawBytes{s.key}, s.name, s.hasPassword, s.root, s.top, s.sentMail,
          s.outbox, s.deletedItems, s.damage);
}

struct FolderSays {
  std::string fault = {};
  std::string name;
  std::string container;  // the class of what it is made for: "IPF.Note"
  std::vector<uint32_t> folders;
  std::vector<uint32_t> items;
  std::vector<uint32_t> otherItems;  // those of them that are no mail
  std::string damage;
};
template <typename Archive>
void Pass(Archive& archive, FolderSays& f) {
  archive(f.fault, f.name, f.container, f.folders, f.items, f.otherItems, f.damage);
}

struct FactsSaid {
  std::string fault = {};
  ItemFacts facts;
};
template <typename Archive>
void Pass(Archive& archive, FactsSaid& f) {
  archive(f.fault, f.facts);
}

struct FoundSaid {
  std::string fault = {};
  std::vector<reader::FoundItem> items;
};
template <typename Archive>
void Pass(Archive& archive, FoundSaid& f) {
  archive(f.fault, f.items);
}

}  // namespace tarnwick::outlook
