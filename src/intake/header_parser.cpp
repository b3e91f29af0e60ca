// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_parser.h"

#include <algorithm>
#include <array>
#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/attachment_file.h"
#include "intake/date_parser.h"
#include "intake/encoded_word.h"
#include "intake/intake_state.h"
#include "intake/mime_body.h"
#include "intake/parse_state.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/files.h"

namespace tarnwick::intake {

namespace {

using core::CleanTrim;
using core::Unquote;

struct HeaderKey {
  std::string_view key;
  HeaderCode code;
};
constexpr std::array<HeaderKey, 17> kHeaderKeys = {{
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
    {"", HeaderCode::kOther},
}};

constexpr size_t kMaxBccLength = 255;

const DateTime kNoReceivedDate = DateTime::FromDate(1990, 1, 1);

std::string_view TrimLeft(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  return text;
}

HeaderCode CodeOf(std::string_view line) {
  size_t colon = line.find(':');
  // The longest key there is; a line of megabytes is not copied to be looked at.
  constexpr size_t kLongestKey = 18;
  if (colon == std::string_view::npos || colon > kLongestKey) return HeaderCode::kOther;
  std::string key = platform::AsciiLower(line.substr(0, colon));
  for (const HeaderKey& known : kHeaderKeys) {
    if (!key.empty() && known.key == key) return known.code;
  }
  return HeaderCode::kOther;
}

// The header block of one message, read line by line. Each Take routine is entered with the header
// in the current line and leaves the first line that it did not use in it.
class HeaderReader {
 public:
  explicit HeaderReader(ParseState& state) : state_(state) {}

  void Read() {
    state_.NextLine();
    while (!state_.atEnd) {
      std::string value = state_.line;
      HeaderCode code = ClassifyHeader(value);
      if (code == HeaderCode::kOther) {
        if (EndsBlock()) break;
        SkipOther();
        continue;
      }
      if (IsSeen(code)) {
        state_.NextLine();
        continue;
      }
      Take(code, std::move(value));
    }
    MailMessage& record = state_.record;
    record.ReceivedTime = latest_ == kNoReceivedDate ? record.SentTime : latest_;
  }

 private:
  bool EndsBlock() const { return state_.line.empty() || core::BeginsWith(state_.line, "--"); }

  // The first header of its kind counts; content types, copies kept from others, comments and
  // received headers count each time.
  bool IsSeen(HeaderCode code) {
    switch (code) {
      case HeaderCode::kContentType:
      case HeaderCode::kBcc:
      case HeaderCode::kComment:
      case HeaderCode::kReceived:
        return false;
      default:
        return std::exchange(seen_[static_cast<size_t>(code)], true);
    }
  }

  void Take(HeaderCode code, std::string value) {
    switch (code) {
      case HeaderCode::kSubject:
        TakeSubject(value);
        break;
      case HeaderCode::kDate: {
        MailMessage& record = state_.record;
        AppendFolded(value);
        twParseDate(record.SentTime, record.TimeText, record.TimeShift, value, true);
        break;
      }
      case HeaderCode::kTo:
        TakeAddresses(std::move(value), state_.to, nullptr);
        break;
      case HeaderCode::kCc:
        TakeAddresses(std::move(value), state_.cc, &AppendCcLimit);
        break;
      case HeaderCode::kFrom:
        TakeFrom(std::move(value));
        break;
      case HeaderCode::kImportance:
        state_.record.Importance = CleanTrim(value);
        state_.NextLine();
        break;
      case HeaderCode::kContentType:
        ReadContentHeader(state_, state_.whole);
        break;
      case HeaderCode::kBcc:
        TakeBcc(value);
        break;
      case HeaderCode::kReceived:
        TakeReceived(std::move(value));
        break;
      default:
        state_.NextLine();
        break;
    }
  }

  // Headers that say something of the body stand before or behind the Content-Type.
  void SkipOther() {
    if (platform::AsciiLower(std::string_view(state_.line).substr(0, 8)) == "content-") {
      ReadContentHeader(state_, state_.whole);
    } else {
      state_.NextLine();
    }
  }

  // Folded lines behind the header join it.
  void AppendFolded(std::string& value) {
    while (state_.NextLine() && state_.LineIsFolded()) {
      value += ' ';
      value += TrimLeft(state_.line);
    }
  }

  void TakeSubject(const std::string& value) {
    // The lines are joined without a blank. They are decoded together, since words that were
    // encoded line by line may share a character between them.
    std::string subject = Unquote(value);
    while (state_.NextLine() && state_.LineIsFolded() &&
           CodeOf(state_.line) == HeaderCode::kOther) {
      subject += Unquote(state_.line);
    }
    state_.subject = Decode(subject);
  }

  void TakeFrom(std::string value) {
    AppendFolded(value);
    value = CleanTrim(value);
    if (!value.empty() && value.back() == ',') value.pop_back();
    AddressPair pair = SplitAddress(value);
    state_.fromAddress.AppendBytes(pair.Address);
    state_.fromName = Decode(pair.Name);
  }

