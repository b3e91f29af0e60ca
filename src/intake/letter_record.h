// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What of a message travels between the program and the reader (reader_link.h), and what the reader
// has to know to read as the program would.
#pragma once

#include <string>

#include "core/tellings.h"
#include "intake/prepared_message.h"
#include "intake/reading_rules.h"
#include "intake/record_bytes.h"

namespace tarnwick::intake {

template <typename Archive>
void Pass(Archive& archive, core::Telling& t) {
  archive(OneOf{t.kind, core::kTellingKinds}, t.what, RawBytes{t.text}, t.number, t.isBox,
          t.detail);
}

template <typename Archive>
void Pass(Archive& archive, MessageState& s) {
  archive(s.isKnown, s.isRead, s.isAnswered, s.isForwarded, s.isFlagged, s.isDraft, s.isDeleted);
}

template <typename Archive>
void Pass(Archive& archive, StoreFacts& f) {
  archive(f.sent, f.received, f.arrived, f.state);
}

template <typename Archive>
void Pass(Archive& archive, ReadingRules& r) {
  archive(r.everyStore, r.drafts, r.deletedItems, r.outbox, r.everyTreeLevel, r.anyDate,
          r.indexedText, r.lostMail, r.soundDates, r.wholeSubjects, r.quotedCommas, r.bareAddresses,
          r.mostRecipients);
}

template <typename Archive>
void Pass(Archive& archive, AddressPair& pair) {
  archive(pair.Name, pair.Address);
}

// What the reading of its text gives and is stored; the rest is filled in where it is taken in.
template <typename Archive>
void Pass(Archive& archive, MailMessage& m) {
  archive(m.Subject, m.SubjectConverted, m.SentTime, m.ReceivedTime, m.TimeText, m.TimeShift,
          m.MessageKey, m.ToCount, m.To, m.ToConverted, m.FromAddress, m.FromName, m.FromConverted,
          m.CcCount, m.Cc, m.CcConverted, m.Importance, m.State, m.IsMultipart, m.Charset, m.Body,
          m.HTMLBody, m.Encoding, m.HTMLCharset, AtMost{m.AttachCount, kMaxAttachments});
  for (size_t i = 0; i < static_cast<size_t>(m.AttachCount); ++i) archive(m.Attachments[i]);
}

// A message that is packed has fewer pieces than of this size.
inline constexpr uint32_t kLeastPiece = 16 * 1024;

template <typename Archive>
void Pass(Archive& archive, PackedRows& rows) {
  // All of them or none.
  bool hasTexts = !rows.texts.empty();
  archive(hasTexts);
  if (Archive::kReads && hasTexts) {
    rows.texts.clear();
    for (std::string_view column : PackedColumns()) rows.texts.push_back({column, {}});
  }
  for (PackedRows::Text& text : rows.texts) archive(RawBytes{text.packed});
  auto count = static_cast<uint32_t>(rows.pieces.size());
  archive(AtMost{count, kMostHeld / kLeastPiece});
  rows.pieces.resize(count);
  for (std::string& piece : rows.pieces) archive(RawBytes{piece});
  archive(rows.trigrams, RawBytes{rows.thread});
}

template <typename Archive>
void Pass(Archive& archive, PreparedMessage& p) {
  archive(p.message, p.hasSender, p.keySubject, p.keyTime, p.rows, p.tellings, p.fault);
}

// Throws where a message that was prepared elsewhere can't be that of a text, or would do harm.
// held: the text, nothing where it is too long.
void CheckPrepared(const PreparedMessage& prepared, const std::optional<std::string>& held);

// How the program reads: its rules, and what it has found out of the machine and the user.
struct ReadingConditions {
  ReadingRules rules;
  std::string locale;  // for tests: the one set in place of the machine's
  std::optional<DateTime> now;
  int32_t zoneHours = 0;
  std::array<std::string, 12> monthNames;
};
template <typename Archive>
void Pass(Archive& archive, ReadingConditions& c) {
  archive(c.rules, c.locale, c.now, c.zoneHours, c.monthNames);
}
// What the reader is told first.
enum class Conversation : uint8_t {
  kDbx,
  kLostMail,
  kFolderList,
  kMailbox,
  kLetterFiles,
  kText,
  kMsgFile,
  kRegistry,
  kOutlookStore,
  kLostOutlook,
  kStoreSample,
  kMailboxSample
};
inline constexpr size_t kConversations = 12;
struct LetterOpening {
  Conversation conversation = Conversation::kDbx;
  bool isHanded = false;  // a file; messages are sent otherwise
  uint64_t skip = 0;      // messages to pass over
  ReadingConditions conditions;
  std::string store;  // of the conversation
};
template <typename Archive>
void Pass(Archive& archive, LetterOpening& o) {
  archive(OneOf{o.conversation, kConversations}, o.isHanded, o.skip, o.conditions,
          RawBytes{o.store});
}

// Those of this run.
ReadingConditions ConditionsOf(const ReadingRules& rules);
// Makes this process read by them, and has it ask the machine for what it needs for that while it
// still can.
void ReadUnder(const ReadingConditions& conditions);

template <typename Record>
std::string BytesOf(const Record& record) {
  constexpr size_t kUsual = size_t{16} * 1024;
  std::string bytes;
  bytes.reserve(kUsual);
  RecordWriter writer(bytes);
  writer(const_cast<Record&>(record));
  return bytes;
}
// Throws Error 75.
template <typename Record>
Record RecordOf(std::string_view bytes) {
  Record record;
  RecordReader reader(bytes);
  reader(record);
  reader.Finish();
  return record;
}

}  // namespace tarnwick::intake
