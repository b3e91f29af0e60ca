// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/content_type.h"

#include <algorithm>
#include <map>
#include <utility>

#include "core/text.h"
#include "intake/encoded_word.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool BeginsIgnoringCase(std::string_view line, std::string_view lowerPrefix) {
  return line.size() >= lowerPrefix.size() &&
         std::equal(lowerPrefix.begin(), lowerPrefix.end(), line.begin(), [](char a, char b) {
           return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
         });
}

std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

enum class ContentHeader { kNone, kType, kDisposition, kEncoding };

ContentHeader KindOf(std::string_view line) {
  if (!BeginsIgnoringCase(TrimBlanks(line), "content-")) return ContentHeader::kNone;
  size_t colon = line.find(':');
  if (colon == std::string_view::npos) return ContentHeader::kNone;
  std::string key = platform::AsciiLower(TrimBlanks(line.substr(0, colon)));
  if (key == "content-type") return ContentHeader::kType;
  if (key == "content-disposition") return ContentHeader::kDisposition;
  return key == "content-transfer-encoding" ? ContentHeader::kEncoding : ContentHeader::kNone;
}

// Walks the parameters behind a header's first value.
class Parameters {
 public:
  explicit Parameters(std::string_view header) : rest_(header) { SkipPast(';'); }

  // The next parameter, its name in lower case and its value without quotation marks.
  bool Next(std::string& name, std::string& value) {
    while (!rest_.empty()) {
      size_t end = rest_.find_first_of("=;");
      if (end == std::string_view::npos) return false;
      if (rest_[end] == ';') {
        rest_.remove_prefix(end + 1);
        continue;
      }
      name = platform::AsciiLower(TrimBlanks(rest_.substr(0, end)));
      rest_ = TrimBlanks(rest_.substr(end + 1));
      if (!rest_.empty() && rest_[0] == '"') {
        TakeQuoted(value);
      } else {
        value = TrimBlanks(rest_.substr(0, rest_.find(';')));
        SkipPast(';');
      }
      return true;
    }
    return false;
  }

 private:
  void SkipPast(char mark) {
    size_t at = rest_.find(mark);
    rest_ = at == std::string_view::npos ? std::string_view() : rest_.substr(at + 1);
  }

  // Backslashes escape only what needs it: in file names they are separators.
  void TakeQuoted(std::string& value) {
    value.clear();
    size_t i = 1;
    for (; i < rest_.size() && rest_[i] != '"'; ++i) {
      bool escapes =
          rest_[i] == '\\' && i + 1 < rest_.size() && (rest_[i + 1] == '"' || rest_[i + 1] == '\\');
      if (escapes) ++i;
      value += rest_[i];
    }
    rest_ = rest_.substr(std::min(i + 1, rest_.size()));
    // A semicolon may be missing.
    rest_ = TrimBlanks(rest_);
    if (!rest_.empty() && rest_[0] == ';') rest_.remove_prefix(1);
  }

  std::string_view rest_;
};

