// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_parser.h"

#include <array>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/late_state.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "intake/stored_file.h"
#include "intake/text_reader.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

constexpr const char* kSentItems = "Sent Items";
constexpr const char* kInbox = "Inbox";

// Stands for the subject of a letter without one whose recipients are all hidden: with neither
// subject nor correspondent it would not be told from a file that is no message.
constexpr const char* kNoSubject = "no subject";

void SetDirection(bool (*isFromMe)(const std::string&), MailMessage& message) {
  using core::ContainsIgnoringCase;
  if (message.Folder == kSentItems || ContainsIgnoringCase(message.Parent, kSentItems)) {
    message.Direction = "Out";
  } else if (message.Folder == kInbox || ContainsIgnoringCase(message.Parent, kInbox)) {
    message.Direction = "In";
  } else {
    bool isMine = isFromMe != nullptr && isFromMe(message.FromAddress);
    message.Direction = isMine ? "Out" : "In";
  }
}

// Finds the address between angle brackets where a text holds more than one "@": the last such pair
// outside quotation marks, but of several mailboxes in a row the first. False when there is none.
bool TakeBracketed(std::string_view text, AddressPair& pair) {
  constexpr size_t kNone = std::string_view::npos;
  bool isQuoted = false;
  bool hasAt = false;
  size_t open = kNone;
  size_t start = kNone;  // of the pair found so far, and where it ends
  size_t end = kNone;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\\' && isQuoted) {
      ++i;
    } else if (c == '"') {
      isQuoted = !isQuoted;
    } else if (isQuoted) {
      continue;
    } else if (c == '<') {
      open = i;
      hasAt = false;
    } else if (c == '@') {
      hasAt = true;
    } else if (c == '>' && open != kNone && hasAt) {
      start = open;
      end = i;
      open = kNone;
    } else if (c == ',' && start != kNone) {
      break;
    }
  }
  if (start == kNone) return false;
  pair.Name = text.substr(0, start);
  pair.Address = text.substr(start + 1, end - start - 1);
  return true;
}

// "ann@example.org (Ann @ home)": the "@" of the address, which a comment behind it may not hide.
size_t AtBeforeComment(const std::string& text, size_t last) {
  size_t comment = text.rfind('(', last);
  if (text.back() != ')' || comment == std::string::npos || comment == 0) return last;
  size_t before = text.rfind('@', comment - 1);
  return before == std::string::npos ? last : before;
}

void CleanPair(AddressPair& pair) {
  pair.Address = core::Unquote(core::Unquote(pair.Address));
  pair.Name = core::Unquote(core::Unquote(pair.Name));
}

// "Ann <ann>", "<ann>" and "ann", but not "Ann Lee", nor the name of a group ("friends:;").
void TakeBareAddress(const std::string& text, AddressPair& pair) {
  size_t open = text.rfind('<');
  size_t close = open == std::string::npos ? open : text.find('>', open);
  if (close != std::string::npos) {
    AddressPair found{text.substr(0, open), text.substr(open + 1, close - open - 1)};
    CleanPair(found);
    if (!found.Address.empty()) pair = found;
  } else if (!text.empty() && text.find_first_of(" <>\"") == std::string::npos &&
             std::string_view(":;").find(text.back()) == std::string_view::npos) {
    pair.Address = core::Unquote(text);
    pair.Name = pair.Address;
  }
}

// A message without a key is known by its subject and time of sending, as designed reading has
// them.
struct KeyParts {
  std::string subject;
  DateTime sent;
};

std::string FormerKeyOfSubject(const KeyParts& parts) {
  return parts.subject + "_" + parts.sent.ToKeyText();
}

// Of a subject so long that the date would be cut off when the key is stored, the beginning and the
// length are taken.
std::string KeyOfSubject(const KeyParts& parts) {
  constexpr size_t kMostOfSubject = 200;
  std::string key = FormerKeyOfSubject(parts);
  if (platform::CountChars(key) <= kMostKeyText) return key;
  return std::string(platform::FirstChars(parts.subject, kMostOfSubject)) + "_" +
         std::to_string(parts.subject.size()) + "_" + parts.sent.ToKeyText();
}

