// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/prepared_message.h"

#include <algorithm>

#include "core/messages.h"
#include "database/ahead.h"
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

PackedRows PackRows(const RawMessage& raw, const MailMessage& message) {
  PackedRows rows;
  auto written = [&](std::string_view column) {
    const MessageField* field = std::ranges::find(kMessageFields, column, &MessageField::column);
    return WrittenText(*field, message.*std::get<std::string MailMessage::*>(field->member));
  };
  for (const repository::EmailField& field : repository::kEmailFields) {
    if (!field.isOfMessage || !IsLongText(field.name)) continue;
    rows.texts.push_back({field.name, jet::PackAhead(written(field.name))});
  }
  std::vector<std::string> searched;
  searched.reserve(repository::kSearchedFields.size());
  for (const repository::EmailField& field : repository::kSearchedFields) {
    searched.push_back(written(field.name));
  }
  rows.trigrams = jet::TrigramsAhead(searched);
  RawReader reader(raw);
  for (uint64_t offset = 0; offset < reader.Size(); offset += kFileRecordLength) {
    std::string_view piece = reader.Read(offset, kFileRecordLength);
    if (offset == 0) rows.thread = StoredThread(ThreadOfHeaders(piece));
    rows.pieces.push_back(jet::PackAhead(piece));
  }
  return rows;
}

}  // namespace

size_t PreparedMessage::Cost() const {
  size_t cost = sizeof *this + message.Body.size() + message.HTMLBody.size() +
                (message.To.size() + message.Cc.size()) * sizeof(AddressPair);
  if (!rows) return cost;
  cost += rows->trigrams.size() * sizeof(uint32_t);
  for (const PackedRows::Text& text : rows->texts) cost += text.packed.size();
  for (const std::string& piece : rows->pieces) cost += piece.size();
  return cost;
}

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

std::unique_ptr<PreparedMessage> PrepareAhead(const RawMessage& raw, const ReadingRules& rules,
                                              const StoreFacts& facts) {
  core::AheadOfTurn ahead;
  auto prepared = std::make_unique<PreparedMessage>(ReadMessage(raw, rules, facts));
  TakeBodyFromHtml(prepared->message);
  if (ahead.MustWait()) return nullptr;
  prepared->rows = PackRows(raw, prepared->message);
  return prepared;
}

}  // namespace tarnwick::intake
