// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/inline_file.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <vector>

#include "core/text.h"
#include "intake/attachment_file.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

constexpr char kBlank = ' ';
constexpr char kLastDigit = '`';  // stands for 0 beside the blank

std::string_view TrimEnd(std::string_view line) {
  while (!line.empty() && (line.back() == kBlank || line.back() == '\t' || line.back() == '\r')) {
    line.remove_suffix(1);
  }
  return line;
}

unsigned Value(char digit) {
  return static_cast<unsigned>(digit - kBlank) & 0x3F;
}

// Appends the bytes of one encoded line; false when it is none. Blanks at a line's end may have
// been lost on the way; a character or two too many are usual.
bool DecodeLine(std::string_view line, std::string& bytes) {
  constexpr size_t kMostExtra = 2;
  size_t sent = line.size();  // with the blanks that are digits at the end
  line = TrimEnd(line);
  if (line.empty()) return true;
  for (char c : line) {
    if (c < kBlank || c > kLastDigit) return false;
  }
  size_t count = Value(line[0]);
  size_t digits = (count + 2) / 3 * 4;
  line.remove_prefix(1);
  if (line.size() > digits + kMostExtra) return false;
  // So much is missing only from a line that is no encoded one.
  if (sent <= digits && digits > line.size() + line.size() / 2 + 4) return false;
  std::string whole(line);
  whole.resize(digits, kBlank);
  std::string decoded;
  for (size_t i = 0; i < digits; i += 4) {
    unsigned bits = Value(whole[i]) << 18 | Value(whole[i + 1]) << 12 | Value(whole[i + 2]) << 6 |
                    Value(whole[i + 3]);
    decoded += static_cast<char>(bits >> 16);
    decoded += static_cast<char>(bits >> 8);
    decoded += static_cast<char>(bits);
  }
  bytes.append(decoded, 0, count);
  return true;
}

bool IsEnd(std::string_view line) {
  return platform::AsciiUpper(core::Trim(TrimEnd(line))) == "END";
}

// The name behind "begin 644 "; "" when the line does not give one.
std::string NameOf(std::string_view line) {
  std::string upper = platform::AsciiUpper(line);
  std::string_view rest = line.substr(upper.find("BEGIN") + 5);
  rest = core::Trim(rest);
  size_t mode = rest.find_first_not_of("01234567");
  if (mode == 0 || mode == std::string_view::npos) return "";
  return core::CleanTrim(TrimEnd(rest.substr(mode)));
}

}  // namespace

// Looked for in every line of every letter, so by a letter that is not all too common.
bool InlineFile::MayBegin(std::string_view line) {
  for (size_t i = 2; i + 2 < line.size(); ++i) {
    if ((line[i] | 0x20) == 'g' && (line[i - 2] | 0x20) == 'b' && (line[i - 1] | 0x20) == 'e' &&
        (line[i + 1] | 0x20) == 'i' && (line[i + 2] | 0x20) == 'n') {
      return true;
    }
  }
  return false;
}

InlineFile::InlineFile(std::string_view beginLine) : name_(NameOf(beginLine)) {
  assert(MayBegin(beginLine));
}

InlineFile::Step InlineFile::Line(std::string_view line) {
  if (hasEncoded_ && IsEnd(line)) return Step::kEnded;
  if (!DecodeLine(line, bytes_)) return Step::kRefused;
  if (!TrimEnd(line).empty()) hasEncoded_ = true;
  return Step::kTaken;
}

bool TakeInlineFile(LineCursor& cursor, MessageDraft& draft,
                    const std::function<void(std::string_view)>& ordinary) {
  assert(cursor.HasLine());
  if (!InlineFile::MayBegin(cursor.Line())) return false;
  InlineFile file(cursor.Line());
  std::vector<std::string> lines = {cursor.Line()};
  for (cursor.Next(); cursor.HasLine(); cursor.Next()) {
    InlineFile::Step step = file.Line(cursor.Line());
    if (step == InlineFile::Step::kRefused) break;
    if (step == InlineFile::Step::kEnded) {
      cursor.Next();
      MixedText declared;
      declared.AppendRaw(file.Name());
      if (draft.AddAttachment(declared)) {
        MakeAttachFile(platform::EnsureUtf8(file.Name()), file.Bytes());
      }
      return true;
    }
    lines.push_back(cursor.Line());
  }
  // Whichever of these lines says "begin", what stopped this one would stop it too.
  for (const std::string& line : lines) ordinary(line);
  return true;
}

}  // namespace tarnwick::intake