// SettleMessage; parts: what the key was made of.
bool Settle(PreparedMessage& prepared, const SourceDescriptor& source,
            bool (*isFromMe)(const std::string& address), std::string key, KeyParts& parts) {
  MailMessage& message = prepared.message;
  message.Folder = source.folder;
  message.Parent = source.parent;
  message.Application = source.application;
  SetDirection(isFromMe, message);
  SetCorrespondent(message);
  if (!key.empty() && prepared.hasSender && message.FromToAddress.empty() &&
      message.Subject.empty()) {
    message.Subject = kNoSubject;
    if (prepared.rows) prepared.rows->trigrams.reset();
  }
  if (key.empty()) {
    parts = {prepared.keySubject.value_or(message.Subject),
             prepared.keyTime.value_or(message.SentTime)};
    key = KeyOfSubject(parts);
  }
  message.MessageKey = std::move(key);
  return !message.FromToAddress.empty() || !message.Subject.empty();
}

// TakeInMessage without what guards it.
bool ParseAndStore(const RawMessage& raw, const SourceDescriptor& source,
                   const std::string& identity, const KnownOfMessage& known, Ending& ending) {
  auto skip = [&](Outcome outcome) {
    ending.outcome = outcome;
    return false;
  };
  if (!known.isKeyNew && IsEmailExist(known.key)) {
    FillState(known.key, known.facts.state);
    return skip(OutcomeOfKnown(known.key));
  }
  std::optional<PreparedMessage> own;
  if (known.prepared != nullptr) {
    TellOf(*known.prepared);
  } else if (known.texts != nullptr) {
    own = known.texts->Read(raw, known.rules, known.facts);
  } else {
    own = ReadMessage(raw, known.rules, known.facts);
  }
  PreparedMessage& prepared = own ? *own : *known.prepared;
  MailMessage& message = prepared.message;
  KeyParts parts;
  if (!Settle(prepared, source, IsFromMe, known.key, parts)) {
    core::ShowRepeatedMessage("Invalid message", "Message format is invalid.");
    return false;
  }
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), message.Subject);
  core::YieldEvents();
  if (known.key.empty()) {
    const std::string former = FormerKeyOfSubject(parts);
    if (IsEmailExist(message.MessageKey)) {
      FillState(message.MessageKey, StateOfStored(message.State));
      return skip(OutcomeOfKnown(message.MessageKey));
    }
    if (former != message.MessageKey && IsStoredFile(former, raw)) {
      return skip(Outcome::kAlreadyStored);
    }
  }
  if (message.Encoding.empty()) message.Encoding = "NOT";
  dbSaveMesage(raw, message, source.application, 0, identity, &ending,
               prepared.rows ? &*prepared.rows : nullptr);
  return true;
}

}  // namespace

HeaderCode ClassifyHeader(std::string& line) {
  static constexpr std::array<std::pair<std::string_view, HeaderCode>, 16> kKeys = {{
      {"subject", HeaderCode::kSubject},
      {"date", HeaderCode::kDate},
      {"sent", HeaderCode::kDate},
      {"message-id", HeaderCode::kMessageId},
      {"reference", HeaderCode::kMessageId},
      {"references", HeaderCode::kMessageId},
      {"to", HeaderCode::kTo},
      {"from", HeaderCode::kFrom},
      {"importance", HeaderCode::kImportance},
      {"ix-msmail-priority", HeaderCode::kImportance},
      {"status", HeaderCode::kImportance},
      {"content-type", HeaderCode::kContentType},
      {"cc", HeaderCode::kCc},
      {"bcc", HeaderCode::kBcc},
      {"comment", HeaderCode::kComment},
      {"received", HeaderCode::kReceived},
  }};
  constexpr size_t kLongestKey = 18;
  size_t colon = line.find(':');
  size_t length = colon == std::string::npos ? line.size() : colon;
  if (length == 0 || length > kLongestKey) return HeaderCode::kOther;
  std::string key = platform::AsciiLower(std::string_view(line).substr(0, length));
  for (const auto& [name, code] : kKeys) {
    if (key != name) continue;
    line = colon == std::string::npos ? std::string()
                                      : core::CleanTrim(std::string_view(line).substr(colon + 1));
    return code;
  }
  return HeaderCode::kOther;
}

