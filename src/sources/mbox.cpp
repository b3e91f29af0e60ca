// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/mbox.h"

#include <algorithm>
#include <charconv>

#include "platform/utf8.h"

namespace tarnwick::sources {

namespace {

constexpr std::string_view kFrom = "From ";
constexpr std::string_view kEudoraFrom = "From ???@???";
constexpr size_t kMostOfSeparator = 1024;
constexpr size_t kMostOfHeaders = size_t{64} * 1024;

std::string_view FirstLine(std::string_view bytes) {
  std::string_view line = bytes.substr(0, bytes.find('\n'));
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string_view TakeWord(std::string_view& text) {
  size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
  text.remove_prefix(begin);
  size_t end = std::min(text.find_first_of(" \t"), text.size());
  // A sender in quotation marks may hold blanks.
  if (text.starts_with('"')) {
    size_t quote = text.find('"', 1);
    if (quote != std::string_view::npos)
      end = std::min(text.find_first_of(" \t", quote), text.size());
  }
  std::string_view word = text.substr(0, end);
  text.remove_prefix(end);
  return word;
}

bool IsDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// "12:08" or "12:08:34".
bool IsTime(std::string_view word) {
  if (word.size() < 4 || word.size() > 8) return false;
  size_t colons = 0;
  for (char c : word) {
    if (c == ':') {
      ++colons;
    } else if (c < '0' || c > '9') {
      return false;
    }
  }
  return (colons == 1 || colons == 2) && word.front() != ':' && word.back() != ':';
}

bool IsMonth(std::string_view word) {
  constexpr std::string_view kMonths = "janfebmaraprmayjunjulaugsepoctnovdec";
  if (word.size() != 3) return false;
  size_t place = kMonths.find(platform::AsciiLower(word));
  return place != std::string_view::npos && place % 3 == 0;
}

bool BeginsWithHeader(std::string_view line) {
  size_t colon = line.find(':');
  if (colon == 0 || colon == std::string_view::npos) return false;
  return line.substr(0, colon).find_first_of(" \t<>\"") == std::string_view::npos;
}

// The length of the separator line at the beginning of some bytes, with its line end; 0 where none
// is there. Without a date it takes a header in the next line, and a sender that is one.
size_t SeparatorLength(std::string_view bytes) {
  if (!bytes.starts_with(kFrom)) return 0;
  std::string_view line = FirstLine(bytes);
  size_t end = bytes.find('\n');
  size_t length = end == std::string_view::npos ? bytes.size() : end + 1;
  std::string_view rest = line.substr(kFrom.size());
  std::string_view sender = TakeWord(rest);
  if (sender.empty()) return 0;
  if (YearOfDate(rest) != 0) return length;
  bool isBare = rest.find_first_not_of(" \t") == std::string_view::npos &&
                (sender == "-" || sender.find('@') != std::string_view::npos);
  return isBare && BeginsWithHeader(FirstLine(bytes.substr(length))) ? length : 0;
}

// The value of a header, of the first that bears the name (lower case).
std::optional<std::string_view> HeaderValue(std::string_view headers, std::string_view name) {
  while (!headers.empty()) {
    std::string_view line = FirstLine(headers);
    if (line.empty()) break;
    if (line.size() > name.size() && line[name.size()] == ':' &&
        platform::SameWord(line.substr(0, name.size()), name)) {
      std::string_view value = line.substr(name.size() + 1);
      value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
      return value.substr(0, value.find_last_not_of(" \t") + 1);
    }
    size_t end = headers.find('\n');
    if (end == std::string_view::npos) break;
    headers.remove_prefix(end + 1);
  }
  return std::nullopt;
}

}  // namespace

bool IsMbox(std::string_view head) {
  return SeparatorLength(head) != 0;
}

int YearOfDate(std::string_view text) {
  constexpr int kMostWords = 12;
  bool hasMonth = false;
  bool hasDay = false;
  bool hasTime = false;
  int year = 0;
  for (int i = 0; i < kMostWords; ++i) {
    std::string_view word = TakeWord(text);
    if (word.empty()) break;
    if (word.ends_with(',')) word.remove_suffix(1);
    if (IsMonth(word)) {
      hasMonth = true;
    } else if (IsTime(word)) {
      hasTime = true;
    } else if (IsDigits(word) && word.size() <= 2) {
      hasDay = true;
    } else if (IsDigits(word) && word.size() == 4 && year == 0) {
      std::from_chars(word.data(), word.data() + word.size(), year);
      if (year < 1970 || year > 2100) year = 0;
    }
  }
  return hasMonth && hasDay && hasTime ? year : 0;
}

MboxReader::MboxReader(const intake::RawMessage& file) : file_(file), look_(file, kMostOfHeaders) {
  next_ = SeparatorAt(0);
  if (!next_) return;
  std::string first(FirstLine(look_.Read(0, kMostOfSeparator)));
  if (first.starts_with(kEudoraFrom)) {
    kind_ = MboxKind::kPlain;
    return;
  }
  if (first.starts_with("From - ") || first == "From -") kind_ = MboxKind::kOnceQuoted;
  std::string headers = Headers(next_->end);
  if (MeasuredEnd(headers, next_->end + headers.size())) kind_ = MboxKind::kMeasured;
}

std::optional<MboxReader::Line> MboxReader::SeparatorAt(uint64_t place) {
  std::string_view bytes = look_.Read(place, 2 * kMostOfSeparator);
  size_t length = SeparatorLength(bytes.substr(0, 2 * kMostOfSeparator));
  if (length == 0 || length > kMostOfSeparator) return std::nullopt;
  return Line{place, place + length};
}

bool MboxReader::FollowsEmptyLine(uint64_t place) {
  size_t count = static_cast<size_t>(std::min<uint64_t>(place, 4));
  std::string_view before = look_.Read(place - count, count + kMostOfSeparator).substr(0, count);
  return before.ends_with("\n\n") || before.ends_with("\n\r\n");
}

// The next separator whose line begins at from or behind it.
std::optional<MboxReader::Line> MboxReader::FindSeparator(uint64_t from) {
  constexpr std::string_view kMark = "\nFrom ";
  uint64_t place = from > 0 ? from - 1 : 0;
  for (;;) {
    std::string_view bytes = file_.ReadSome(place);
    if (bytes.size() < kMark.size()) bytes = file_.Read(place, kMark.size());
    if (bytes.size() < kMark.size()) return std::nullopt;
    size_t found = bytes.find(kMark);
    if (found == std::string_view::npos) {
      place += bytes.size() - (kMark.size() - 1);
      continue;
    }
    uint64_t line = place + found + 1;
    std::optional<Line> separator = SeparatorAt(line);
    if (separator) {
      bool isEudoras =
          kind_ == MboxKind::kPlain && look_.Read(line, kMostOfSeparator).starts_with(kEudoraFrom);
      if (isEudoras || FollowsEmptyLine(line)) return separator;
    }
    place = line;
  }
}

// The header block that begins at begin, with the empty line behind it.
std::string MboxReader::Headers(uint64_t begin) {
  constexpr size_t kUsual = size_t{4} * 1024;
  for (size_t most : {kUsual, kMostOfHeaders}) {
    std::string_view bytes = look_.Read(begin, most);
    size_t end = bytes.find("\n\n");
    size_t dosEnd = bytes.substr(0, end).find("\n\r\n");
    if (dosEnd != std::string_view::npos) return std::string(bytes.substr(0, dosEnd + 3));
    if (end != std::string_view::npos) return std::string(bytes.substr(0, end + 2));
    if (most == kMostOfHeaders || bytes.size() < most) return std::string(bytes);
  }
  return {};
}

// Where the letter ends that tells its length; nullopt when nothing ends there.
std::optional<uint64_t> MboxReader::MeasuredEnd(std::string_view headers, uint64_t headersEnd) {
  auto value = HeaderValue(headers, "content-length");
  if (!value) return std::nullopt;
  uint64_t length = 0;
  auto [last, code] = std::from_chars(value->data(), value->data() + value->size(), length);
  if (code != std::errc() || last != value->data() + value->size()) return std::nullopt;
  if (length > file_.Size() - headersEnd) return std::nullopt;
  uint64_t end = headersEnd + length;
  if (end == file_.Size()) return end;
  std::string after(look_.Read(end, kMostOfSeparator));
  size_t line = after.find_first_not_of("\r\n");
  if (line == std::string::npos)
    return end + after.size() == file_.Size() ? std::optional(end) : std::nullopt;
  if (line > 4 || !SeparatorAt(end + line)) return std::nullopt;
  return end;
}

bool MboxReader::Next(LetterEntry& letter) {
  if (!next_) return false;
  begin_ = next_->begin;
  textBegin_ = next_->end;
  letter.name = "message " + std::to_string(++number_);
  std::string headers = Headers(textBegin_);
  std::optional<uint64_t> measured;
  if (kind_ == MboxKind::kMeasured) measured = MeasuredEnd(headers, textBegin_ + headers.size());
  next_ = FindSeparator(measured.value_or(textBegin_));
  textEnd_ = measured.value_or(next_ ? next_->begin : file_.Size());
  headers.resize(static_cast<size_t>(std::min<uint64_t>(headers.size(), textEnd_ - textBegin_)));
  letter.state = intake::StateOfHeaders(headers);
  if (textEnd_ - textBegin_ > kMostLetterBytes) letter.fault = kTooLong;
  if (next_ && !measured) LeaveEmptyLine();
  return true;
}

// The empty line before the next separator is the mailbox's, not the letter's.
void MboxReader::LeaveEmptyLine() {
  size_t count = static_cast<size_t>(std::min<uint64_t>(textEnd_ - textBegin_, 4));
  std::string_view end = look_.Read(textEnd_ - count, count);
  if (end.ends_with("\n\r\n")) {
    textEnd_ -= 2;
  } else if (end.ends_with("\n\n")) {
    textEnd_ -= 1;
  }
}

void MboxReader::Copy(const Sink& sink) {
  if (kind_ == MboxKind::kQuoted || kind_ == MboxKind::kOnceQuoted) {
    CopyUnquoted(sink);
  } else {
    look_.Copy(textBegin_, textEnd_, sink);
  }
}

// Hands out the text but for one ">" of each line that was quoted.
void MboxReader::CopyUnquoted(const Sink& sink) {
  bool beginsLine = true;
  for (uint64_t place = textBegin_; place < textEnd_;) {
    if (beginsLine && IsQuoted(place)) ++place;
    std::string_view bytes = look_.ReadSome(place);
    if (bytes.empty()) return;
    bytes =
        bytes.substr(0, static_cast<size_t>(std::min(uint64_t{bytes.size()}, textEnd_ - place)));
    size_t quote = bytes.find("\n>");
    if (quote != std::string_view::npos) bytes = bytes.substr(0, quote + 1);
    sink(bytes);
    beginsLine = bytes.ends_with('\n');
    place += bytes.size();
  }
}

// Whether the line that begins there has a ">" too many.
bool MboxReader::IsQuoted(uint64_t place) {
  constexpr size_t kMostMarks = 100;
  std::string_view line = look_.Read(place, kMostMarks + kFrom.size());
  size_t marks = std::min(line.find_first_not_of('>'), line.size());
  size_t most = kind_ == MboxKind::kOnceQuoted ? 1 : kMostMarks;
  return marks > 0 && marks <= most && line.substr(marks).starts_with(kFrom);
}

MboxCount CountMbox(const intake::RawMessage& file, uint64_t limit,
                    const std::function<void()>& goesOn) {
  constexpr uint64_t kStep = uint64_t{16} << 20;
  MboxReader reader(file);
  MboxCount count;
  uint64_t toldAt = 0;
  for (LetterEntry letter; reader.Next(letter); letter = {}) {
    if (reader.Begin() >= limit) {
      double letters = static_cast<double>(count.letters) * static_cast<double>(reader.Size()) /
                       static_cast<double>(reader.Begin());
      return {static_cast<int64_t>(letters), true};
    }
    ++count.letters;
    if (goesOn && reader.Begin() - toldAt >= kStep) {
      toldAt = reader.Begin();
      goesOn();
    }
  }
  return count;
}

}  // namespace tarnwick::sources