  static void AppendCcLimit() {
    core::ShowRepeatedMessage("Cc limit",
                              "CC account is great than " + std::to_string(kMaxRecipients));
  }

  // onFull: called for each entry beyond the list's capacity; entries without an address are
  // dropped from a list that has one.
  void TakeAddresses(std::string value, std::vector<ParseState::Recipient>& target,
                     void (*onFull)()) {
    std::string list = Unquote(value);
    JoinFolded(list);
    for (;;) {
      bool goesOn = !list.empty() && list.back() == ',';
      SplitList(list, target, onFull);
      // The list goes on in the next line, even when that does not begin with a blank.
      if (!goesOn || state_.atEnd || state_.line.empty()) return;
      list = state_.line;
      JoinFolded(list);
    }
  }

  // A line that does not end with a comma may still be folded inside an entry.
  void JoinFolded(std::string& list) {
    while (state_.NextLine() && state_.LineIsFolded() && (list.empty() || list.back() != ',')) {
      list += ' ';
      list += TrimLeft(state_.line);
      while (!list.empty() && (list.back() == ' ' || list.back() == '\t')) list.pop_back();
    }
  }

  static void SplitList(std::string_view list, std::vector<ParseState::Recipient>& target,
                        void (*onFull)()) {
    do {
      size_t comma = list.find(',');
      AddressPair pair = SplitAddress(CleanTrim(list.substr(0, comma)));
      list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
      bool isCc = onFull != nullptr;
      if (isCc && pair.Address == kNoAddress) continue;
      if (target.size() >= static_cast<size_t>(kMaxRecipients)) {
        if (isCc) onFull();
        continue;
      }
      ParseState::Recipient recipient;
      recipient.name = Decode(pair.Name);
      recipient.address.AppendBytes(pair.Address);
      target.push_back(std::move(recipient));
    } while (!core::Trim(list).empty());
  }

  void TakeBcc(const std::string& value) {
    std::string collected = CleanTrim(value);
    while (state_.NextLine() && !collected.empty() && collected.back() == ';' &&
           collected.size() + state_.line.size() < kMaxBccLength) {
      collected += CleanTrim(state_.line);
    }
  }

  void TakeReceived(std::string value) {
    AppendFolded(value);
    std::string dateText = core::SplitLast(value, ";", false);
    // Of "22/08/2002 12:23:43" and the like only the time would be understood, and the message
    // would seem to have come today.
    if (!NamesDate(dateText)) return;
    DateTime date = kNoReceivedDate;
    std::string timeText;
    std::string zoneText;
    twParseDate(date, timeText, zoneText, dateText, false);
    if (date > latest_ && date <= platform::Now().AddDays(1)) latest_ = date;
  }

  ParseState& state_;
  std::array<bool, 12> seen_{};
  DateTime latest_ = kNoReceivedDate;
};

// The time at the end of a store's key ("..._yyyymmddhhmmss").
std::optional<DateTime> DateOfKey(const std::string& key) {
  constexpr size_t kDigits = 14;
  if (key.size() <= kDigits || key[key.size() - kDigits - 1] != '_') return std::nullopt;
  std::string digits = key.substr(key.size() - kDigits);
  if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  auto number = [&](size_t from, size_t count) { return std::stoi(digits.substr(from, count)); };
  return DateTime::FromCivil(
      {number(0, 4), number(4, 2), number(6, 2), number(8, 2), number(10, 2), number(12, 2)});
}

// What a message without a usable date was sent at: when its store has it from, else when its file
// was written.
DateTime DefaultSentTime(const std::string& messageFile, const std::string& entryKey) {
  if (auto date = DateOfKey(entryKey)) return *date;
  return platform::FileModified(messageFile);
}

int16_t FinishRecipients(const std::vector<ParseState::Recipient>& recipients,
                         const std::string& charset,
                         std::array<AddressPair, kMaxRecipients>& target) {
  size_t count = 0;
  for (const ParseState::Recipient& recipient : recipients) {
    target[count++] = {recipient.name.Finish(charset), recipient.address.Finish(charset)};
  }
  return static_cast<int16_t>(count);
}

void FinishTexts(ParseState& state) {
  MailMessage& record = state.record;
  if (record.Charset.empty()) record.Charset = state.whole.charset;
  if (record.Encoding.empty()) record.Encoding = state.whole.encoding;
  if (record.Encoding.empty()) record.Encoding = "NOT";
  const std::string charset = record.Charset;
  record.Subject = state.subject.Finish(charset);
  record.FromName = state.fromName.Finish(charset);
  record.FromAddress = state.fromAddress.Finish(charset);
  record.ToCount = FinishRecipients(state.to, charset, record.To);
  record.CcCount = FinishRecipients(state.cc, charset, record.Cc);
  record.Body = state.body.Finish(charset);
  record.HTMLBody =
      state.htmlBody.Finish(record.HTMLCharset.empty() ? charset : record.HTMLCharset);
  for (std::string* text : {&record.Charset, &record.HTMLCharset, &record.Encoding,
                            &record.Importance, &record.TimeText, &record.TimeShift}) {
    *text = platform::BytesToUtf8(*text, charset);
  }
}

void SettleDirection(MailMessage& message, bool (*isFromMe)(const std::string&)) {
  if (message.Folder == "Sent Items" || core::ContainsIgnoringCase(message.Parent, "Sent Items")) {
    message.Direction = "Out";
  } else if (message.Folder == "Inbox" || core::ContainsIgnoringCase(message.Parent, "Inbox")) {
    message.Direction = "In";
  } else {
    message.Direction = isFromMe(message.FromAddress) ? "Out" : "In";
  }
  if (message.Direction == "In") {
    message.FromToAddress = message.FromAddress;
    message.FromToName = message.FromName;
  } else if (message.ToCount > 0) {
    message.FromToAddress = message.To[0].Address;
    message.FromToName = message.To[0].Name;
  }
}

bool AlreadyStored(const std::string& key) {
  if (!IsEmailExist(key)) return false;
  SetLastOutcome(IsMessageIgnored(key) ? Outcome::kIgnored : Outcome::kAlreadyStored);
  return true;
}

bool ParseAndStore(const std::string& messageFile, const SourceDescriptor& source,
                   const std::string& identity, const std::string& entryKey) {
  if (!entryKey.empty() && AlreadyStored(entryKey)) return false;
  MailMessage message;
  message.MessageKey = entryKey;
  if (!ParseMessageFile(messageFile, source, &IsFromMe, message)) {
    core::ShowRepeatedMessage("invalid format", "Message format is invalid.");
    return false;
  }
  core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), message.Subject);
  core::YieldEvents();
  // A key that the caller gave was looked up above.
  if (entryKey.empty()) {
    message.MessageKey = message.Subject + "_" + message.SentTime.ToKeyText();
    if (AlreadyStored(message.MessageKey)) return false;
  }
  dbSaveMesage(messageFile, message, source.application, 0, identity);
  return true;
}

}  // namespace

