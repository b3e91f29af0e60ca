// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/prepared_message.h"

#include <algorithm>

#include "core/guard.h"
#include "core/messages.h"
#include "database/ahead.h"
#include "intake/attachment_file.h"
#include "intake/header_block.h"
#include "intake/line_cursor.h"
#include "intake/message_draft.h"
#include "intake/message_fields.h"
#include "intake/mime_body.h"
#include "intake/store_message.h"
#include "intake/thread_ids.h"
#include "intake/written_text.h"

namespace tarnwick::intake {

namespace {

const MessageField& FieldOf(std::string_view column) {
  return *std::ranges::find(kMessageFields, column, &MessageField::column);
}

const std::string& TextOf(const MailMessage& message, std::string_view column) {
  return message.*std::get<std::string MailMessage::*>(FieldOf(column).member);
}

std::string Written(const MailMessage& message, std::string_view column) {
  return WrittenText(FieldOf(column), TextOf(message, column));
}

PackedRows MakeRows(const RawMessage& raw, const MailMessage& message, bool packs) {
  PackedRows rows;
  std::vector<std::string> searched;
  searched.reserve(repository::kSearchedFields.size());
  for (const repository::EmailField& field : repository::kSearchedFields) {
    searched.push_back(Written(message, field.name));
  }
  rows.trigrams = jet::TrigramsAhead(searched);
  RawReader reader(raw);
  rows.thread = StoredThread(ThreadOfHeaders(reader.Read(0, kFileRecordLength)));
  if (!packs) return rows;
  for (std::string_view column : PackedColumns()) {
    rows.texts.push_back({column, jet::PackAhead(Written(message, column))});
  }
  for (uint64_t offset = 0; offset < reader.Size(); offset += kFileRecordLength) {
    rows.pieces.push_back(jet::PackAhead(reader.Read(offset, kFileRecordLength)));
  }
  return rows;
}

}  // namespace

PreparedMessage ReadMessage(const RawMessage& raw, const ReadingRules& rules,
                            const StoreFacts& facts) {
  PreparedMessage prepared;
  MailMessage& message = prepared.message;
  LineCursor cursor(raw);
  MessageDraft draft;
  HeaderBlock headers(cursor, draft, message, rules);
  headers.Read(facts);
  if (message.IsMultipart != 0) {
    TakeMultipartBody(cursor, draft);
  } else {
    obxTakeBodyWithoutContent(cursor, headers.Content(), draft);
  }
  FinishDraft(draft, message);
  message.State = StoredState(facts.state.isKnown ? facts.state : draft.state.State());
  prepared.hasSender = headers.HasSender();
  if (draft.keySubject) prepared.keySubject = draft.keySubject->Finish(draft.CharsetOfHeaders());
  prepared.keyTime = draft.keyTime;
  return prepared;
}

std::unique_ptr<PreparedMessage> ReadElsewhere(const std::function<void(PreparedMessage&)>& read) {
  core::TellingsKept kept;
  auto prepared = std::make_unique<PreparedMessage>();
  try {
    read(*prepared);
  } catch (...) {
    Error error = core::CurrentError();
    prepared = std::make_unique<PreparedMessage>();
    prepared->fault.emplace();
    prepared->fault->number = error.Number();
    prepared->fault->text = error.Description();
  }
  prepared->tellings = kept.Take();
  return prepared;
}

void PackElsewhere(PreparedMessage& prepared, const RawMessage& begin, uint64_t size, bool packs) {
  TakeBodyFromHtml(prepared.message);
  if (size <= kMostHeld) {
    prepared.rows = MakeRows(begin, prepared.message, packs);
  } else {
    RawReader reader(begin);
    std::string_view head = reader.Read(0, kFileRecordLength);
    prepared.rows.emplace().thread = StoredThread(ThreadOfHeaders(head));
  }
}

std::unique_ptr<PreparedMessage> PrepareElsewhere(const RawMessage& raw, const ReadingRules& rules,
                                                  const StoreFacts& facts, bool packs) {
  return ReadElsewhere([&](PreparedMessage& prepared) {
    prepared = ReadMessage(raw, rules, facts);
    PackElsewhere(prepared, raw, RawReader(raw).Size(), packs);
  });
}

std::unique_ptr<PreparedMessage> PrepareElsewhere(std::string& text, const ReadingRules& rules,
                                                  const StoreFacts& facts, bool packs) {
  RawMessage raw("", std::move(text));
  auto prepared = PrepareElsewhere(raw, rules, facts, packs);
  text = std::move(raw).Bytes();
  return prepared;
}

bool MayBeRowsOf(const PreparedMessage& prepared, uint64_t rawSize) {
  const PackedRows& rows = *prepared.rows;
  for (const PackedRows::Text& text : rows.texts) {
    // A long text is written as it is.
    size_t size = TextOf(prepared.message, text.column).size();
    if (!jet::MayBePacked(text.packed, size)) return false;
  }
  for (size_t i = 0; i < rows.pieces.size(); ++i) {
    uint64_t offset = uint64_t{i} * kFileRecordLength;
    if (offset >= rawSize) return false;
    auto size = static_cast<size_t>(std::min<uint64_t>(rawSize - offset, kFileRecordLength));
    if (!jet::MayBePacked(rows.pieces[i], size)) return false;
  }
  constexpr size_t kMostThread = 32;
  return rows.thread.size() <= kMostThread && (!rows.trigrams || jet::AreTrigrams(*rows.trigrams));
}

void Tell(const core::Telling& telling) {
  if (telling.kind == core::Telling::Kind::kFile) {
    MakeAttachFile(telling.what, telling.text);
  } else {
    core::Tell(telling);
  }
}

void TellOf(const PreparedMessage& prepared) {
  for (const core::Telling& telling : prepared.tellings) intake::Tell(telling);
  if (prepared.fault) throw Error(prepared.fault->number, prepared.fault->text);
}

void SetNotes(PreparedMessage& prepared, std::string notes) {
  prepared.message.Notes = std::move(notes);
  if (!prepared.rows) return;
  std::erase_if(prepared.rows->texts,
                [](const PackedRows::Text& text) { return text.column == "Notes"; });
}

const std::vector<std::string_view>& PackedColumns() {
  static const std::vector<std::string_view> columns = [] {
    std::vector<std::string_view> found;
    for (const repository::EmailField& field : repository::kEmailFields) {
      if (field.isOfMessage && IsLongText(field.name)) found.push_back(field.name);
    }
    return found;
  }();
  return columns;
}

}  // namespace tarnwick::intake