bool BeginsHeader(std::string_view line) {
  auto isOfName = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.';
  };
  size_t end = 0;
  while (end < line.size() && isOfName(line[end])) ++end;
  if (end == 0) return false;
  size_t colon = line.find_first_not_of(" \t", end);
  if (colon == std::string_view::npos || line[colon] != ':') return false;
  // Kinds of addresses, not names of headers.
  std::string name = platform::AsciiLower(line.substr(0, end));
  return name != "mailto" && name != "smtp";
}

AddressPair SplitAddress(std::string_view text, bool keepsBareAddresses) {
  AddressPair pair{kNoName, kNoAddress};
  if (text.empty()) return pair;
  std::string clean = core::CleanTrim(text);
  size_t at = clean.rfind('@');
  bool hasSeveral = at != std::string::npos && clean.find('@') != at;
  if (at == std::string::npos) {
    pair.Name = clean;
    if (keepsBareAddresses) TakeBareAddress(clean, pair);
  } else if (hasSeveral && TakeBracketed(clean, pair)) {
    CleanPair(pair);
  } else {
    if (hasSeveral) at = AtBeforeComment(clean, at);
    size_t before = clean.find_last_of(" <", at);
    size_t after = clean.find_first_of(" <", at);
    if (before != std::string::npos) {
      pair.Address = clean.substr(before + 1);
      pair.Name = clean.substr(0, before);
    } else if (after != std::string::npos) {
      pair.Address = clean.substr(0, after);
      pair.Name = clean.substr(after + 1);
    } else {
      pair.Address = pair.Name = clean;
    }
    CleanPair(pair);
  }
  if (pair.Name.empty() || pair.Name == "-") pair.Name = pair.Address;
  if (pair.Name.empty()) pair.Name = kNoName;
  if (pair.Address.empty()) pair.Address = kNoAddress;
  return pair;
}

bool SettleMessage(PreparedMessage& prepared, const SourceDescriptor& source,
                   bool (*isFromMe)(const std::string& address), std::string key) {
  KeyParts parts;
  return Settle(prepared, source, isFromMe, std::move(key), parts);
}

bool ParseMessageFile(const RawMessage& raw, const SourceDescriptor& source,
                      bool (*isFromMe)(const std::string& address), MailMessage& message,
                      const ReadingRules& rules, const StoreFacts& facts) {
  std::string key = std::move(message.MessageKey);
  message = {};
  PreparedMessage prepared = ReadMessage(raw, rules, facts);
  bool isMessage = SettleMessage(prepared, source, isFromMe, std::move(key));
  message = std::move(prepared.message);
  return isMessage;
}

bool dbxParseMessage(const RawMessage& raw, const SourceDescriptor& source,
                     const std::string& identity, const std::string& entryKey, Ending* ending,
                     const ReadingRules& rules, const StoreFacts& facts) {
  Ending own;
  return TakeInMessage(raw, source, identity, {.key = entryKey, .rules = rules, .facts = facts},
                       ending != nullptr ? *ending : own);
}

bool TakeInMessage(const RawMessage& raw, const SourceDescriptor& source,
                   const std::string& identity, const KnownOfMessage& known, Ending& ending) {
  ending = {core::State().StopFlag ? Outcome::kStopped : Outcome::kUnreadable, {}};
  if (core::State().StopFlag) return false;
  return core::Guarded("dbxParseMessage", false,
                       [&] { return ParseAndStore(raw, source, identity, known, ending); });
}

}  // namespace tarnwick::intake
