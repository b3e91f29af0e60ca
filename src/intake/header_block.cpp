// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_block.h"

#include <algorithm>

#include "core/text.h"
#include "intake/date_parser.h"
#include "intake/encoded_word.h"
#include "platform/clock.h"

namespace tarnwick::intake {

namespace {

// Before any mail that this program meets; the date of a message that has none.
DateTime NoDate() {
  return DateTime::FromDate(1990, 1, 1);
}

bool EndsHeaders(const std::string& line) {
  return line.empty() || core::BeginsWith(line, "--");
}

// Where the first item of a list of addresses ends: at a comma outside quotation marks. A mark that
// is never closed is a letter like any other, and so are all behind it; minded is false from then
// on.
size_t EndOfItem(std::string_view list, bool& minded) {
  size_t open = std::string_view::npos;
  for (size_t i = 0; i < list.size(); ++i) {
    bool isQuoted = open != std::string_view::npos;
    if (list[i] == '"') {
      open = isQuoted ? std::string_view::npos : i;
    } else if (isQuoted && list[i] == '\\') {
      ++i;
    } else if (!isQuoted && list[i] == ',') {
      return i;
    }
  }
  if (open == std::string_view::npos) return list.size();
  minded = false;
  return list.find(',', open);
}

}  // namespace

void HeaderBlock::Read(const StoreFacts& facts) {
  while (cursor_.HasLine() && ReadOne()) {
  }
  SettleDates(facts);
  if (cursor_.HasLine() && cursor_.Line().empty()) cursor_.Next();
}

void HeaderBlock::SettleDates(const StoreFacts& facts) {
  if (!sent_ && rules_.soundDates) {
    for (const auto& time : {facts.sent, facts.received, latestReceived_, facts.arrived}) {
      if (!sent_ && time && IsSoundDate(*time)) sent_ = time;
    }
  } else if (!sent_) {
    sent_ = latestReceived_;
  }
  message_.SentTime = sent_.value_or(NoDate());
  message_.ReceivedTime = latestReceived_.value_or(message_.SentTime);
}

bool HeaderBlock::FirstOf(HeaderCode code) {
  bool first = !WasSeen(code);
  seen_ |= 1U << static_cast<int>(code);
  return first;
}

bool HeaderBlock::ReadOne() {
  std::string& line = cursor_.Line();
  if (!IsFolded(line) && IsContentHeader(line)) {
    ReadContent();
    return true;
  }
  draft_.state.Take(line);
  HeaderCode code = ClassifyHeader(line);
  if (code == HeaderCode::kOther) {
    if (EndsHeaders(line)) return false;
    cursor_.Next();
    return true;
  }
  bool everyTime = code == HeaderCode::kContentType || code == HeaderCode::kBcc ||
                   code == HeaderCode::kComment || code == HeaderCode::kReceived;
  std::string value = std::move(line);
  cursor_.Next();
  if (!FirstOf(code) && !everyTime) return true;
  switch (code) {
    case HeaderCode::kSubject:
      ReadSubject(value);
      break;
    case HeaderCode::kDate:
      ReadDateHeader(std::move(value));
      break;
    case HeaderCode::kTo:
    case HeaderCode::kCc:
      ReadAddresses(std::move(value), code == HeaderCode::kCc);
      break;
    case HeaderCode::kFrom:
      AppendFolded(value);
      ReadFrom(value);
      break;
    case HeaderCode::kImportance:
      draft_.importance = core::CleanTrim(value);
      break;
    case HeaderCode::kReceived:
      ReadReceived(std::move(value));
      break;
    case HeaderCode::kBcc:
      ReadBcc(value);
      break;
    case HeaderCode::kContentType:
    case HeaderCode::kMessageId:
    case HeaderCode::kComment:
    case HeaderCode::kOther:
      break;
  }
  return true;
}

void HeaderBlock::AppendFolded(std::string& value) {
  for (; cursor_.HasLine() && IsFolded(cursor_.Line()); cursor_.Next()) {
    std::string_view more = cursor_.Line();
    value += ' ';
    value += more.substr(1);
  }
}

// By design each line is cleaned and decoded by itself; that is what the key is made of in any
// case.
void HeaderBlock::ReadSubject(std::string_view value) {
  MixedText byLines;
  Decode(core::Unquote(value), byLines);
  std::string whole = core::CleanTrim(value);
  for (; cursor_.HasLine() && IsFolded(cursor_.Line()); cursor_.Next()) {
    Decode(core::Unquote(cursor_.Line()), byLines);
    std::string more = core::CleanTrim(cursor_.Line());
    if (!whole.empty() && !more.empty()) whole += ' ';
    whole += more;
  }
  if (!rules_.wholeSubjects) {
    draft_.subject = std::move(byLines);
    return;
  }
  Decode(whole, draft_.subject);
  draft_.keySubject = std::move(byLines);
}

void HeaderBlock::ReadDateHeader(std::string value) {
  AppendFolded(value);
  DateTime designed = NoDate();
  if (!rules_.soundDates) {
    twParseDate(designed, draft_.timeText, draft_.timeShift, std::move(value), true);
    sent_ = designed;
    return;
  }
  bool isWhole = false;
  sent_ = ReadSoundDate(draft_.timeText, draft_.timeShift, value, true, &isWhole);
  // What designed reading makes of less than a whole date is another at each day.
  if (!isWhole) return;
  std::string timeText;
  std::string zoneText;
  twParseDate(designed, timeText, zoneText, std::move(value), true);
  draft_.keyTime = designed;
}

void HeaderBlock::ReadFrom(std::string_view value) {
  std::string clean = core::CleanTrim(value);
  if (!clean.empty() && clean.back() == ',') clean.pop_back();
  AddressPair pair = SplitAddress(clean, rules_.bareAddresses);
  draft_.from.address.AppendRaw(pair.Address);
  Decode(pair.Name, draft_.from.name);
}

// A list that ends with a comma goes on in the next line, with or without a blank before it, unless
// that line is the next header.
void HeaderBlock::ReadAddresses(std::string value, bool isCc) {
  AppendFolded(value);
  value = rules_.quotedCommas ? core::CleanTrim(value) : core::Unquote(value);
  for (;;) {
    TakeItems(value, isCc);
    if (value.empty() || value.back() != ',') return;
    if (!cursor_.HasLine() || EndsHeaders(cursor_.Line()) || BeginsHeader(cursor_.Line())) return;
    value = std::move(cursor_.Line());
    cursor_.Next();
    AppendFolded(value);
    std::string_view blanksOff = value;
    while (!blanksOff.empty() && blanksOff.back() == ' ') blanksOff.remove_suffix(1);
    value.resize(blanksOff.size());
  }
}

// By design the split is at every comma, within quotation marks too.
void HeaderBlock::TakeItems(std::string_view list, bool isCc) {
  bool minded = rules_.quotedCommas;
  do {
    std::string_view item = list.substr(0, minded ? EndOfItem(list, minded) : list.find(','));
    list.remove_prefix(std::min(item.size() + 1, list.size()));
    AddAddress(item, isCc);
  } while (!core::Trim(list).empty());
}

void HeaderBlock::AddAddress(std::string_view item, bool isCc) {
  std::vector<DraftAddress>& target = isCc ? draft_.cc : draft_.to;
  AddressPair pair = SplitAddress(core::CleanTrim(item), rules_.bareAddresses);
  if (isCc && pair.Address == kNoAddress) return;
  const auto most = static_cast<size_t>(rules_.mostRecipients);
  if (target.size() >= most) {
    if (isCc) draft_.ShowLimit("Cc limit", "CC account is great than " + std::to_string(most));
    return;
  }
  DraftAddress& address = target.emplace_back();
  Decode(pair.Name, address.name);
  address.address.AppendRaw(pair.Address);
}

void HeaderBlock::ReadReceived(std::string value) {
  AppendFolded(value);
  size_t last = value.rfind(';');
  if (last != std::string::npos) value.erase(0, last + 1);
  std::string timeText;
  std::string zoneText;
  std::optional<DateTime> date;
  if (rules_.soundDates) {
    date = ReadSoundDate(timeText, zoneText, std::move(value), false);
  } else if (NamesDate(value)) {
    // Of "22/08/2002 12:23:43" and the like only the time would be understood, and the message
    // would seem to have come today.
    DateTime designed = NoDate();
    twParseDate(designed, timeText, zoneText, std::move(value), false);
    if (designed > NoDate() && designed <= platform::Now().AddDays(1)) date = designed;
  }
  if (date && (!latestReceived_ || *date > *latestReceived_)) latestReceived_ = date;
}

// Read only to find its end.
void HeaderBlock::ReadBcc(std::string_view value) {
  constexpr size_t kLongest = 255;
  std::string collected = core::CleanTrim(value);
  while (!collected.empty() && collected.back() == ';' && cursor_.HasLine()) {
    std::string_view more = cursor_.Line();
    if (more.empty() || BeginsHeader(more) || collected.size() + more.size() >= kLongest) break;
    collected += core::CleanTrim(more);
    cursor_.Next();
  }
}

void HeaderBlock::ReadContent() {
  std::string header = TakeFolded(cursor_);
  content_.boundary.clear();
  ReadContentHeader(header, content_);
  if (content_.type == PartKind::kContainer && !content_.boundary.empty()) {
    draft_.AddBoundary(content_.boundary);
    message_.IsMultipart = 1;
  }
}

}  // namespace tarnwick::intake