IntakeState& State() {
  static IntakeState state;
  return state;
}

void ResetState() {
  State() = IntakeState();
}

Outcome LastOutcome() {
  return State().LastOutcome;
}

void SetLastOutcome(Outcome outcome) {
  State().LastOutcome = outcome;
}

HeaderCode ClassifyHeader(std::string& line) {
  HeaderCode code = CodeOf(line);
  if (code != HeaderCode::kOther)
    line = CleanTrim(std::string_view(line).substr(line.find(':') + 1));
  return code;
}

AddressPair SplitAddress(std::string_view text) {
  if (text.empty()) return {kNoName, kNoAddress};
  std::string whole = CleanTrim(text);
  AddressPair pair;
  size_t at = whole.find('@');
  if (at == std::string::npos) {
    pair.Name = whole;
    pair.Address = kNoAddress;
  } else {
    // An "@" in the name does not mark the address when one in angle brackets follows.
    size_t bracket = whole.rfind('<');
    size_t inBrackets = bracket == std::string::npos ? bracket : whole.find('@', bracket);
    if (inBrackets != std::string::npos) at = inBrackets;
    size_t before = whole.find_last_of(" <", at);
    size_t behind = whole.find_first_of(" <", at);
    if (before != std::string::npos) {
      pair.Address = whole.substr(before + 1);
      pair.Name = whole.substr(0, before);
    } else if (behind != std::string::npos) {
      pair.Address = whole.substr(0, behind);
      pair.Name = whole.substr(behind + 1);
    } else {
      pair.Address = pair.Name = whole;
    }
  }
  pair.Address = Unquote(Unquote(pair.Address));
  pair.Name = Unquote(Unquote(pair.Name));
  if (pair.Name.empty() || pair.Name == "-") pair.Name = pair.Address;
  if (pair.Name.empty()) pair.Name = kNoName;
  if (pair.Address.empty()) pair.Address = kNoAddress;
  return pair;
}

bool ParseMessageFile(const std::string& messageFile, const SourceDescriptor& source,
                      bool (*isFromMe)(const std::string& address), MailMessage& message) {
  ParseState state(messageFile, message);
  message.SentTime = DefaultSentTime(messageFile, message.MessageKey);
  HeaderReader(state).Read();
  if (message.IsMultipart != 0) {
    ReadMultipartBody(state);
  } else {
    obxTakeBodyWithoutContent(state);
  }
  FinishTexts(state);
  message.Folder = source.folder;
  message.Parent = source.parent;
  message.Application = source.application;
  SettleDirection(message, isFromMe);
  return !message.FromToAddress.empty() || !message.Subject.empty();
}

bool dbxParseMessage(const std::string& messageFile, const SourceDescriptor& source,
                     const std::string& identity, const std::string& entryKey) {
  SetLastOutcome(Outcome::kStopped);
  if (core::State().StopFlag) return false;
  SetLastOutcome(Outcome::kUnreadable);
  RemoveAttachFiles();
  return core::Guarded("dbxParseMessage", false,
                       [&] { return ParseAndStore(messageFile, source, identity, entryKey); });
}

}  // namespace tarnwick::intake