std::string DecodePercent(std::string_view text) {
  std::string decoded;
  auto hex = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hex(text[i + 1]) >= 0 && hex(text[i + 2]) >= 0) {
      decoded += static_cast<char>(hex(text[i + 1]) * 16 + hex(text[i + 2]));
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

// One parameter that holds a file name, in whichever of the forms it came: "name=", "name*=" with a
// charset, "name*0=", "name*1*=" in pieces.
class FileNameParameter {
 public:
  explicit FileNameParameter(std::string_view name) : name_(name) {}

  void Offer(std::string_view name, const std::string& value) {
    if (name == name_) {
      if (plain_.empty()) plain_ = value;
      return;
    }
    if (name.size() < name_.size() + 1 || name.substr(0, name_.size()) != name_ ||
        name[name_.size()] != '*') {
      return;
    }
    std::string_view section = name.substr(name_.size() + 1);
    bool isEncoded = section.empty() || section.back() == '*';
    if (!section.empty() && section.back() == '*') section.remove_suffix(1);
    int number = 0;
    if (section.size() > 5) return;
    for (char c : section) {
      if (c < '0' || c > '9') return;
      number = number * 10 + (c - '0');
    }
    pieces_.emplace(number, Piece{isEncoded, value});
  }

  // Empty when the parameter did not occur.
  MixedText Value() const {
    MixedText text;
    if (pieces_.empty()) {
      Decode(core::CleanTrim(plain_), text);
      return text;
    }
    std::string charset;
    for (const auto& [number, piece] : pieces_) {
      std::string_view value = piece.value;
      if (piece.isEncoded && number == 0) {
        size_t first = value.find('\'');
        size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
        if (second != std::string_view::npos) {
          charset = value.substr(0, first);
          value.remove_prefix(second + 1);
        }
      }
      text.AppendIn(piece.isEncoded ? DecodePercent(value) : std::string(value), charset);
    }
    return text;
  }

 private:
  struct Piece {
    bool isEncoded;
    std::string value;
  };
  std::string name_;
  std::string plain_;
  std::map<int, Piece> pieces_;
};

// What stands behind a word that no well-formed parameter had, up to a blank, a ";" or the closing
// quotation mark.
std::string ValueBehind(std::string_view header, std::string_view word) {
  std::string lower = platform::AsciiLower(header);
  size_t at = lower.find(word);
  if (at == std::string::npos) return "";
  std::string_view rest = TrimBlanks(header.substr(at + word.size()));
  if (rest.empty() || rest[0] != '=') return "";
  rest = TrimBlanks(rest.substr(1));
  if (!rest.empty() && rest[0] == '"') {
    rest.remove_prefix(1);
    return std::string(rest.substr(0, rest.find('"')));
  }
  return std::string(rest.substr(0, rest.find_first_of(" \t;")));
}

// A charset and an unquoted boundary hold no blank.
std::string FirstWord(const std::string& value) {
  return std::string(TrimBlanks(value.substr(0, value.find_first_of(" \t,"))));
}

void SetType(std::string_view type, PartDescription& part) {
  // In this order: the first word that occurs decides.
  static constexpr std::pair<std::string_view, PartKind> kWords[] = {
      {"plain", PartKind::kText},          {"application", PartKind::kAttachment},
      {"multipart", PartKind::kContainer}, {"htm", PartKind::kHtml},
      {"image", PartKind::kAttachment},
  };
  std::string lower = platform::AsciiLower(type);
  part.mediaType = lower;
  part.isMessage = core::BeginsWith(lower, "message/rfc822");
  part.isUnknownText = false;
  part.type = PartKind::kOther;
  for (const auto& [word, kind] : kWords) {
    if (!Contains(lower, word)) continue;
    part.type = kind;
    return;
  }
  // Calendars, cards and the like are data beside the letter.
  bool isData = Contains(lower, "calendar") || Contains(lower, "card") ||
                Contains(lower, "directory") || Contains(lower, "css") || Contains(lower, "xml");
  part.isUnknownText = core::BeginsWith(lower, "text") && !isData;
}

void ReadType(std::string_view header, PartDescription& part) {
  std::string_view type = TrimBlanks(header.substr(0, header.find(';')));
  SetType(type, part);
  FileNameParameter name("name");
  std::string parameter;
  std::string value;
  std::string charset;
  std::string boundary;
  for (Parameters parameters(header); parameters.Next(parameter, value);) {
    if (parameter == "charset") {
      charset = FirstWord(value);
    } else if (parameter == "boundary") {
      boundary = TrimBlanks(value);
    } else {
      name.Offer(parameter, value);
    }
  }
  if (charset.empty()) charset = FirstWord(ValueBehind(header, "charset"));
  if (boundary.empty() && part.type == PartKind::kContainer) {
    boundary = ValueBehind(header, "boundary");
  }
  if (!charset.empty()) part.charset = charset;
  part.boundary = boundary;
  bool namesFile = part.type == PartKind::kAttachment ||
                   (part.type == PartKind::kOther && !core::BeginsWith(type, "message"));
  MixedText named = name.Value();
  if (part.anyName.Empty()) part.anyName = named;
  if (namesFile && part.fileName.Empty()) part.fileName = std::move(named);
}

void ReadDisposition(std::string_view header, PartDescription& part) {
  std::string lower = platform::AsciiLower(header);
  part.isAttached = core::BeginsWith(lower, "attachment");
  FileNameParameter name("filename");
  std::string parameter;
  std::string value;
  for (Parameters parameters(header); parameters.Next(parameter, value);) {
    name.Offer(parameter, value);
  }
  MixedText fileName = name.Value();
  if (fileName.Empty()) return;
  part.anyName = fileName;
  if (!Contains(lower, "attachment") && !Contains(lower, "inline")) return;
  part.fileName = std::move(fileName);
  part.isDisposed = true;
}

void ReadEncoding(std::string_view header, PartDescription& part) {
  std::string_view value = header.substr(header.rfind(':') + 1);
  value.remove_prefix(std::min(value.find_first_not_of(" \t\"'"), value.size()));
  part.encoding = std::string(value.substr(0, value.find_first_of(" \t;\"'")));
}

// The value of a type, from which an encoding that was folded into it is taken: its line stood
// further in, as the parameters do.
void ReadTypeWithFolded(std::string_view header, PartDescription& part) {
  size_t folded = platform::AsciiLower(header).find("content-transfer-encoding:");
  if (folded == std::string::npos) return ReadType(header, part);
  ReadType(header.substr(0, folded), part);
  ReadEncoding(header.substr(folded), part);
}

}  // namespace

bool PartDescription::IsMedia() const {
  return core::BeginsWith(mediaType, "image") || core::BeginsWith(mediaType, "audio") ||
         core::BeginsWith(mediaType, "video");
}

PartKind PartDescription::Kind() const {
  if (type == PartKind::kContainer) return type;
  if (isDisposed || (type == PartKind::kOther && !fileName.Empty())) return PartKind::kAttachment;
  return type;
}

bool IsContentHeader(std::string_view line) {
  return KindOf(line) != ContentHeader::kNone;
}

bool ReadContentHeader(std::string_view line, PartDescription& part) {
  std::string_view header = TrimBlanks(line.substr(line.find(':') + 1));
  switch (KindOf(line)) {
    case ContentHeader::kNone:
      return false;
    case ContentHeader::kType:
      ReadTypeWithFolded(header, part);
      break;
    case ContentHeader::kDisposition:
      ReadDisposition(header, part);
      break;
    case ContentHeader::kEncoding:
      ReadEncoding(header, part);
      break;
  }
  return true;
}

bool ReadTypeWithoutColon(std::string_view line, PartDescription& part) {
  if (!BeginsWithContentType(line)) return false;
  std::string_view rest = TrimBlanks(line).substr(std::string_view("content-type").size());
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t="), rest.size()));
  if (!BeginsIgnoringCase(rest, "text/") || Contains(rest, "<") || Contains(rest, ">"))
    return false;
  ReadTypeWithFolded(rest, part);
  return true;
}

bool BeginsWithContentType(std::string_view line) {
  while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
  return BeginsIgnoringCase(line, "content-type");
}

}  // namespace tarnwick::intake
