// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What travels of a message file between the program and the reader (store_link.h).
#pragma once

#include <memory>

#include "intake/letter_record.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

template <typename Archive>
void Pass(Archive& archive, Fault& f) {
  archive(intake::OneOf{f.kind, kFaultKinds}, f.reason, f.number, f.step);
}

template <typename Archive>
void Pass(Archive& archive, MessageInfo& i) {
  archive(i.date, i.subject, i.keyText, i.formerKeyText, i.length, intake::RawBytes{i.messageId},
          intake::RawBytes{i.senderAddress});
}

template <typename Archive>
void Pass(Archive& archive, MessageReading& m) {
  archive(m.isEnd, m.tellings, m.infoOffset, m.info, m.entryKey, m.facts, m.fault, m.firstBlock,
          m.indexedBlock);
}

template <typename Archive>
void Pass(Archive& archive, SenderLines& s) {
  archive(s.subject, s.sender);
}

template <typename Archive>
void Pass(Archive& archive, TextReading& t) {
  std::string& held = t.held ? *t.held : t.held.emplace();
  archive(t.fault, intake::RawBytes{held}, t.size, t.chainSize, t.chainEnd, t.prepared, t.sender);
  // A long one has gone to a sink.
  if (t.size <= intake::kMostHeld) return;
  if (!held.empty()) intake::RefuseRecord();
  t.held.reset();
}

// A message and, where it was wanted and could be had, its text.
struct StoreReply {
  MessageReading message;
  std::unique_ptr<TextReading> text;
};
template <typename Archive>
void Pass(Archive& archive, StoreReply& r) {
  archive(r.message, r.text);
}

// What was made of a text fits it; throws Error 75 where it does not.
inline void Check(const TextReading& text) {
  if (text.fault && text.prepared) intake::RefuseRecord();
  if (text.fault) return;
  if (!text.prepared || (text.held && text.held->size() != text.size)) intake::RefuseRecord();
  if (text.size > text.chainSize) intake::RefuseRecord();
  intake::CheckPrepared(*text.prepared, text.held);
}

}  // namespace tarnwick::oe
