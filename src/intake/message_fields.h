// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which member of MailMessage each column of Email holds, for storing a message and for taking one
// out of another repository. Every column that repository/email_fields.h says a message brings has
// its row here; one without does not compile.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <variant>

#include "intake/mail_message.h"
#include "repository/email_fields.h"

namespace tarnwick::intake {

// How a text is written; a long one whole, another cut (kMostShortText).
enum class Writing : uint8_t {
  kText,
  kKey,           // as StoredKey makes it
  kImportance,    // "HIGH" whatever its case was
  kUnlessEmpty,   // the column stays as it is when there is no text
  kUserOfThisRun  // the Windows log-on name; no member
};

using MessageMember = std::variant<std::monostate, std::string MailMessage::*,
                                   DateTime MailMessage::*, int16_t MailMessage::*>;

struct MessageField {
  std::string_view column;
  MessageMember member;
  Writing writing = Writing::kText;
};

// In the order in which they are written.
inline constexpr MessageField kMessageFields[] = {
    {"Application", &MailMessage::Application},
    {"Identity", &MailMessage::Identity},
    {"Folder", &MailMessage::Folder},
    {"Parent", &MailMessage::Parent},
    {"gwTimeShift", &MailMessage::TimeShift},
    {"Body", &MailMessage::Body},
    {"CountCC", &MailMessage::CcCount},
    {"Direction", &MailMessage::Direction},
    {"CreationTime", &MailMessage::SentTime},
    {"ReceivedTime", &MailMessage::ReceivedTime},
    {"EntryID", &MailMessage::MessageKey, Writing::kKey},
    {"HTMLBody", &MailMessage::HTMLBody},
    {"EmailImportance", &MailMessage::Importance, Writing::kImportance},
    {"State", &MailMessage::State, Writing::kUnlessEmpty},
    {"NameFrom", &MailMessage::FromName},
    {"AddressFrom", &MailMessage::FromAddress},
    {"CountMailTo", &MailMessage::ToCount},
    {"FromToAddress", &MailMessage::FromToAddress},
    {"FromToName", &MailMessage::FromToName},
    {"Subject", &MailMessage::Subject},
    {"UserName", {}, Writing::kUserOfThisRun},
    {"FilesNum", &MailMessage::AttachCount},
    {"Notes", &MailMessage::Notes, Writing::kUnlessEmpty},
    {"Charset", &MailMessage::Charset},
    {"Encoding", &MailMessage::Encoding},
};

constexpr bool Holds(const MessageMember& member, jet::ColumnType type) {
  switch (type) {
    case jet::ColumnType::kText:
    case jet::ColumnType::kMemo:
      return std::holds_alternative<std::string MailMessage::*>(member);
    case jet::ColumnType::kDateTime:
      return std::holds_alternative<DateTime MailMessage::*>(member);
    case jet::ColumnType::kLong:
      return std::holds_alternative<int16_t MailMessage::*>(member);
    default:
      return false;
  }
}

constexpr bool IsLongText(std::string_view column) {
  return std::ranges::find(repository::kEmailFields, column, &repository::EmailField::name)->type ==
         jet::ColumnType::kMemo;
}

// The two tables tell of the same columns, and of the same types.
static_assert(std::ranges::all_of(repository::kEmailFields, [](const auto& field) {
  auto row = std::ranges::find(kMessageFields, field.name, &MessageField::column);
  bool isHere = row != std::end(kMessageFields);
  if (!field.isOfMessage) return !isHere || row->writing == Writing::kUserOfThisRun;
  return isHere && Holds(row->member, field.type) &&
         std::ranges::count(kMessageFields, field.name, &MessageField::column) == 1;
}));
static_assert(std::ranges::all_of(kMessageFields, [](const MessageField& row) {
  return std::ranges::count(repository::kEmailFields, row.column, &repository::EmailField::name) ==
         1;
}));

}  // namespace tarnwick::intake
